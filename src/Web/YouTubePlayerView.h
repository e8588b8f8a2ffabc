#pragma once

#include "Web/WebPlayerView.h"
#include "Web/YouTubeContent.h"

// The YouTube player: our own page around YouTube's iframe player, in a browser view.
class YouTubePlayerView final : public WebPlayerView
{
    Q_OBJECT

public:
    // Makes the view, registers it and loads the content.
    explicit YouTubePlayerView(const YouTubeContent &content, QWidget *parent = nullptr,
                               WebPlayerEndpoints endpoints = WebPlayerEndpoints::standard());

    // Registers the view again and loads the content unless it is the one already loaded, so
    // the page keeps playing where it is.
    void setContent(const YouTubeContent &content);

private:
    void load(const YouTubeContent &content);
};
