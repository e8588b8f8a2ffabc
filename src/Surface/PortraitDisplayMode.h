#pragma once

#include <QStringView>

#include <array>
#include <optional>

// How the video area frames the picture: as it is, or in a tall 9:16 box for vertical viewing
// and recording. The raw value is the title the user sees.
enum class PortraitDisplayMode
{
    normal,
    fill,
    rotate,
    manual,
    smart,
};

namespace PortraitDisplayModes {
// Every mode in menu order.
inline constexpr std::array<PortraitDisplayMode, 5> all{
    PortraitDisplayMode::normal, PortraitDisplayMode::fill, PortraitDisplayMode::rotate,
    PortraitDisplayMode::manual, PortraitDisplayMode::smart};

QStringView rawValue(PortraitDisplayMode mode);
// The symbol of the mode's entry in the display-mode menu.
QStringView menuSymbol(PortraitDisplayMode mode);
std::optional<PortraitDisplayMode> fromRawValue(QStringView text);
} // namespace PortraitDisplayModes
