#pragma once

#include <QStringView>

// Titles of the application's menus and commands.
namespace AppTexts {
inline constexpr QStringView fileMenu = u"&File";
inline constexpr QStringView openMedia = u"Open Media\u2026";
inline constexpr QStringView guideAddress = u"Programme Guide Address\u2026";
inline constexpr QStringView refreshGuide = u"Refresh Programme Guide";
inline constexpr QStringView quit = u"&Quit";

inline constexpr QStringView playbackMenu = u"Playback";
inline constexpr QStringView play = u"Play";
inline constexpr QStringView pause = u"Pause";
inline constexpr QStringView stop = u"Stop";
// "Back 5 Seconds", "Forward 20 Seconds"
inline constexpr QStringView back = u"Back %1 Seconds";
inline constexpr QStringView forward = u"Forward %1 Seconds";
inline constexpr QStringView mute = u"Mute";
inline constexpr QStringView unmute = u"Unmute";

// Why the screen stays on, where the desktop says.
inline constexpr QStringView videoPlaying = u"A video is playing";
} // namespace AppTexts
