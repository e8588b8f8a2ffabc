#pragma once

#include "Recording/CapturedPicture.h"

#include <QObject>
#include <QPointer>
#include <QRect>
#include <QTimer>

#include <functional>
#include <vector>

class PlayerSurfaceRegistry;
class QWidget;

// Takes what the window shows in a rectangle of its client area 30 times a second: the picture of
// the surface registered there (asked for its pixels, never made to draw again) and the widgets
// stacked over it (a toast, a badge, the full-screen controls). Slots are kept on the monotonic
// clock: each frame is stamped with its slot, so the video is even however busy the thread. Main
// thread only.
class RecordingFrameGrabber : public QObject
{
    Q_OBJECT

public:
    using Deliver = std::function<void(CaptureFrame &&frame)>;

    RecordingFrameGrabber(PlayerSurfaceRegistry &surfaces, QWidget &window, QRect areaInWindow,
                          Deliver deliver, QObject *parent = nullptr);

    // The first frame is taken at once.
    void start();
    void stop();

private:
    void tick();
    // One grab now, for the slot that began at slotTime; false when nothing could be taken (no
    // surface, or it shows nothing yet).
    bool grab(std::int64_t slotTime);

    PlayerSurfaceRegistry &m_surfaces;
    QPointer<QWidget> m_window;
    QRect m_area;
    Deliver m_deliver;
    QTimer m_timer;
    std::int64_t m_startTime = 0;
    std::int64_t m_lastSlot = -1;
};
