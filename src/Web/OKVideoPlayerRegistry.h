#pragma once

#include "Web/WebPlayerRegistry.h"

// The process-wide registry of the OK.ru player view on screen.
class OKVideoPlayerRegistry final : public WebPlayerRegistry
{
    Q_OBJECT

public:
    // Created on first use; lives until the process ends.
    static OKVideoPlayerRegistry &shared();

private:
    OKVideoPlayerRegistry() : WebPlayerRegistry(WebPlayerService::okVideo) {}
};
