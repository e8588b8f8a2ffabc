#pragma once

#include "App/AppStartup.h"
#include "Base/AppNotifier.h"
#include "Player/PlayerModel.h"
#include "Surface/PlayerHostingView.h"
#include "Web/OKVideoPlayerRegistry.h"
#include "Web/YouTubePlayerRegistry.h"

#include <QFileInfo>

// Before the application object: the process set up as the player's own, so that memory and
// OpenGL behave as they do for a user.
inline void prepareBenchProcess()
{
    AppStartup::giveEachThreadAMemoryPool();
    AppStartup::prepareGraphics();
}

// A player model drawing into a video view of its own, as the benchmarks play media.
struct BenchPlayer
{
    BenchPlayer() : model(youtubePlayers, okVideoPlayers, MpvEngine::Output::render), view(notifier)
    {
        view.setPlayer(&model.engine());
    }

    void play(const QString &file)
    {
        model.play(WebAddress::fromLocalFile(QFileInfo(file).absoluteFilePath()), {}, false);
    }

    // Plays file, and again each time it ends.
    void playOverAndOver(const QString &file)
    {
        QObject::connect(&model.engine(), &MpvEngine::playbackStateChanged, &view, [this, file] {
            if (model.engine().isEndReached())
                play(file);
        });
        play(file);
    }

    YouTubePlayerRegistry youtubePlayers;
    OKVideoPlayerRegistry okVideoPlayers;
    PlayerModel model;
    AppNotifier notifier;
    PlayerHostingView view;
};
