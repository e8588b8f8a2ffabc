#include "UI/PlayerTimeText.h"

#include <cmath>

QString PlayerTimeText::time(double seconds)
{
    if (!std::isfinite(seconds))
        return QStringLiteral("00:00");
    // Whole seconds, counted from the floor, so 59.9 s still shows 00:59.
    const double whole = std::floor(seconds);
    const long long n = whole < -9.2e18 ? 0 : whole > 9.2e18 ? 0 : static_cast<long long>(whole);
    const long long minutes = n / 60;
    const long long rest = n - minutes * 60;
    return QString::asprintf("%02lld:%02lld", minutes, rest);
}

QString PlayerTimeText::remaining(double duration, double position)
{
    return time(std::max(0.0, duration - position));
}
