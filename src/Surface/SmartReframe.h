#pragma once

#include "Surface/FaceBox.h"

#include <chrono>
#include <optional>
#include <vector>

// How the smart portrait mode follows faces: a little over twice a second the current picture is
// searched for faces, and the pan moves part of the way towards the largest one, or back towards
// the centre when there is none. Every step moves the same share of what remains, so the motion
// eases out and never jumps.
namespace SmartReframe {

inline constexpr std::chrono::milliseconds stepInterval{450};
// The share of the remaining distance each step moves.
inline constexpr double smoothing = 0.35;

// The face with the largest box; among equal areas the one the detector listed first.
std::optional<FaceBox> largestFace(const std::vector<FaceBox> &faces);

// Where the pan should go to show the face: a face at the picture's left edge gives 1, centred 0,
// at the right edge −1. Clamped to −1 … 1; a midpoint that is not a number gives 1. No face: 0.
double panTarget(const std::optional<FaceBox> &face);

// The pan after one step from pan towards target.
double nextPan(double pan, double target);

} // namespace SmartReframe
