#include "Surface/PlayerLayerGeometry.h"

#include <algorithm>
#include <cmath>

namespace {

// The picture of that aspect inside the frame: whole with bars, or covering it and cut.
QRectF placed(const QRectF &frame, double aspect, bool fill)
{
    if (aspect <= 0 || frame.isEmpty())
        return frame;
    const double frameAspect = frame.width() / frame.height();
    const bool widerThanFrame = aspect > frameAspect;
    QSizeF size = frame.size();
    if (widerThanFrame != fill)
        size.setHeight(frame.width() / aspect);
    else
        size.setWidth(frame.height() * aspect);
    QRectF picture(QPointF(), size);
    picture.moveCenter(frame.center());
    return picture;
}

// mpv's fit of a picture of displaySize into the target, in whole pixels: the full width,
// unless the height then overflows (or shrinks below the picture's own) and the full height fits.
// Computed in single precision and truncated, as mpv does.
QSize fittedSize(QSize target, QSize displaySize)
{
    const int dw = displaySize.width();
    const int dh = displaySize.height();
    int width = target.width();
    int height = int(float(target.width()) / float(dw) * float(dh));
    if (height > target.height() || height < dh) {
        const int heightFitWidth = int(float(target.height()) / float(dh) * float(dw));
        if (heightFitWidth <= target.width()) {
            width = heightFitWidth;
            height = target.height();
        }
    }
    return {width, height};
}

// Along one axis: where source position 0 and sourceSize land when mpv draws a picture scaled
// to `scaled` pixels, its start put at pan × scaled, into a target of targetSize pixels. What
// overhangs is cut at whole source pixels and the rest stretched over the target's part.
std::pair<double, double> drawnSpan(int sourceSize, int targetSize, int scaled, float pan)
{
    if (scaled <= 0 || sourceSize <= 0)
        return {0, double(targetSize)};
    int dstStart = int(pan * float(scaled));
    int dstEnd = dstStart + scaled;
    int srcStart = 0;
    int srcEnd = sourceSize;
    if (dstStart < 0) {
        srcStart += -dstStart * sourceSize / scaled;
        dstStart = 0;
    }
    if (dstEnd > targetSize) {
        srcEnd -= (dstEnd - targetSize) * sourceSize / scaled;
        dstEnd = targetSize;
    }
    if (srcEnd <= srcStart || dstEnd <= dstStart)
        return {0, double(targetSize)};
    const double perSource = double(dstEnd - dstStart) / (srcEnd - srcStart);
    return {dstStart - srcStart * perSource, dstStart + (sourceSize - srcStart) * perSource};
}

} // namespace

QRectF PlayerLayerGeometry::cropRect(PortraitDisplayMode mode, QSizeF bounds)
{
    if (mode == PortraitDisplayMode::normal)
        return QRectF(QPointF(), bounds);
    const double height = bounds.height();
    const double width = height * 9 * 0.0625;
    return QRectF((bounds.width() - width) / 2, 0, width, height);
}

QRectF PlayerLayerGeometry::videoFrame(PortraitDisplayMode mode, QSizeF crop,
                                       QSizeF presentationSize, double pan)
{
    const double cw = crop.width();
    const double ch = crop.height();
    const QRectF whole(0, 0, cw, ch);
    const bool pans = mode == PortraitDisplayMode::manual || mode == PortraitDisplayMode::smart;
    if (!pans || !(presentationSize.width() > 0) || !(presentationSize.height() > 0))
        return whole;
    const double aspect = presentationSize.width() / presentationSize.height();
    const double boxAspect = ch > 1 ? cw / ch : cw;
    if (boxAspect < aspect) {
        const double width = aspect * ch;
        const double overflow = std::max(0.0, width - cw);
        return QRectF(pan * overflow * 0.5 - overflow * 0.5, 0, width, ch);
    }
    const double height = cw / std::max(aspect, 0.01);
    return QRectF(0, -(height - ch) / 2, cw, height);
}

bool PlayerLayerGeometry::zooms(PortraitDisplayMode mode)
{
    return mode == PortraitDisplayMode::fill || mode == PortraitDisplayMode::manual ||
           mode == PortraitDisplayMode::smart;
}

QRectF PlayerLayerGeometry::zoomed(const QRectF &frame)
{
    const double g = zoomGrowth;
    return QRectF(frame.x() - 0.5 * g * frame.width(), frame.y() - 0.5 * g * frame.height(),
                  frame.width() + g * frame.width(), frame.height() + g * frame.height());
}

PlayerLayerLayout PlayerLayerGeometry::layout(PortraitDisplayMode mode, QSizeF bounds,
                                              QSizeF presentationSize, double pan)
{
    PlayerLayerLayout layout;
    layout.cropRect = cropRect(mode, bounds);
    layout.clipsToCrop = mode != PortraitDisplayMode::normal;
    layout.videoFrame = videoFrame(mode, layout.cropRect.size(), presentationSize, pan);
    if (zooms(mode))
        layout.videoFrame = zoomed(layout.videoFrame);
    layout.rotated = mode == PortraitDisplayMode::rotate;
    layout.fillsLayer = mode != PortraitDisplayMode::normal;
    return layout;
}

double PlayerLayerGeometry::pannedBy(double startPan, double dx, double viewWidth)
{
    return std::clamp(startPan + dx / std::max(viewWidth * dragWidthShare, 1.0), -1.0, 1.0);
}

std::array<QPointF, 4> PlayerLayerGeometry::pictureCorners(const PlayerLayerLayout &layout,
                                                           double pictureAspect)
{
    const QPointF origin = layout.cropRect.topLeft();
    if (!layout.rotated) {
        const QRectF picture =
            placed(layout.videoFrame.translated(origin), pictureAspect, layout.fillsLayer);
        return {picture.topLeft(), picture.topRight(), picture.bottomRight(), picture.bottomLeft()};
    }
    // The layer is the frame turned on its side: width and height swapped, same centre. The
    // picture is placed in it upright, then the whole is turned a quarter clockwise, which on a
    // y-down screen takes (x, y) about the centre to (−y, x).
    const QRectF frame = layout.videoFrame.translated(origin);
    const QPointF centre = frame.center();
    QRectF upright(QPointF(), QSizeF(frame.height(), frame.width()));
    upright.moveCenter(QPointF());
    const QRectF picture = placed(upright, pictureAspect, layout.fillsLayer);
    const auto turned = [&](QPointF p) { return centre + QPointF(-p.y(), p.x()); };
    return {turned(picture.topLeft()), turned(picture.topRight()), turned(picture.bottomRight()),
            turned(picture.bottomLeft())};
}

VideoPlacement PlayerLayerGeometry::placementInTarget(QSize target, const QRectF &picture,
                                                      QSize displaySize)
{
    if (target.isEmpty() || displaySize.isEmpty() || picture.isEmpty())
        return {};
    VideoPlacement placement;
    placement.zoom =
        std::log2(picture.width() / std::max(fittedSize(target, displaySize).width(), 1));
    placement.alignX = -1;
    placement.alignY = -1;
    placement.panX = picture.left() / picture.width();
    placement.panY = picture.top() / picture.height();
    return placement;
}

QRectF PlayerLayerGeometry::drawnPicture(QSize target, const VideoPlacement &placement,
                                         QSize displaySize)
{
    if (target.isEmpty() || displaySize.isEmpty())
        return QRectF(QPointF(), QSizeF(target));
    const QSize fitted = fittedSize(target, displaySize);
    const float scale = std::pow(2.0f, float(placement.zoom));
    const auto [left, right] = drawnSpan(displaySize.width(), target.width(),
                                         int(float(fitted.width()) * scale), float(placement.panX));
    const auto [top, bottom] =
        drawnSpan(displaySize.height(), target.height(), int(float(fitted.height()) * scale),
                  float(placement.panY));
    return QRectF(QPointF(left, top), QPointF(right, bottom));
}
