#pragma once

#include <chrono>
#include <cstdint>

// The fixed delays and durations of the player model.
namespace PlayerTiming {
using namespace std::chrono_literals;

// How often time, duration, play state and picture shape are sampled.
inline constexpr auto timeTick = 250ms;
// A live stream must stall this long before the buffering indicator shows.
inline constexpr auto bufferingIndicatorDelay = 450ms;
// Toast durations in nanoseconds, as callers pass them.
inline constexpr std::uint64_t volumeToastNanoseconds = 1'200'000'000;
inline constexpr std::uint64_t toastNanoseconds = 2'800'000'000;
// A playlist download is abandoned after this long without progress.
inline constexpr auto playlistTimeout = 20s;
// A network stream that sends nothing for this long, from its start or a stall, has failed.
inline constexpr auto streamDataTimeout = 20s;
// The Playback menu's skips, back and forward, in seconds.
inline constexpr int skipSteps[] = {5, 20, 60};
// Next and Previous from media keys and the desktop's player controls: the middle skip.
inline constexpr double mediaKeySkip = skipSteps[1];
} // namespace PlayerTiming
