#pragma once

#include "Web/WebPlayerRegistry.h"

// The registry of the OK.ru player view on screen; the application makes one.
class OKVideoPlayerRegistry final : public WebPlayerRegistry
{
public:
    OKVideoPlayerRegistry() : WebPlayerRegistry(WebPlayerService::okVideo) {}
};
