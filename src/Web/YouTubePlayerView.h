#pragma once

#include "Web/WebPlayerView.h"
#include "Web/YouTubeContent.h"

// The YouTube player: our own page around YouTube's iframe player, in a browser view.
class YouTubePlayerView final : public WebPlayerView
{
    Q_OBJECT

public:
    // Makes the view, registers it and loads the content.
    YouTubePlayerView(const YouTubeContent &content, const PlayerViewServices &services,
                      QWidget *parent = nullptr);

    // Registers the view again and loads the content unless it is the one already loaded.
    void setContent(const YouTubeContent &content);
};
