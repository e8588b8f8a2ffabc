#pragma once

#include <QString>
#include <QStringView>

// Every text of the main window and its control bar.
namespace WindowTexts {
// Recording alerts.
inline constexpr QStringView recordingErrorTitle = u"Recording Error";
inline constexpr QStringView recordingErrorUnknown = u"Unknown recording error.";
inline constexpr QStringView openSystemSettings = u"Open System Settings";
inline constexpr QStringView screenCaptureSettingsURL =
    u"x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture";
inline constexpr QStringView recordingSavedTitle = u"Recording Saved";
inline constexpr QStringView recordingSavedMessage = u"The MP4 recording was saved.";
inline constexpr QStringView showInFinder = u"Show in Finder";
inline constexpr QStringView showInFolder = u"Show in Folder";
// The name of revealing a file where the file manager is not Finder.
#ifdef Q_OS_MACOS
inline constexpr QStringView showInFileManager = showInFinder;
#else
inline constexpr QStringView showInFileManager = showInFolder;
#endif

// Deleting saved links.
inline constexpr QStringView clearAllTitle = u"Delete All Local M3U8 Links?";
inline constexpr QStringView clearAllMessage =
    u"This permanently deletes every saved local M3U8 link. This action cannot be undone.";
inline constexpr QStringView cancel = u"Cancel";
inline constexpr QStringView deletePermanently = u"Delete Permanently";
inline constexpr QStringView deleteButton = u"Delete";
inline constexpr QStringView deleteUnnamedTitle = u"Delete Channel?";
inline constexpr QStringView deleteUnnamedMessage =
    u"Are you sure you want to delete this channel? This action cannot be undone.";
inline QString deleteTitle(const QString &name)
{
    return name.isEmpty() ? deleteUnnamedTitle.toString()
                          : QStringLiteral("Delete \"") + name + QStringLiteral("\"?");
}
inline QString deleteMessage(const QString &name)
{
    return name.isEmpty() ? deleteUnnamedMessage.toString()
                          : QStringLiteral("Are you sure you want to delete \"") + name +
                                QStringLiteral("\" from Local M3U? This action cannot be undone.");
}

// The network panel.
inline constexpr QStringView movieNamePlaceholder = u"Movie or Playlist Name (optional)";
inline constexpr QStringView hideMovieNameHelp = u"Hide movie or playlist name";
inline constexpr QStringView showMovieNameHelp = u"Add an optional movie or playlist name";
inline constexpr QStringView play = u"Play";
inline constexpr QStringView loading = u"Loading";
inline constexpr QStringView playHelp = u"Open the stream manually";
inline constexpr QStringView addressCaption = u"Supports YouTube, OK.ru, .m3u8 and .m3u";
inline constexpr QStringView clearHelp = u"Clear playlist and stop network playback";
// The saved-links panel's button that brings back the links a replacement took the place of.
inline constexpr QStringView restorePrevious = u"Restore Previous Links";
// The button of the notice that media did not play.
inline constexpr QStringView dismissHelp = u"Dismiss";
inline constexpr QStringView searchChannels = u"Search channels";
inline constexpr QStringView channelsHeader = u"IPTV CHANNELS  \u00b7  ";

// The programme guide.
inline constexpr QStringView guideNow = u"Now";
inline constexpr QStringView guideNext = u"Next";
inline constexpr QStringView guideViewHelp = u"Programme guide of the selected channel";
// "Programme Guide — News 24"
inline constexpr QStringView guideViewTitle = u"Programme Guide \u2014 %1";
inline constexpr QStringView guideNothingLeft = u"Nothing more today.";
inline constexpr QStringView guideAddressTitle = u"Programme Guide Address";
inline constexpr QStringView guideAddressPrompt =
    u"A guide (XMLTV, plain or gzip) to read before the ones the playlist names. Leave empty to "
    u"use only the playlist's.";
inline constexpr QStringView guideAddressRefused = u"Enter a valid HTTP, HTTPS or file address.";
inline constexpr QStringView ok = u"OK";
inline constexpr QStringView addressPlaceholder = u"Paste a stream, playlist or video address";
inline constexpr QStringView networkSection = u"Network";
inline constexpr QStringView localSection = u"Local M3U";

// The filter menus of both panels.
inline constexpr QStringView countries = u"Countries";
inline constexpr QStringView category = u"Category";

// The local panel.
inline constexpr QStringView localHeader = u"LOCAL M3U8 LINKS";
inline constexpr QStringView addLink = u"Add M3U8 Link";
inline constexpr QStringView exportLinks = u"Export";
inline constexpr QStringView clear = u"Clear";
inline constexpr QStringView chooseM3UFile = u"Choose M3U File\u2026";
inline constexpr QStringView changeM3UFile = u"Change M3U File\u2026";
inline constexpr QStringView searchLocalLinks = u"Search local M3U8 links";
inline constexpr QStringView noLocalLinks =
    u"No local M3U8 links yet. Choose an M3U file or click + to add a link.";

// Channel rows.
inline constexpr QStringView playChannelHelpPrefix = u"Play ";
inline constexpr QStringView saveToLocal = u"Save to Local M3U";
inline constexpr QStringView savedToLocal = u"Saved to Local M3U (Click to re-save)";
inline constexpr QStringView edit = u"Edit";

// The link editor sheet.
inline constexpr QStringView addLinkTitle = u"Add M3U8 Link";
inline constexpr QStringView editLinkTitle = u"Edit M3U8 Link";
inline constexpr QStringView nameField = u"Channel or video name";
inline constexpr QStringView urlField = u"M3U8 URL";
inline constexpr QStringView logoField = u"Logo URL (optional)";
inline constexpr QStringView countryField = u"Country code (for example: TR, US)";
inline constexpr QStringView categoryField = u"Category (optional)";
inline constexpr QStringView chooseLogoFile = u"Choose Logo File\u2026";
inline constexpr QStringView chooseLogoTitle = u"Choose TV Logo";
inline constexpr QStringView removeLogo = u"Remove Logo";
inline constexpr QStringView save = u"Save";
inline constexpr QStringView nameRequired = u"Enter a channel or video name.";
inline constexpr QStringView validURLRequired = u"Enter a valid HTTP or HTTPS M3U8 URL.";

// The control bar's help texts.
inline constexpr QStringView skipBackHelp = u"Skip back 10 seconds";
inline constexpr QStringView pauseHelp = u"Pause"; // and "Play" (play) while paused
inline constexpr QStringView stopHelp = u"Stop";
inline constexpr QStringView skipForwardHelp = u"Skip forward 10 seconds";
inline constexpr QStringView sidebarHelp = u"Show or hide sidebar";
inline constexpr QStringView muteHelp = u"Mute or unmute";
inline constexpr QStringView displayModeHelp = u"Video display mode";
inline constexpr QStringView recordingQualityHelp = u"Choose recording quality";
inline constexpr QStringView normalRecording = u"Normal Recording";
inline constexpr QStringView hdRecording = u"HD Recording (1080p)";
inline constexpr QStringView stopRecordingHelp = u"Stop Recording";
inline constexpr QStringView fullScreenHelp = u"Enter full screen";
} // namespace WindowTexts
