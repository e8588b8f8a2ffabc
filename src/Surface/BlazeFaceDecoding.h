#pragma once

#include "Surface/FaceBox.h"

#include <span>
#include <vector>

// Turns the raw output of a BlazeFace network into face boxes. Both BlazeFace variants share the
// anchor layout: a 16 × 16 grid with 2 anchors a cell and an 8 × 8 grid with 6, 896 in all, each
// predicting a box as offsets in input pixels from its cell's centre and a score before the
// sigmoid. Overlapping boxes of one face are merged into their score-weighted mean.
namespace BlazeFaceDecoding {

inline constexpr int anchorCount = 896;
// Numbers per anchor in the box output: centre x, centre y, width, height, six key points.
inline constexpr int valuesPerAnchor = 16;

struct ScoredFace
{
    FaceBox box;
    double score = 0;
};

// boxes: anchorCount × valuesPerAnchor numbers; scores: anchorCount numbers. inputSize: the side of
// the square the network saw. Faces whose score reaches minScore, best first, merged where they
// overlap by more than maxOverlap (intersection over union).
std::vector<ScoredFace> decode(std::span<const float> boxes, std::span<const float> scores,
                               int inputSize, double minScore, double maxOverlap = 0.3);

double overlap(const FaceBox &a, const FaceBox &b);

} // namespace BlazeFaceDecoding
