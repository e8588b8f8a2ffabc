#pragma once

#include "Recording/RecorderError.h"

#include <QList>
#include <QRect>

#include <variant>

// Which part of the window a recording takes: the surface's rectangle on the display that holds
// most of the window, cut to that display.
struct RecordingCaptureArea
{
    int display = 0; // index into the displays given
    QRect inDisplay; // in that display's coordinates, top-left origin
    QRect inWindow;  // the same rectangle in the window's client coordinates

    // window: the window's frame on the desktop; clientOrigin: where its client area begins;
    // surface: the picture in client coordinates; displays: the screens' geometries.
    static std::variant<RecordingCaptureArea, RecorderError>
    find(QRect window, QPoint clientOrigin, QRect surface, const QList<QRect> &displays);
};
