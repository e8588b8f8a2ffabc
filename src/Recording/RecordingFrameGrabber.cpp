#include "Recording/RecordingFrameGrabber.h"

#include "Recording/CaptureClock.h"
#include "Recording/PlayerSurfaceRegistry.h"
#include "Recording/RecordingEncoding.h"
#include "Recording/WidgetsAbove.h"

#include <QWidget>

#include <algorithm>
#include <cmath>

namespace {

constexpr std::int64_t slotLength = 1'000'000'000 / RecordingEncoding::framesPerSecond;

// The widgets over rect (in the view's coordinates), placed in its pixels.
std::vector<CaptureOverlay> overlaysOver(QWidget &view, QRect rect, double scale)
{
    std::vector<CaptureOverlay> overlays;
    for (WidgetsAbove::Placed placed : WidgetsAbove::over(view)) {
        placed.covered = placed.covered.intersected(rect);
        if (placed.covered.isEmpty())
            continue;
        const QPoint at = placed.covered.topLeft() - rect.topLeft();
        overlays.push_back(
            {QPoint(int(std::lround(at.x() * scale)), int(std::lround(at.y() * scale))),
             WidgetsAbove::picture(view, placed, scale)});
    }
    return overlays;
}

} // namespace

RecordingFrameGrabber::RecordingFrameGrabber(PlayerSurfaceRegistry &surfaces, QWidget &window,
                                             QRect areaInWindow, Deliver deliver, QObject *parent)
    : QObject(parent), m_surfaces(surfaces), m_window(&window), m_area(areaInWindow),
      m_deliver(std::move(deliver))
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &RecordingFrameGrabber::tick);
}

void RecordingFrameGrabber::start()
{
    m_startTime = CaptureClock::now();
    m_lastSlot = -1;
    tick();
}

void RecordingFrameGrabber::stop()
{
    m_timer.stop();
}

void RecordingFrameGrabber::tick()
{
    // A grab belongs to the latest slot that has begun: a busy window thread makes grabs late,
    // not the video uneven, and only a slot passed over entirely goes without a frame.
    const std::int64_t slot = (CaptureClock::now() - m_startTime) / slotLength;
    if (slot > m_lastSlot) {
        m_lastSlot = slot;
        grab(m_startTime + slot * slotLength);
    }
    const std::int64_t wait = m_startTime + (m_lastSlot + 1) * slotLength - CaptureClock::now();
    m_timer.start(int(std::max<std::int64_t>(0, (wait + 999'999) / 1'000'000)));
}

bool RecordingFrameGrabber::grab(std::int64_t slotTime)
{
    PlayerRecordingSurface *surface = m_surfaces.surface();
    QWidget *view = surface ? surface->recordingView() : nullptr;
    if (!view || !m_window || view->window() != m_window || !view->isVisible())
        return false;
    const QRect area(view->mapFrom(m_window.data(), m_area.topLeft()), m_area.size());
    const QRect rect = surface->recordingRectInView().intersected(area);
    if (rect.isEmpty())
        return false;
    CaptureFrame frame;
    frame.picture = surface->recordingPicture(rect);
    frame.time = slotTime;
    if (frame.picture.image.isNull())
        return false;
    frame.overlays = overlaysOver(*view, rect, view->devicePixelRatioF());
    m_deliver(std::move(frame));
    return true;
}
