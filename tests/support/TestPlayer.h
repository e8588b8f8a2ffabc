#pragma once

#include "Player/PlayerModel.h"
#include "Web/OKVideoPlayerRegistry.h"
#include "Web/YouTubePlayerRegistry.h"

// A player model with the registries it sends web-player commands through, as the application
// makes them; headless unless the test draws the picture.
struct TestPlayer
{
    explicit TestPlayer(MpvEngine::Output output = MpvEngine::Output::headless)
        : model(youtubePlayers, okVideoPlayers, output)
    {}

    YouTubePlayerRegistry youtubePlayers;
    OKVideoPlayerRegistry okVideoPlayers;
    PlayerModel model;
};
