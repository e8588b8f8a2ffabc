#include "Web/WebPlayerView.h"

#include "Recording/PlayerSurfaceRegistry.h"
#include "Web/WebPlayerRegistry.h"
#include "Web/YouTubeHostingView.h"

#include <QVBoxLayout>

WebPlayerView::WebPlayerView(WebPlayerRegistry &registry, const PlayerViewServices &services,
                             QWidget *parent)
    : QWidget(parent), m_registry(registry), m_surfaces(services.surfaces),
      m_endpoints(services.endpoints),
      m_hostingView(new YouTubeHostingView(services.notifier, services.webProfile, this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_hostingView);
    // A dead page keeps nothing of what was loaded, so the same content loads again when asked.
    connect(m_hostingView, &YouTubeHostingView::pageEnded, this,
            [this] { m_coordinator.loadedContentID.reset(); });
}

WebPlayerView::~WebPlayerView()
{
    m_hostingView->stopLoading();
    m_registry.release(m_hostingView);
    m_surfaces.release(m_hostingView);
}

void WebPlayerView::present(const QString &contentID, const std::function<void()> &load)
{
    m_registry.hold(m_hostingView);
    m_surfaces.hold(m_hostingView);
    if (m_coordinator.loadedContentID == contentID)
        return;
    m_coordinator.loadedContentID = contentID;
    load();
}
