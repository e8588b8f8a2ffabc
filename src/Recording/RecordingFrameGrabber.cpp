#include "Recording/RecordingFrameGrabber.h"

#include "Recording/CaptureClock.h"
#include "Recording/PlayerSurfaceRegistry.h"
#include "Recording/RecordingEncoding.h"

#include <QWidget>

#include <algorithm>
#include <cmath>

namespace {

constexpr std::int64_t slotLength = 1'000'000'000 / RecordingEncoding::framesPerSecond;

QRect inWindow(const QWidget &widget, const QWidget &window)
{
    return QRect(widget.mapTo(&window, QPoint(0, 0)), widget.size());
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
    const QRect rectInWindow(view->mapTo(m_window.data(), rect.topLeft()), rect.size());
    frame.overlays = overlaysOver(*view, rectInWindow, view->devicePixelRatioF());
    m_deliver(std::move(frame));
    return true;
}

std::vector<CaptureOverlay> RecordingFrameGrabber::overlaysOver(QWidget &view, QRect area,
                                                                double scale)
{
    // Widgets above the view are its ancestors' children that come after the branch holding it.
    std::vector<CaptureOverlay> overlays;
    QWidget *branch = &view;
    for (QWidget *parent = view.parentWidget(); parent && branch != m_window;
         branch = parent, parent = parent->parentWidget()) {
        const QObjectList &children = parent->children();
        for (qsizetype i = children.indexOf(branch) + 1; i < children.size(); ++i) {
            auto *widget = qobject_cast<QWidget *>(children[i]);
            if (!widget || widget->isWindow() || !widget->isVisible())
                continue;
            const QRect placed = inWindow(*widget, *m_window);
            const QRect covered = placed.intersected(area);
            if (covered.isEmpty())
                continue;
            QImage image(covered.size() * scale, QImage::Format_ARGB32_Premultiplied);
            image.setDevicePixelRatio(scale);
            image.fill(Qt::transparent);
            widget->render(&image, QPoint(), QRegion(covered.translated(-placed.topLeft())),
                           QWidget::DrawChildren);
            const QPoint at = covered.topLeft() - area.topLeft();
            overlays.push_back(
                {QPoint(int(std::lround(at.x() * scale)), int(std::lround(at.y() * scale))),
                 std::move(image)});
        }
    }
    return overlays;
}
