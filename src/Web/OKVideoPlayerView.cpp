#include "Web/OKVideoPlayerView.h"

#include "Web/OKVideoPlayerRegistry.h"
#include "Web/YouTubeHostingView.h"

OKVideoPlayerView::OKVideoPlayerView(const OKVideoContent &content, QWidget *parent,
                                     WebPlayerEndpoints endpoints)
    : WebPlayerView(OKVideoPlayerRegistry::shared(), std::move(endpoints), parent)
{
    registerView();
    load(content);
}

void OKVideoPlayerView::setContent(const OKVideoContent &content)
{
    registerView();
    if (needsLoad(content.id()))
        load(content);
}

void OKVideoPlayerView::load(const OKVideoContent &content)
{
    noteLoaded(content.id());
    hostingView()->loadSitePage(endpoints().okVideoEmbedURL(content), endpoints().okVideoReferer(),
                                loadTimeout);
}
