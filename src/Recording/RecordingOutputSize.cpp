#include "Recording/RecordingOutputSize.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double hdLong = 1920;
constexpr double hdShort = 1080;
constexpr std::int64_t bitsPerPixel = 6;
constexpr std::int64_t leastBitRate = 4'000'000;

// Halves away from zero, into the range of int.
int roundedSide(double value)
{
    if (!std::isfinite(value))
        return 0;
    return int(std::clamp(std::round(value), 0.0, double(std::numeric_limits<int>::max() - 1)));
}

int evenSide(int side)
{
    return std::max(2, side - side % 2);
}

} // namespace

QSize outputDimensions(QSizeF points, double scale, PlayerRecordingQuality quality)
{
    double factor = scale;
    if (quality == PlayerRecordingQuality::hd) {
        const bool portrait = points.width() < points.height();
        const double boxWidth = portrait ? hdShort : hdLong;
        const double boxHeight = portrait ? hdLong : hdShort;
        factor = std::min(boxWidth / points.width(), boxHeight / points.height());
    }
    return QSize(evenSide(roundedSide(points.width() * factor)),
                 evenSide(roundedSide(points.height() * factor)));
}

std::optional<std::int64_t> recordingBitRate(int width, int height)
{
    std::int64_t pixels = 0;
    std::int64_t bits = 0;
    if (width < 0 || height < 0 || __builtin_mul_overflow(std::int64_t(width), height, &pixels) ||
        __builtin_mul_overflow(pixels, bitsPerPixel, &bits))
        return std::nullopt;
    return std::max(bits, leastBitRate);
}
