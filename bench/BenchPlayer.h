#pragma once

#include "Base/AppNotifier.h"
#include "Player/PlayerModel.h"
#include "Surface/PlayerHostingView.h"
#include "Web/OKVideoPlayerRegistry.h"
#include "Web/YouTubePlayerRegistry.h"

#include <QFileInfo>

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
