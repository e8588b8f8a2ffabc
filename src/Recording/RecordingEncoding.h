#pragma once

// How the recorder encodes, chosen by measurement on a two-core machine playing 1080p video (see
// the README): the fastest x264 preset that still gives a High-profile stream keeps up in real
// time with room for the player.
namespace RecordingEncoding {
inline constexpr int framesPerSecond = 30;
// One key frame at least every two seconds.
inline constexpr int keyFrameInterval = 60;
inline constexpr const char *videoProfile = "high";
inline constexpr const char *videoPreset = "superfast";
inline constexpr int audioSampleRate = 48000;
inline constexpr int audioChannels = 2;
inline constexpr int audioBitRate = 192000;
// Frames waiting for the encoder; a frame that finds the queue full is dropped, so the window's
// thread never waits.
inline constexpr int frameQueueDepth = 6;
// Two seconds of sound waiting for the encoder; more is dropped.
inline constexpr int audioQueueChunks = 200;
} // namespace RecordingEncoding
