#include "Web/OKVideoPlayerView.h"

#include "Web/OKVideoPlayerRegistry.h"
#include "Web/YouTubeHostingView.h"

OKVideoPlayerView::OKVideoPlayerView(const OKVideoContent &content,
                                     const PlayerViewServices &services, QWidget *parent)
    : WebPlayerView(services.okVideoPlayers, services, parent)
{
    setContent(content);
}

void OKVideoPlayerView::setContent(const OKVideoContent &content)
{
    present(content.id(), [&] {
        hostingView()->loadSitePage(endpoints().okVideoEmbedURL(content),
                                    endpoints().okVideoReferer(), loadTimeout);
    });
}
