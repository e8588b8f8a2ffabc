#pragma once

#include "Surface/PlayerHostingView.h"
#include "Surface/PlayerLayerView.h"
#include "Surface/PlayerSurface.h"
#include "TestViews.h"

// A 640 × 360 player surface on screen over a player that draws through the render API, as the
// window shows it. The members go in the reverse order of their making: the surface first.
struct TestSurface
{
    TestSurface()
    {
        surface.resize(640, 360);
        surface.show();
    }

    // The native player's video view, or null while a web player shows.
    PlayerHostingView *hostingView() const
    {
        auto *layer = qobject_cast<PlayerLayerView *>(surface.currentPlayer());
        return layer ? layer->hostingView() : nullptr;
    }

    TestViews views;
    TestPlayer player{MpvEngine::Output::render};
    PlayerSurface surface{player.model, views.services(player)};
};
