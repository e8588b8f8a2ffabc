// Measures the video surface drawing real media, for bench/surface-vs-mpv:
//   velm-bench-surface MODE WIDTHxHEIGHT SECONDS FILE
// plays FILE in a window of that size in the display mode ("normal", "fill", …) and, after one
// second of warm-up, counts for SECONDS the frames drawn, the frames mpv dropped and the CPU time
// of the whole process. Prints one JSON line.

#include "Player/PlayerModel.h"
#include "Surface/PlayerHostingView.h"

#include <QApplication>
#include <QTimer>

#include "BenchPlayer.h"
#include "ProcessCpu.h"

#include <cstdio>

namespace {
int usage()
{
    std::fputs(
        "usage: velm-bench-surface normal|fill|rotate|manual|smart WIDTHxHEIGHT SECONDS FILE\n",
        stderr);
    return 2;
}

std::optional<PortraitDisplayMode> modeNamed(const QString &name)
{
    for (const PortraitDisplayMode mode : PortraitDisplayModes::all) {
        const QString raw = PortraitDisplayModes::rawValue(mode).toString().toLower();
        if (raw.split(QLatin1Char(' ')).contains(name))
            return mode;
    }
    return std::nullopt;
}
} // namespace

int main(int argc, char **argv)
{
    prepareBenchProcess();
    QApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.size() != 5)
        return usage();
    const std::optional<PortraitDisplayMode> mode = modeNamed(arguments.at(1));
    const QStringList size = arguments.at(2).split(QLatin1Char('x'));
    const int seconds = arguments.at(3).toInt();
    if (!mode || size.size() != 2 || seconds <= 0)
        return usage();

    BenchPlayer player;
    PlayerModel &model = player.model;
    PlayerHostingView &view = player.view;
    view.setDisplayMode(*mode);
    view.resize(size.at(0).toInt(), size.at(1).toInt());
    view.show();
    player.play(arguments.at(4));

    qint64 frames = 0;
    qint64 decoderDropsAtStart = 0;
    qint64 outputDropsAtStart = 0;
    double cpuAtStart = 0;
    bool counting = false;
    QObject::connect(&view, &PlayerHostingView::frameSwapped, [&] { frames += counting ? 1 : 0; });
    QObject::connect(
        &model.engine(), &MpvEngine::framesReady, &application,
        [&] {
            QTimer::singleShot(1000, &application, [&] {
                counting = true;
                decoderDropsAtStart = model.engine().decoderDroppedFrames();
                outputDropsAtStart = model.engine().outputDroppedFrames();
                cpuAtStart = processCpuSeconds();
                QTimer::singleShot(seconds * 1000, &application, [&] {
                    std::printf(
                        "{\"fps\":%.2f,\"decoderDrops\":%lld,\"outputDrops\":%lld,\"cpu\":%.3f}\n",
                        double(frames) / seconds,
                        model.engine().decoderDroppedFrames() - decoderDropsAtStart,
                        model.engine().outputDroppedFrames() - outputDropsAtStart,
                        processCpuSeconds() - cpuAtStart);
                    application.quit();
                });
            });
        },
        Qt::SingleShotConnection);
    return application.exec();
}
