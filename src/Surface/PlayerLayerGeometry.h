#pragma once

#include "Player/VideoPlacement.h"
#include "Surface/PlayerLayerLayout.h"
#include "Surface/PortraitDisplayMode.h"

#include <QPointF>
#include <QRectF>
#include <QSize>
#include <QSizeF>

#include <array>

// The geometry of the player view's display modes: the 9:16 box at full height, centred and
// never clamped (it overhangs a view narrower than itself); the picture inside it, panned
// horizontally in the manual and smart modes; the zoom of the portrait modes; and the quarter
// turn of the rotate mode. Pure functions of the view size, the picture size and the pan.
class PlayerLayerGeometry
{
public:
    PlayerLayerGeometry() = delete;

    // Each side of the picture frame grows by this share, computed as 1.13 − 1 in doubles.
    static constexpr double zoomGrowth = 1.13 - 1.0;
    // The rotate mode's turn in radians: a quarter, clockwise on screen.
    static constexpr double rotation = -1.5707963267948966;
    // A drag over this share of the view's width moves the pan from 0 to 1.
    static constexpr double dragWidthShare = 0.35;

    static QRectF cropRect(PortraitDisplayMode mode, QSizeF bounds);
    // The picture's frame in the crop's coordinates before the zoom; pan is −1 … 1.
    static QRectF videoFrame(PortraitDisplayMode mode, QSizeF crop, QSizeF presentationSize,
                             double pan);
    static bool zooms(PortraitDisplayMode mode);
    static QRectF zoomed(const QRectF &frame);
    static PlayerLayerLayout layout(PortraitDisplayMode mode, QSizeF bounds,
                                    QSizeF presentationSize, double pan);

    // The pan after dragging dx (in window coordinates) from startPan in a view that wide.
    static double pannedBy(double startPan, double dx, double viewWidth);

    // The corners of the picture (top-left, top-right, bottom-right, bottom-left of the picture
    // itself) in view coordinates, for a picture of that aspect (width / height; 0 when unknown,
    // which stretches it over its layer).
    static std::array<QPointF, 4> pictureCorners(const PlayerLayerLayout &layout,
                                                 double pictureAspect);

    // What mpv is told so that, drawing into a target of that many pixels, it puts an upright
    // picture of displaySize at picture (in the target's pixels, from its top-left corner; the
    // picture may overhang the target on any side). mpv first fits the picture into the target
    // in whole pixels, as reckoned here, then scales it by the zoom and places its top-left
    // corner by the pans; what overhangs is never drawn.
    static VideoPlacement placementInTarget(QSize target, const QRectF &picture, QSize displaySize);
    // Where mpv, told that placement, draws the whole picture's extent in the target's pixels.
    // It cuts what overhangs at whole pixels of the source and stretches the rest over what
    // remains of the target, so the picture lands up to a pixel away from where it was asked
    // to: the target drawn with this rectangle on the wanted one puts it back exactly.
    static QRectF drawnPicture(QSize target, const VideoPlacement &placement, QSize displaySize);
};
