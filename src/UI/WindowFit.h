#pragma once

#include <QRect>
#include <QSize>

#include <optional>

// The size that gives a window's picture the video's shape: the picture keeps its height and
// takes the width of the video's aspect ratio, everything around it (sidebar, control bar) keeps
// its size, and the result shrinks, shape kept, until it fits the screen's free area. Never
// smaller than the window's minimum, where the picture letterboxes instead.
class WindowFit
{
public:
    WindowFit() = delete;

    // Nothing when the aspect ratio is unknown or nothing would change.
    static std::optional<QSize> fittedWindowSize(const QSize &window, const QSize &picture,
                                                 double aspectRatio, const QSize &available,
                                                 const QSize &minimum);
    // Where a window of that size goes: where it was, moved back inside the free area if needed.
    static QRect placed(const QRect &frame, const QSize &size, const QRect &available);
};
