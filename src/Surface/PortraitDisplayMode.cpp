#include "Surface/PortraitDisplayMode.h"

namespace {

struct ModeText
{
    PortraitDisplayMode mode;
    QStringView title;
    QStringView menuSymbol;
};

// Every mode's title and symbol, in menu order.
constexpr ModeText modeTexts[] = {
    {PortraitDisplayMode::normal, u"Normal", u"rectangle"},
    {PortraitDisplayMode::fill, u"Portrait Fill", u"rectangle.portrait.fill"},
    {PortraitDisplayMode::rotate, u"Portrait Rotate 90°", u"rotate.right"},
    {PortraitDisplayMode::manual, u"Manual Reframe", u"hand.draw"},
    {PortraitDisplayMode::smart, u"Smart Reframe", u"viewfinder"},
};

const ModeText &textOf(PortraitDisplayMode mode)
{
    for (const ModeText &text : modeTexts)
        if (text.mode == mode)
            return text;
    return modeTexts[0]; // not reached: every mode has its row
}

} // namespace

QStringView PortraitDisplayModes::rawValue(PortraitDisplayMode mode)
{
    return textOf(mode).title;
}

QStringView PortraitDisplayModes::menuSymbol(PortraitDisplayMode mode)
{
    return textOf(mode).menuSymbol;
}

std::optional<PortraitDisplayMode> PortraitDisplayModes::fromRawValue(QStringView text)
{
    for (const ModeText &each : modeTexts)
        if (each.title == text)
            return each.mode;
    return std::nullopt;
}
