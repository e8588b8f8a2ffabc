#pragma once

#include "Web/WebPlayerCoordinator.h"
#include "Web/WebPlayerEndpoints.h"

#include <QWidget>

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
    WebPlayerView(WebPlayerRegistry &registry, WebPlayerEndpoints endpoints, QWidget *parent);

    // Points both registries at this view: on make and on every update, so they always hold the
    // view on screen.
    void registerView();
    // True when the content with this identity must be loaded (nothing, or something else, is).
    bool needsLoad(const QString &contentID) const;
    void noteLoaded(const QString &contentID) { m_coordinator.loadedContentID = contentID; }
    const WebPlayerEndpoints &endpoints() const { return m_endpoints; }

private:
    WebPlayerRegistry &m_registry;
    const WebPlayerEndpoints m_endpoints;
    YouTubeHostingView *m_hostingView;
    WebPlayerCoordinator m_coordinator;
};
