#include "Surface/PlayerVideoWindow.h"

#include <QPlatformSurfaceEvent>

PlayerVideoWindow::PlayerVideoWindow(std::function<void()> initialize, std::function<void()> paint,
                                     std::function<void()> leaving)
    : m_initialize(std::move(initialize)), m_paint(std::move(paint)), m_leaving(std::move(leaving))
{
    setFlags(flags() | Qt::WindowTransparentForInput | Qt::WindowDoesNotAcceptFocus);
}

void PlayerVideoWindow::initializeGL()
{
    m_initialize();
}

void PlayerVideoWindow::paintGL()
{
    m_paint();
}

bool PlayerVideoWindow::event(QEvent *event)
{
    if (event->type() == QEvent::PlatformSurface &&
        static_cast<QPlatformSurfaceEvent *>(event)->surfaceEventType() ==
            QPlatformSurfaceEvent::SurfaceAboutToBeDestroyed)
        m_leaving();
    return QOpenGLWindow::event(event);
}
