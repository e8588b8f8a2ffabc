#pragma once

#include "Web/OKVideoContent.h"
#include "Web/WebPlayerView.h"

#include <chrono>

// The OK.ru player: the service's own embed page, which starts playing by itself.
class OKVideoPlayerView final : public WebPlayerView
{
    Q_OBJECT

public:
    // How long the embed page may take to load before the view gives up on it.
    static constexpr std::chrono::seconds loadTimeout{60};

    // Makes the view, registers it and loads the content.
    OKVideoPlayerView(const OKVideoContent &content, const PlayerViewServices &services,
                      QWidget *parent = nullptr);

    // Registers the view again and loads the content unless it is the one already loaded.
    void setContent(const OKVideoContent &content);
};
