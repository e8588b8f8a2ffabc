#pragma once

#include "Web/PlayerViewServices.h"
#include "Web/WebPlayerCoordinator.h"

#include <QWidget>

#include <functional>

class WebPlayerRegistry;
class YouTubeHostingView;

// One web player on screen: a browser view that the service's registry and the recording
// registry point at while it lives. Made when the video area shows the service, updated with
// each new content, and dismantled (destroyed) when the area switches away. Main thread only.
class WebPlayerView : public QWidget
{
    Q_OBJECT

public:
    // Dismantling: stops loading and withdraws the view from both registries, unless they
    // already hold a newer view.
    ~WebPlayerView() override;

    YouTubeHostingView *hostingView() const { return m_hostingView; }
    const std::optional<QString> &loadedContentID() const { return m_coordinator.loadedContentID; }

protected:
    WebPlayerView(WebPlayerRegistry &registry, const PlayerViewServices &services, QWidget *parent);

    // On making and on every update: points both registries at this view, so they always hold
    // the view on screen, then loads the content unless it is the one already loaded, so the
    // page keeps playing where it is.
    void present(const QString &contentID, const std::function<void()> &load);
    const WebPlayerEndpoints &endpoints() const { return m_endpoints; }

private:
    WebPlayerRegistry &m_registry;
    PlayerSurfaceRegistry &m_surfaces;
    const WebPlayerEndpoints m_endpoints;
    YouTubeHostingView *m_hostingView;
    WebPlayerCoordinator m_coordinator;
};
