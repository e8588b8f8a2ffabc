#include "Surface/SmartReframe.h"

#include <algorithm>

namespace SmartReframe {

std::optional<FaceBox> largestFace(const std::vector<FaceBox> &faces)
{
    std::vector<FaceBox> sorted = faces;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const FaceBox &a, const FaceBox &b) { return a.area() > b.area(); });
    if (sorted.empty())
        return std::nullopt;
    return sorted.front();
}

double panTarget(const std::optional<FaceBox> &face)
{
    if (!face)
        return 0;
    const double target = (0.5 - face->horizontalMidpoint()) * 2;
    // Written so that a target that is not a number fails the test and becomes 1.
    if (!(target < 1))
        return 1;
    return std::max(target, -1.0);
}

double nextPan(double pan, double target)
{
    return pan + (target - pan) * smoothing;
}

} // namespace SmartReframe
