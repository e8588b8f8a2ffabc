#pragma once

#include "Recording/CapturedPicture.h"

class QRect;
class QWidget;

// A view whose picture can be recorded: the view and the rectangle in its own coordinates that
// holds the picture. Implemented by QObject views, so PlayerSurfaceRegistry can hold them weakly.
class PlayerRecordingSurface
{
public:
    virtual ~PlayerRecordingSurface() = default;

    virtual QWidget *recordingView() = 0;
    virtual QRect recordingRectInView() const = 0;
    // The pixels of rect (in the view's coordinates) as the view shows them now, without
    // drawing again; a null image when there is nothing to show yet. Main thread only.
    virtual CapturedPicture recordingPicture(const QRect &rect) = 0;
};
