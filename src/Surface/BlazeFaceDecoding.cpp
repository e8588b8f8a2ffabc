#include "Surface/BlazeFaceDecoding.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace BlazeFaceDecoding {
namespace {

struct Grid
{
    int cells;
    int anchorsPerCell;
};
constexpr std::array<Grid, 2> grids{{{16, 2}, {8, 6}}};

double sigmoid(double raw)
{
    return 1 / (1 + std::exp(-std::clamp(raw, -100.0, 100.0)));
}

// The anchors' centres in fractions of the input, in the network's order.
const std::vector<std::array<double, 2>> &anchorCentres()
{
    static const std::vector<std::array<double, 2>> centres = [] {
        std::vector<std::array<double, 2>> made;
        made.reserve(anchorCount);
        for (const Grid &grid : grids) {
            for (int y = 0; y < grid.cells; ++y) {
                for (int x = 0; x < grid.cells; ++x) {
                    for (int a = 0; a < grid.anchorsPerCell; ++a)
                        made.push_back({(x + 0.5) / grid.cells, (y + 0.5) / grid.cells});
                }
            }
        }
        return made;
    }();
    return centres;
}

FaceBox boxOf(std::span<const float> values, const std::array<double, 2> &centre, int inputSize)
{
    const double cx = values[0] / inputSize + centre[0];
    const double cy = values[1] / inputSize + centre[1];
    const double w = values[2] / inputSize;
    const double h = values[3] / inputSize;
    return {cx - w / 2, cy - h / 2, w, h};
}

// The score-weighted mean of the boxes that cover one face.
FaceBox merged(const std::vector<ScoredFace> &cluster)
{
    double total = 0;
    FaceBox mean{0, 0, 0, 0};
    for (const ScoredFace &face : cluster) {
        total += face.score;
        mean.x += face.box.x * face.score;
        mean.y += face.box.y * face.score;
        mean.width += face.box.width * face.score;
        mean.height += face.box.height * face.score;
    }
    return {mean.x / total, mean.y / total, mean.width / total, mean.height / total};
}

} // namespace

double overlap(const FaceBox &a, const FaceBox &b)
{
    const double left = std::max(a.x, b.x);
    const double right = std::min(a.x + a.width, b.x + b.width);
    const double top = std::max(a.y, b.y);
    const double bottom = std::min(a.y + a.height, b.y + b.height);
    const double shared = std::max(0.0, right - left) * std::max(0.0, bottom - top);
    const double joined = a.area() + b.area() - shared;
    return joined > 0 ? shared / joined : 0;
}

std::vector<ScoredFace> decode(std::span<const float> boxes, std::span<const float> scores,
                               int inputSize, double minScore, double maxOverlap)
{
    if (boxes.size() < size_t(anchorCount * valuesPerAnchor) || scores.size() < anchorCount ||
        inputSize <= 0)
        return {};
    const auto &centres = anchorCentres();
    std::vector<ScoredFace> candidates;
    for (int i = 0; i < anchorCount; ++i) {
        const double score = sigmoid(scores[size_t(i)]);
        if (!(score >= minScore))
            continue;
        const FaceBox box = boxOf(boxes.subspan(size_t(i) * valuesPerAnchor, valuesPerAnchor),
                                  centres[i], inputSize);
        if (box.width > 0 && box.height > 0 && std::isfinite(box.x) && std::isfinite(box.y))
            candidates.push_back({box, score});
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const ScoredFace &a, const ScoredFace &b) { return a.score > b.score; });
    std::vector<ScoredFace> faces;
    std::vector<bool> taken(candidates.size(), false);
    for (size_t i = 0; i < candidates.size(); ++i) {
        if (taken[i])
            continue;
        std::vector<ScoredFace> cluster{candidates[i]};
        for (size_t j = i + 1; j < candidates.size(); ++j) {
            if (!taken[j] && overlap(candidates[i].box, candidates[j].box) > maxOverlap) {
                taken[j] = true;
                cluster.push_back(candidates[j]);
            }
        }
        faces.push_back({merged(cluster), candidates[i].score});
    }
    return faces;
}

} // namespace BlazeFaceDecoding
