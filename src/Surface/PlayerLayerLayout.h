#pragma once

#include <QRectF>

// Where the picture goes in the player view for one display mode, in the view's own coordinates
// (y down). Drawing follows it exactly, and tests read it.
struct PlayerLayerLayout
{
    // The visible area: the whole view in the normal mode, else the 9:16 box.
    QRectF cropRect;
    // Whether the picture is cut off at the edges of cropRect (every mode but normal).
    bool clipsToCrop = false;
    // The picture layer's frame in cropRect's coordinates, zoom applied. When rotated, the layer
    // has the size of this frame with width and height swapped, is centred on it and turned a
    // quarter clockwise on screen.
    QRectF videoFrame;
    bool rotated = false;
    // The picture fills its layer and is cut to it (every mode but normal), instead of fitting
    // whole inside it with bars.
    bool fillsLayer = false;
};
