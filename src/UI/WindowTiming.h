#pragma once

#include <chrono>

// The main window's delays. Each is a single-shot timer owned by the window state; starting it
// again cancels the one pending.
namespace WindowTiming {
using namespace std::chrono_literals;
// A typed http(s) address opens by itself after this much calm.
inline constexpr std::chrono::milliseconds automaticOpenDelay = 450ms;
// In full screen, the controls hide this long after the last click or mouse move.
inline constexpr std::chrono::milliseconds fullScreenControlsHideDelay = 2500ms;
// While playing, the cursor over the picture hides this long after the last move.
inline constexpr std::chrono::milliseconds cursorHideDelay = 2000ms;
// The window's full-screen transition is left to finish before the controls react.
inline constexpr std::chrono::milliseconds fullScreenSettleDelay = 180ms;
// Animations of the sidebar (toggle, and hiding for a portrait mode) and of the controls.
inline constexpr std::chrono::milliseconds sidebarToggleAnimation = 180ms;
inline constexpr std::chrono::milliseconds sidebarPortraitAnimation = 160ms;
inline constexpr std::chrono::milliseconds controlsFadeAnimation = 120ms;
} // namespace WindowTiming
