#pragma once

#include <QStringView>

// Every text of the recorder: its errors, its save dialog and its floating panel.
namespace RecordingTexts {
inline constexpr QStringView playerWindowNotFound =
    u"The Velm Player Pro window could not be captured.";
inline constexpr QStringView playerDisplayNotFound =
    u"The display containing Velm Player Pro could not be captured.";
inline constexpr QStringView invalidCaptureArea = u"The video capture area is invalid.";
inline constexpr QStringView writerConfigurationFailed =
    u"The MP4 recording writer could not be configured.";
inline constexpr QStringView noFramesCaptured = u"No video frames were captured.";

inline constexpr QStringView surfaceNotAvailable = u"The player surface is not available.";
inline constexpr QStringView invalidDuration =
    u"Enter a valid duration such as 30m, 90m or 1.2hr, or leave the field blank for manual Stop.";
inline constexpr QStringView permissionNeeded =
    u"Velm Player Pro needs Screen & System Audio Recording permission to record the player and "
    u"its system audio. Enable it in System Settings, then quit and reopen the app.";
inline constexpr QStringView permissionBlocked =
    u"macOS has blocked screen recording permission for Velm Player Pro. Enable Screen & System "
    u"Audio Recording in System Settings, then quit and reopen the app.";
// Words in a start failure that mean the system refused the capture.
inline constexpr QStringView permissionWords[] = {u"TCC", u"declined", u"permission"};

// The save dialog.
inline constexpr QStringView saveTitle = u"Save Recording";
inline constexpr QStringView namePrefix = u"Velm Player Pro ";
inline constexpr QStringView nameMiddle = u" Recording ";
inline constexpr QStringView normalWord = u"Normal";
inline constexpr QStringView hdWord = u"HD";
inline constexpr QStringView mp4Filter = u"MPEG-4 Movie (*.mp4)";
inline constexpr QStringView mp4Suffix = u"mp4";
inline constexpr QStringView stopAfterLabel = u"Stop After (Optional)";
inline constexpr QStringView stopAfterPlaceholder = u"30m or 1.2hr";
inline constexpr QStringView stopAfterHelp =
    u"Optional: enter a duration such as 30m or 1.2hr. Leave blank to stop manually.";
inline constexpr QStringView stopAfterExamples =
    u"Examples: 30m, 90m, 1.2hr. Leave blank for manual Stop.";
// A local date and time that is valid in a file name.
inline constexpr QStringView timestampPattern = u"yyyy-MM-dd HH-mm-ss";

// The floating panel.
inline constexpr QStringView panelRecording = u"REC  ";
inline constexpr QStringView panelLeft = u"  •  LEFT  ";
inline constexpr QStringView stopRecording = u"Stop Recording";

// The writer's own failures: the file and the system's reason.
inline constexpr QStringView cannotWrite = u"The recording could not be written to “%1”: %2.";
inline constexpr QStringView cannotReplace = u"The file “%1” could not be replaced: %2.";

// Said once per recording that has to go on without the system's sound.
inline constexpr QStringView noSystemAudio =
    u"Recording without system audio: the sound server could not be reached.";
} // namespace RecordingTexts
