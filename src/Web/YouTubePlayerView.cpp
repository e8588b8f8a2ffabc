#include "Web/YouTubePlayerView.h"

#include "Web/YouTubeHostingView.h"
#include "Web/YouTubePlayerPage.h"
#include "Web/YouTubePlayerRegistry.h"

YouTubePlayerView::YouTubePlayerView(const YouTubeContent &content,
                                     const PlayerViewServices &services, QWidget *parent)
    : WebPlayerView(services.youtubePlayers, services, parent)
{
    setContent(content);
}

void YouTubePlayerView::setContent(const YouTubeContent &content)
{
    present(content.id(), [&] {
        hostingView()->loadPageText(YouTubePlayerPage::html(content, endpoints()),
                                    endpoints().pageBaseURL());
    });
}
