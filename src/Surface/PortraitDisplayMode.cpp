#include "Surface/PortraitDisplayMode.h"

QStringView PortraitDisplayModes::rawValue(PortraitDisplayMode mode)
{
    switch (mode) {
    case PortraitDisplayMode::normal:
        return u"Normal";
    case PortraitDisplayMode::fill:
        return u"Portrait Fill";
    case PortraitDisplayMode::rotate:
        return u"Portrait Rotate 90°";
    case PortraitDisplayMode::manual:
        return u"Manual Reframe";
    case PortraitDisplayMode::smart:
        return u"Smart Reframe";
    }
    return u"Normal"; // not reached: every mode is named above
}

std::optional<PortraitDisplayMode> PortraitDisplayModes::fromRawValue(QStringView text)
{
    for (const PortraitDisplayMode mode : all)
        if (rawValue(mode) == text)
            return mode;
    return std::nullopt;
}
