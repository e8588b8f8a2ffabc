// Measures a recording of the video surface while it plays, for bench/record-vs-ffmpeg:
//   velm-bench-record ours|ffmpeg SECONDS CLIP OUT
// plays CLIP (again and again) in a 960 × 540 window at the screen's top-left corner and, after
// two seconds of warm-up, records SECONDS into OUT: "ours" with the player's own recorder at
// normal quality, "ffmpeg" with the ffmpeg command line grabbing the same rectangle of the X
// display and the sound server's monitor with the same encoder settings. Prints one JSON line:
// the CPU seconds of player and recorder together, the wall seconds recorded, the resident
// memory of player and recorder a few seconds in, at the end and at its peak, and the frames the
// player dropped meanwhile.
//   velm-bench-record analyse FILE
// prints the frames FILE holds, the frames its duration asks for at 30 a second, and how long
// after each beep its flash is shown (median, milliseconds).

#include "Player/PlayerModel.h"
#include "Recording/GrantedRecordingPermission.h"
#include "Recording/PlayerRecordingController.h"
#include "Recording/PlayerSurfaceRegistry.h"
#include "Recording/PulseSystemAudioSource.h"
#include "Recording/RecordingEncoding.h"
#include "Recording/RecordingOutputSize.h"
#include "Surface/PlayerHostingView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTimer>

#include "BenchPlayer.h"
#include "MediaProbe.h"
#include "ProcessCpu.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int windowWidth = 960;
constexpr int windowHeight = 540;
constexpr int warmUpMs = 2000;
// Memory is compared from this far into the recording, once the encoders hold their buffers.
constexpr int settledMs = 5000;

int usage()
{
    std::fputs("usage: velm-bench-record ours|ffmpeg SECONDS CLIP OUT\n"
               "       velm-bench-record analyse FILE\n",
               stderr);
    return 2;
}

// Resident memory in MiB of the process with that status file, 0 once it is gone.
double residentMiB(const QString &statusPath)
{
    QFile status(statusPath);
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toDouble() / 1024;
    }
    return 0;
}

double childrenCpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    const auto seconds = [](const timeval &t) { return double(t.tv_sec) + t.tv_usec / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// The command line that records what the player records, with the same encoder settings.
QStringList ffmpegArguments(QPoint origin, int seconds, const QString &out)
{
    const QSize size =
        outputDimensions(QSizeF(windowWidth, windowHeight), 1, PlayerRecordingQuality::normal);
    const qint64 bitRate = recordingBitRate(size.width(), size.height()).value_or(0);
    const QString display = qEnvironmentVariable("DISPLAY");
    return {QStringLiteral("-hide_banner"),
            QStringLiteral("-loglevel"),
            QStringLiteral("error"),
            QStringLiteral("-y"),
            QStringLiteral("-f"),
            QStringLiteral("x11grab"),
            QStringLiteral("-framerate"),
            QString::number(RecordingEncoding::framesPerSecond),
            QStringLiteral("-video_size"),
            QStringLiteral("%1x%2").arg(size.width()).arg(size.height()),
            QStringLiteral("-draw_mouse"),
            QStringLiteral("0"),
            QStringLiteral("-i"),
            QStringLiteral("%1+%2,%3").arg(display).arg(origin.x()).arg(origin.y()),
            QStringLiteral("-f"),
            QStringLiteral("pulse"),
            QStringLiteral("-i"),
            QStringLiteral("@DEFAULT_MONITOR@"),
            QStringLiteral("-t"),
            QString::number(seconds),
            QStringLiteral("-fps_mode"),
            QStringLiteral("passthrough"),
            QStringLiteral("-c:v"),
            QStringLiteral("libx264"),
            QStringLiteral("-preset"),
            QLatin1String(RecordingEncoding::videoPreset),
            QStringLiteral("-profile:v"),
            QLatin1String(RecordingEncoding::videoProfile),
            QStringLiteral("-pix_fmt"),
            QStringLiteral("yuv420p"),
            QStringLiteral("-b:v"),
            QString::number(bitRate),
            QStringLiteral("-g"),
            QString::number(RecordingEncoding::keyFrameInterval),
            QStringLiteral("-c:a"),
            QStringLiteral("aac"),
            QStringLiteral("-b:a"),
            QString::number(RecordingEncoding::audioBitRate),
            QStringLiteral("-ar"),
            QString::number(RecordingEncoding::audioSampleRate),
            QStringLiteral("-ac"),
            QString::number(RecordingEncoding::audioChannels),
            QStringLiteral("-movflags"),
            QStringLiteral("+faststart"),
            out};
}

double median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Seconds at which the picture turns white, one per 1/30 s of the file.
std::vector<double> whiteOnsets(const std::vector<QByteArray> &pictures)
{
    std::vector<double> onsets;
    for (size_t i = 1; i < pictures.size(); ++i) {
        if (MediaProbe::brightness(pictures[i]) > 200 &&
            MediaProbe::brightness(pictures[i - 1]) <= 200)
            onsets.push_back(double(i) / RecordingEncoding::framesPerSecond);
    }
    return onsets;
}

int analyse(const QString &path)
{
    const QJsonObject probed = MediaProbe::probe(path);
    const QJsonObject video = MediaProbe::stream(probed, QStringLiteral("video"));
    const double frames = MediaProbe::number(video, "nb_read_frames");
    const double expected =
        std::round(MediaProbe::number(video, "duration") * RecordingEncoding::framesPerSecond);
    const std::vector<double> flashes = whiteOnsets(MediaProbe::frames(path));
    const std::vector<double> beeps = MediaProbe::beeps(MediaProbe::samples(path));
    std::vector<double> offsets;
    for (const double beep : beeps) {
        const auto flash =
            std::min_element(flashes.begin(), flashes.end(), [&](double a, double b) {
                return std::abs(a - beep) < std::abs(b - beep);
            });
        if (flash != flashes.end() && std::abs(*flash - beep) < 0.5)
            offsets.push_back((*flash - beep) * 1000);
    }
    std::printf("{\"frames\":%.0f,\"expected\":%.0f,\"pairs\":%zu,\"avOffsetMs\":%.0f}\n", frames,
                expected, offsets.size(), median(offsets));
    return 0;
}

struct Sample
{
    double settled = 0;
    double peak = 0;
    double last = 0;
};

} // namespace

int main(int argc, char **argv)
{
    prepareBenchProcess();
    QApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.size() == 3 && arguments.at(1) == QStringLiteral("analyse"))
        return analyse(arguments.at(2));
    const bool ours = arguments.size() == 5 && arguments.at(1) == QStringLiteral("ours");
    const bool ffmpeg = arguments.size() == 5 && arguments.at(1) == QStringLiteral("ffmpeg");
    const int seconds = arguments.value(2).toInt();
    if ((!ours && !ffmpeg) || seconds <= 0)
        return usage();
    const QString clip = QFileInfo(arguments.at(3)).absoluteFilePath();
    const QString out = QFileInfo(arguments.at(4)).absoluteFilePath();

    BenchPlayer player;
    PlayerModel &model = player.model;
    PlayerHostingView &view = player.view;
    view.setWindowFlag(Qt::FramelessWindowHint);
    view.resize(windowWidth, windowHeight);
    view.move(0, 0);
    view.show();
    PlayerSurfaceRegistry surfaces;
    surfaces.hold(&view);
    GrantedRecordingPermission permission;
    PlayerRecordingController recorder(surfaces, permission,
                                       [] { return std::make_unique<PulseSystemAudioSource>(); });

    player.playOverAndOver(clip);

    QProcess recorderProcess;
    QElapsedTimer wall;
    QTimer memoryTimer;
    Sample memory;
    double cpuAtStart = 0;
    qint64 dropsAtStart = 0;
    const auto playerDrops = [&] {
        return model.engine().decoderDroppedFrames() + model.engine().outputDroppedFrames();
    };
    const auto sampleMemory = [&] {
        const qint64 recorderPid = recorderProcess.processId();
        memory.last =
            residentMiB(QStringLiteral("/proc/self/status")) +
            (recorderPid > 0 ? residentMiB(QStringLiteral("/proc/%1/status").arg(recorderPid)) : 0);
        memory.peak = std::max(memory.peak, memory.last);
        if (memory.settled == 0 && wall.elapsed() >= settledMs)
            memory.settled = memory.last;
    };
    const auto report = [&] {
        const double elapsed = wall.elapsed() / 1000.0;
        std::printf("{\"cpu\":%.3f,\"seconds\":%.3f,\"rssSettled\":%.1f,\"rssEnd\":%.1f,"
                    "\"rssPeak\":%.1f,\"playerDrops\":%lld}\n",
                    processCpuSeconds() - cpuAtStart + childrenCpuSeconds(), elapsed,
                    memory.settled, memory.last, memory.peak, playerDrops() - dropsAtStart);
        std::fflush(stdout);
        application.quit();
    };
    const auto start = [&] {
        cpuAtStart = processCpuSeconds();
        dropsAtStart = playerDrops();
        wall.start();
        memoryTimer.start(1000);
        if (ours) {
            const std::optional<QString> refused = recorder.startRecording(
                PlayerRecordingQuality::normal, out, QString::number(seconds / 60.0) + u'm');
            if (refused) {
                std::fprintf(stderr, "%s\n", qPrintable(*refused));
                application.exit(1);
            }
            return;
        }
        recorderProcess.setProcessChannelMode(QProcess::ForwardedChannels);
        recorderProcess.start(QStringLiteral("ffmpeg"),
                              ffmpegArguments(view.mapToGlobal(QPoint(0, 0)), seconds, out));
    };

    QObject::connect(&memoryTimer, &QTimer::timeout, &application, sampleMemory);
    QObject::connect(&recorder, &PlayerRecordingController::stateChanged, &application, [&] {
        if (recorder.state() == PlayerRecordingState::idle) {
            if (recorder.errorMessage())
                std::fprintf(stderr, "%s\n", qPrintable(*recorder.errorMessage()));
            sampleMemory();
            report();
        }
    });
    QObject::connect(&recorderProcess, &QProcess::finished, &application, [&] { report(); });
    QObject::connect(
        &model.engine(), &MpvEngine::framesReady, &application,
        [&] { QTimer::singleShot(warmUpMs, &application, start); }, Qt::SingleShotConnection);
    return application.exec();
}
