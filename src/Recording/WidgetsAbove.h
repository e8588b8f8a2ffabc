#pragma once

#include <QImage>
#include <QRect>

#include <vector>

class QWidget;

// The widgets of a window that lie over a view: the children of the view's ancestors that come
// after the branch holding it, shown, not windows of their own, and overlapping it. A picture of
// the view alone leaves them out, so a recording of it, a screenshot, or a native window drawn
// in it (which hides them) adds them itself.
class WidgetsAbove
{
public:
    struct Placed
    {
        QWidget *widget;
        QRect covered; // the part over the view, in the view's coordinates
    };

    // Back to front, as they are stacked.
    static std::vector<Placed> over(const QWidget &view);
    // The covered part of the widget with its children, on transparency, at scale pixels per
    // unit.
    static QImage picture(const QWidget &view, const Placed &placed, double scale);
    // The same picture painted into image, whose memory is used again where it has the size:
    // for pictures taken with every repaint of a window.
    static void paint(const QWidget &view, const Placed &placed, double scale, QImage &image);
};
