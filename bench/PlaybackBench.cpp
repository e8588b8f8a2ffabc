// Measures the player on real media, for bench/playback-vs-mpv:
//   velm-bench-playback first-frame FILE      milliseconds from play() to the first frame
//   velm-bench-playback play FILE SECONDS     CPU seconds of the whole process for that much
//   playback
// Each prints one JSON line. Output is headless (no video or audio device), as for mpv --vo=null.

#include "Player/PlayerModel.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTimer>

#include <sys/resource.h>

#include <cstdio>

namespace {
double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &t) { return double(t.tv_sec) + t.tv_usec / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

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

    PlayerModel model(MpvEngine::Output::headless);
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
                    std::printf("{\"cpu\":%.3f}\n", cpuSeconds());
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
