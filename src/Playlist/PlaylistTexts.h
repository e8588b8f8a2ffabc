#pragma once

#include <QStringView>

// Texts of the saved links, their export and the channel lists.
namespace PlaylistTexts {
// The key of the saved links in the settings store.
inline constexpr QStringView savedEntriesKey = u"VelmPlayerPro.LocalM3U.SavedEntries";
// The list an import or a published channel list replaced, kept so that it can come back.
inline constexpr QStringView previousEntriesKey = u"VelmPlayerPro.LocalM3U.PreviousEntries";
// Told after a replacement: "Saved links replaced by 42 channels".
inline constexpr QStringView replacedByChannels = u"Saved links replaced by %1 channels";
// Followed by the channel's name as the user sees it in the row.
inline constexpr QStringView savedToLocalM3U = u"Saved to Local M3U: ";
// Why a file or download gave no channels when it is no text at all (a video, an archive, noise).
inline constexpr QStringView notAPlaylist = u"This file is not an M3U playlist.";

inline constexpr QStringView exportDialogTitle = u"Export Local M3U Playlist";
inline constexpr QStringView exportDialogButton = u"Export";
// "Exported: list.m3u"
inline constexpr QStringView exported = u"Exported";
inline constexpr QStringView exportFailed = u"Could Not Export M3U Playlist";
// A write of the saved links failed: the title, and what it means for the user's links.
inline constexpr QStringView saveFailed = u"Could Not Save Local M3U Links";
inline constexpr QStringView saveFailedAdvice =
    u"The links stay as they are in this window and are written again with the next change "
    u"and when the player quits.";
// "VelmPlayerPro 2026-11-16.m3u"
inline constexpr QStringView exportFileNamePrefix = u"VelmPlayerPro ";
inline constexpr QStringView exportFileNameDatePattern = u"yyyy-MM-dd";
inline constexpr QStringView exportFileExtension = u"m3u";

// The metadata line of a channel row: country name, separator, group.
inline constexpr QStringView metadataSeparator = u"  \u00B7  ";
// The country of a network channel without a country code.
inline constexpr QStringView otherCountry = u"Other";
} // namespace PlaylistTexts
