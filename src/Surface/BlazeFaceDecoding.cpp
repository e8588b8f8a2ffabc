#include "Surface/BlazeFaceDecoding.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace BlazeFaceDecoding {
namespace {

struct Grid
{
    int cellScale; // cell side in fine cells
    int anchorsPerCell;
};
constexpr std::array<Grid, 2> grids{{{1, 2}, {2, 6}}};

double sigmoid(double raw)
{
    return 1 / (1 + std::exp(-std::clamp(raw, -100.0, 100.0)));
}

// The anchors' centres in fractions of the input, in the network's order.
std::vector<std::array<double, 2>> anchorCentres(const Input &input)
{
    std::vector<std::array<double, 2>> made;
    made.reserve(size_t(anchorCount(input)));
    for (const Grid &grid : grids) {
        const int columns = input.width / (input.fineCell * grid.cellScale);
        const int rows = input.height / (input.fineCell * grid.cellScale);
        for (int y = 0; y < rows; ++y) {
            for (int x = 0; x < columns; ++x) {
                for (int a = 0; a < grid.anchorsPerCell; ++a)
                    made.push_back({(x + 0.5) / columns, (y + 0.5) / rows});
            }
        }
    }
    return made;
}

FaceBox boxOf(std::span<const float> values, const std::array<double, 2> &centre,
              const Input &input)
{
    const double cx = values[0] / input.width + centre[0];
    const double cy = values[1] / input.height + centre[1];
    const double w = values[2] / input.width;
    const double h = values[3] / input.height;
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

bool Input::isValid() const
{
    const int coarseCell = fineCell * grids.back().cellScale;
    return fineCell > 0 && width >= coarseCell && height >= coarseCell && width % coarseCell == 0 &&
           height % coarseCell == 0;
}

int anchorCount(const Input &input)
{
    if (!input.isValid())
        return 0;
    int count = 0;
    for (const Grid &grid : grids) {
        const int cell = input.fineCell * grid.cellScale;
        count += (input.width / cell) * (input.height / cell) * grid.anchorsPerCell;
    }
    return count;
}

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
                               const Input &input, double minScore, double maxOverlap)
{
    const int anchors = anchorCount(input);
    if (anchors == 0 || boxes.size() < size_t(anchors) * valuesPerAnchor ||
        scores.size() < size_t(anchors))
        return {};
    const auto centres = anchorCentres(input);
    std::vector<ScoredFace> candidates;
    for (int i = 0; i < anchors; ++i) {
        const double score = sigmoid(scores[size_t(i)]);
        if (!(score >= minScore))
            continue;
        const FaceBox box = boxOf(boxes.subspan(size_t(i) * valuesPerAnchor, valuesPerAnchor),
                                  centres[size_t(i)], input);
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
