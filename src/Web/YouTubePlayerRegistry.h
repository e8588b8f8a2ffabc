#pragma once

#include "Web/WebPlayerRegistry.h"

// The registry of the YouTube player view on screen; the application makes one.
class YouTubePlayerRegistry final : public WebPlayerRegistry
{
public:
    YouTubePlayerRegistry() : WebPlayerRegistry(WebPlayerService::youtube) {}
};
