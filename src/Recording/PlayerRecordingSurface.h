#pragma once

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
};
