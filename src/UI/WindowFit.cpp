#include "UI/WindowFit.h"

#include <algorithm>
#include <cmath>

std::optional<QSize> WindowFit::fittedWindowSize(const QSize &window, const QSize &picture,
                                                 double aspectRatio, const QSize &available,
                                                 const QSize &minimum)
{
    if (!std::isfinite(aspectRatio) || aspectRatio <= 0 || picture.isEmpty() || window.isEmpty())
        return std::nullopt;
    const QSize chrome = window - picture;
    double height = picture.height();
    double width = height * aspectRatio;
    // Shrink, shape kept, to what the free area leaves the picture.
    const double roomWidth = available.width() - chrome.width();
    const double roomHeight = available.height() - chrome.height();
    if (roomWidth <= 0 || roomHeight <= 0)
        return std::nullopt;
    const double scale = std::min({1.0, roomWidth / width, roomHeight / height});
    width *= scale;
    height *= scale;
    QSize fitted(int(std::lround(width)) + chrome.width(),
                 int(std::lround(height)) + chrome.height());
    fitted = fitted.expandedTo(minimum).boundedTo(available);
    if (fitted == window)
        return std::nullopt;
    return fitted;
}

QRect WindowFit::placed(const QRect &frame, const QSize &size, const QRect &available)
{
    QRect result(frame.topLeft(), size);
    if (result.right() > available.right())
        result.moveRight(available.right());
    if (result.bottom() > available.bottom())
        result.moveBottom(available.bottom());
    if (result.left() < available.left())
        result.moveLeft(available.left());
    if (result.top() < available.top())
        result.moveTop(available.top());
    return result;
}
