#pragma once

#include "Surface/FaceBox.h"

#include <span>
#include <vector>

// Turns the raw output of a BlazeFace network into face boxes. Every BlazeFace variant shares the
// anchor layout: a fine grid with 2 anchors a cell, then a grid of cells twice as large with 6
// (896 anchors in all for a square input 16 fine cells across), each anchor predicting a box as
// offsets in input pixels from its cell's centre and a score before the sigmoid. Overlapping boxes
// of one face are merged into their score-weighted mean.
namespace BlazeFaceDecoding {

// The network's input in pixels and the side of its fine grid's cells (16 for the "back" model at
// 256 pixels, 8 for the "front" one at 128); the sides are multiples of the coarse cells.
struct Input
{
    int width = 256;
    int height = 256;
    int fineCell = 16;

    bool isValid() const;
};

int anchorCount(const Input &input);
// Numbers per anchor in the box output: centre x, centre y, width, height, six key points.
inline constexpr int valuesPerAnchor = 16;

struct ScoredFace
{
    FaceBox box;
    double score = 0;
};

// boxes: anchorCount × valuesPerAnchor numbers; scores: anchorCount numbers. Boxes come back in
// fractions of the input. Faces whose score reaches minScore, best first, merged where they
// overlap by more than maxOverlap (intersection over union).
std::vector<ScoredFace> decode(std::span<const float> boxes, std::span<const float> scores,
                               const Input &input, double minScore, double maxOverlap = 0.3);

double overlap(const FaceBox &a, const FaceBox &b);

} // namespace BlazeFaceDecoding
