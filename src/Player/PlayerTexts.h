#pragma once

#include <QStringView>

// Messages and labels the player model shows to the user. The placeholder title is
// AppIdentity::displayName.
namespace PlayerTexts {
inline constexpr QStringView invalidRemoteAddress = u"Enter a valid HTTP or HTTPS address.";
inline constexpr QStringView nothingToPlay =
    u"No media or URL is available. Open a file or enter a stream URL.";
// "Volume: 40%"; at zero the muted form below instead.
inline constexpr QStringView volumePercent = u"Volume: %1%";
inline constexpr QStringView volumeMuted = u"Volume: 0% (Muted)";
inline constexpr QStringView playlistOpenFailed = u"Could not open playlist: ";
inline constexpr QStringView playlistImportFailed = u"Could not import playlist: ";
inline constexpr QStringView networkPlaylistTitle = u"IPTV Playlist";
inline constexpr QStringView guidePartlyRead = u"The programme guide could only be read in part.";
// The reason follows.
inline constexpr QStringView guideFailed = u"The programme guide could not be loaded: %1";
// The notice over the picture when media does not play: the name, then the reason.
inline constexpr QStringView couldNotPlay = u"Could not play \u201C%1\u201D: %2.";

inline constexpr QStringView openMediaDialogTitle = u"Choose Media to Play";
inline constexpr QStringView importPlaylistDialogTitle = u"Import M3U Playlist";
inline constexpr QStringView importPlaylistDialogButton = u"Import";
} // namespace PlayerTexts
