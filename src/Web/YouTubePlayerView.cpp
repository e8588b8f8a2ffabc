#include "Web/YouTubePlayerView.h"

#include "Web/YouTubeHostingView.h"
#include "Web/YouTubePlayerPage.h"
#include "Web/YouTubePlayerRegistry.h"

YouTubePlayerView::YouTubePlayerView(const YouTubeContent &content, QWidget *parent,
                                     WebPlayerEndpoints endpoints)
    : WebPlayerView(YouTubePlayerRegistry::shared(), std::move(endpoints), parent)
{
    registerView();
    load(content);
}

void YouTubePlayerView::setContent(const YouTubeContent &content)
{
    registerView();
    if (needsLoad(content.id()))
        load(content);
}

void YouTubePlayerView::load(const YouTubeContent &content)
{
    noteLoaded(content.id());
    hostingView()->loadPageText(YouTubePlayerPage::html(content, endpoints()),
                                endpoints().pageBaseURL());
}
