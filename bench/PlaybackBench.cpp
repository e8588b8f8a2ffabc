// Measures the player on real media, for bench/playback-vs-mpv:
//   velm-bench-playback first-frame FILE      milliseconds from play() to the first frame
//   velm-bench-playback play FILE SECONDS     CPU seconds of the whole process for that much
//   playback
// Each prints one JSON line. Output is headless (no video or audio device), as for mpv --vo=null.

#include "Player/PlayerModel.h"
#include "Web/OKVideoPlayerRegistry.h"
#include "Web/YouTubePlayerRegistry.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTimer>

#include "ProcessCpu.h"

#include <cstdio>

namespace {
int usage()
{
    std::fputs("usage: velm-bench-playback first-frame FILE | play FILE SECONDS\n", stderr);
    return 2;
}
} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.size() < 3)
        return usage();
    const QString command = arguments.at(1);
    const WebAddress file =
        WebAddress::fromLocalFile(QFileInfo(arguments.at(2)).absoluteFilePath());

    YouTubePlayerRegistry youtubePlayers;
    OKVideoPlayerRegistry okVideoPlayers;
    PlayerModel model(youtubePlayers, okVideoPlayers, MpvEngine::Output::headless);
    QElapsedTimer clock;
    if (command == QStringLiteral("first-frame")) {
        QObject::connect(&model.engine(), &MpvEngine::framesReady, &application, [&] {
            std::printf("{\"ms\":%.2f}\n", clock.nsecsElapsed() / 1e6);
            application.quit();
        });
    } else if (command == QStringLiteral("play") && arguments.size() == 4) {
        const int seconds = arguments.at(3).toInt();
        QObject::connect(
            &model.engine(), &MpvEngine::framesReady, &application,
            [&, seconds] {
                QTimer::singleShot(seconds * 1000, &application, [&] {
                    std::printf("{\"cpu\":%.3f}\n", processCpuSeconds());
                    application.quit();
                });
            },
            Qt::SingleShotConnection);
    } else {
        return usage();
    }
    QObject::connect(&model.engine(), &MpvEngine::loadFailed, &application, [&] {
        std::fputs("velm-bench-playback: the media could not be played\n", stderr);
        application.exit(1);
    });
    clock.start();
    model.play(file, std::nullopt, false);
    return application.exec();
}
