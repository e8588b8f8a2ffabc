#include "Web/WebPlayerView.h"

#include "Recording/PlayerSurfaceRegistry.h"
#include "Web/WebPlayerRegistry.h"
#include "Web/YouTubeHostingView.h"

#include <QVBoxLayout>

WebPlayerView::WebPlayerView(WebPlayerRegistry &registry, WebPlayerEndpoints endpoints,
                             QWidget *parent)
    : QWidget(parent), m_registry(registry), m_endpoints(std::move(endpoints)),
      m_hostingView(new YouTubeHostingView(this))
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
    m_registry.clearWebView(m_hostingView);
    PlayerSurfaceRegistry::shared().clearSurface(m_hostingView);
}

void WebPlayerView::registerView()
{
    m_registry.setWebView(m_hostingView);
    PlayerSurfaceRegistry::shared().setSurface(m_hostingView);
}

bool WebPlayerView::needsLoad(const QString &contentID) const
{
    return m_coordinator.loadedContentID != contentID;
}
