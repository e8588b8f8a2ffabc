#pragma once

#include "Web/WebPlayerRegistry.h"

// The process-wide registry of the YouTube player view on screen.
class YouTubePlayerRegistry final : public WebPlayerRegistry
{
    Q_OBJECT

public:
    // Created on first use; lives until the process ends.
    static YouTubePlayerRegistry &shared();

private:
    YouTubePlayerRegistry() : WebPlayerRegistry(WebPlayerService::youtube) {}
};
