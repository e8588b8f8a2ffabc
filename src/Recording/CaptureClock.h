#pragma once

#include <chrono>
#include <cstdint>

// The one clock that pictures and sound are stamped with, so that they line up in the file.
namespace CaptureClock {
inline std::int64_t now()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}
} // namespace CaptureClock
