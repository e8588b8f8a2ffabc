#pragma once

#include "Base/AppNotifier.h"
#include "Recording/PlayerSurfaceRegistry.h"
#include "TestPlayer.h"
#include "Web/PlayerViewServices.h"
#include "Web/WebPlayerProfile.h"

// What the player views of one test are made with, owned as the application owns them.
struct TestViews
{
    PlayerViewServices services(TestPlayer &player,
                                WebPlayerEndpoints endpoints = WebPlayerEndpoints::standard())
    {
        return {notifier,
                surfaces,
                player.youtubePlayers,
                player.okVideoPlayers,
                webProfile,
                std::move(endpoints)};
    }

    AppNotifier notifier;
    PlayerSurfaceRegistry surfaces;
    WebPlayerProfile webProfile;
};
