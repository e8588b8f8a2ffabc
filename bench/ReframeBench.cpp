// Measures the smart portrait mode's face search, for bench/reframe-detect:
//   velm-bench-reframe detectors FRONT_MODEL HAAR_CASCADE LBP_CASCADE
// runs each candidate detector (the shipped BlazeFace "back" model, the BlazeFace "front" model,
// OpenCV's Haar and LBP face cascades) on the face pictures of the tests and on 1080p and 720p
// frames, and prints one JSON line each: hits (the face's midpoint found within 0.04), false
// finds on the pictures without a face, and the CPU milliseconds of one search of the 256-pixel
// analysis picture of a 1080p frame, median and 95th percentile.
//   velm-bench-reframe player MODE SECONDS CLIP
// plays CLIP in a 960 × 540 view in "manual" or "smart" mode and, after two seconds, prints the
// process's CPU seconds over SECONDS, the searches made, the CPU time a step took on the window's
// thread (median and longest) and the CPU time of a search on its own thread (median, 95th
// percentile).
//   velm-bench-reframe engine-frame CLIP
// takes a frame as the player does (the engine's grab: mpv's "screenshot-raw" of the decoded
// picture, scaled to the 256-pixel analysis size) and prints the process's CPU milliseconds for
// it, median and 95th percentile of 30 frames.

#include "BenchPlayer.h"
#include "FacePictures.h"
#include "ProcessCpu.h"

#include "Base/ThreadCpuTime.h"
#include "Surface/FaceDetector.h"
#include "Surface/PlayerHostingView.h"
#include "Surface/SmartReframe.h"

#include <QApplication>
#include <QTimer>

#include <opencv2/imgproc.hpp>
#include <opencv2/objdetect.hpp>

#include <algorithm>
#include <cstdio>
#include <functional>

namespace {

using Detect = std::function<std::vector<FaceBox>(const QImage &)>;

int usage()
{
    std::fputs("usage: velm-bench-reframe detectors FRONT_MODEL HAAR_CASCADE LBP_CASCADE\n"
               "       velm-bench-reframe player manual|smart SECONDS CLIP\n"
               "       velm-bench-reframe engine-frame CLIP\n",
               stderr);
    return 2;
}

// The face network takes pictures 256 pixels across, as the player hands them over.
constexpr int analysisSide = 256;

// What a step hands the detector: the frame scaled down by averaging, as the engine scales it.
QImage analysisPicture(const QImage &frame)
{
    return frame.scaled(analysisSide, analysisSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

Detect cascade(const QString &file)
{
    auto classifier = std::make_shared<cv::CascadeClassifier>(file.toStdString());
    return [classifier](const QImage &picture) {
        const QImage grey = picture.convertToFormat(QImage::Format_Grayscale8);
        const cv::Mat image(grey.height(), grey.width(), CV_8UC1,
                            const_cast<uchar *>(grey.constBits()), size_t(grey.bytesPerLine()));
        cv::Mat equalised;
        cv::equalizeHist(image, equalised);
        std::vector<cv::Rect> found;
        classifier->detectMultiScale(equalised, found, 1.1, 4, 0, cv::Size(20, 20));
        std::vector<FaceBox> faces;
        for (const cv::Rect &box : found)
            faces.push_back({double(box.x) / grey.width(), double(box.y) / grey.height(),
                             double(box.width) / grey.width(), double(box.height) / grey.height()});
        return faces;
    };
}

double percentile(std::vector<double> values, double share)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[std::min(values.size() - 1, size_t(share * values.size()))];
}

void measureDetector(const char *name, const Detect &detect)
{
    int hits = 0;
    const std::vector<FacePictures::Picture> faces = FacePictures::withFaces();
    for (const FacePictures::Picture &face : faces) {
        const auto largest = SmartReframe::largestFace(detect(analysisPicture(face.image)));
        hits += largest && std::abs(largest->horizontalMidpoint() - face.midpoint) < 0.04;
    }
    int falseFinds = 0;
    for (const FacePictures::Picture &none : FacePictures::withoutFaces())
        falseFinds += !detect(analysisPicture(none.image)).empty();

    const QImage hopper = FacePictures::photograph(QStringLiteral("grace_hopper_512x512.jpg"));
    std::printf("{\"detector\":\"%s\",\"hits\":%d,\"of\":%zu,\"falseFinds\":%d", name, hits,
                faces.size(), falseFinds);
    const QImage frame = analysisPicture(FacePictures::framed(hopper, QSize(1920, 1080), 640, 540));
    std::vector<double> searches;
    for (int i = 0; i < 40; ++i) {
        const double start = threadCpuMs();
        detect(frame);
        if (i >= 5) // the first runs warm the caches up
            searches.push_back(threadCpuMs() - start);
    }
    std::printf(",\"median\":%.2f,\"p95\":%.2f", percentile(searches, 0.5),
                percentile(searches, 0.95));
    std::printf("}\n");
    std::fflush(stdout);
}

int measureDetectors(const QStringList &arguments)
{
    FaceDetector back;
    FaceDetector backSquare(
        {{QStringLiteral(":/models/face_detection_back_256x256.onnx"), {256, 256, 16}}});
    FaceDetector front({{arguments.at(2), {128, 128, 8}}});
    if (!back.isReady() || !backSquare.isReady() || !front.isReady())
        return usage();
    measureDetector("BlazeFace back 256 x 160 and 256",
                    [&](const QImage &p) { return back.detect(p); });
    measureDetector("BlazeFace back 256 only",
                    [&](const QImage &p) { return backSquare.detect(p); });
    measureDetector("BlazeFace front 128", [&](const QImage &p) { return front.detect(p); });
    measureDetector("Haar frontal face", cascade(arguments.at(3)));
    measureDetector("LBP frontal face", cascade(arguments.at(4)));
    return 0;
}

// The engine's picture of the frame on screen, taken as a smart step takes it, from a paused
// player so that no decoding is counted with it.
int measureEngineFrame(QApplication &application, const QString &clip)
{
    MpvEngine engine(MpvEngine::Output::headless);
    std::vector<double> steps;
    const auto grab = [&] {
        const double start = processCpuSeconds();
        const QImage picture = engine.grabVideoFrame(analysisSide).result();
        if (!picture.isNull() && engine.position() > 1)
            steps.push_back((processCpuSeconds() - start) * 1000);
        if (picture.isNull() || steps.size() == 30)
            application.quit();
        else
            engine.seekExact(engine.position() + 0.5);
    };
    // Each seek decodes the next frame; the grab waits until mpv is idle again.
    QObject::connect(&engine, &MpvEngine::framesReady, &application,
                     [&] { QTimer::singleShot(300, &application, grab); });
    engine.load(QFileInfo(clip).absoluteFilePath());
    engine.setPaused(true);
    application.exec();
    std::printf("{\"frames\":%zu,\"median\":%.2f,\"p95\":%.2f}\n", steps.size(),
                percentile(steps, 0.5), percentile(steps, 0.95));
    return steps.empty() ? 1 : 0;
}

int measurePlayer(QApplication &application, const QStringList &arguments)
{
    const QString modeName = arguments.at(2);
    const int seconds = arguments.at(3).toInt();
    if ((modeName != QStringLiteral("manual") && modeName != QStringLiteral("smart")) ||
        seconds <= 0)
        return usage();
    BenchPlayer player;
    PlayerModel &model = player.model;
    PlayerHostingView &view = player.view;
    view.setDisplayMode(modeName == QStringLiteral("smart") ? PortraitDisplayMode::smart
                                                            : PortraitDisplayMode::manual);
    view.resize(960, 540);
    view.show();
    player.playOverAndOver(arguments.at(4));

    double cpuAtStart = 0;
    bool measuring = false;
    std::vector<double> windowThreadMs;
    std::vector<double> searchCpuMs;
    QObject::connect(&view, &PlayerHostingView::faceSearchMeasured, &application,
                     [&](double windowMs, double searchMs) {
                         if (!measuring)
                             return;
                         windowThreadMs.push_back(windowMs);
                         searchCpuMs.push_back(searchMs);
                     });
    QObject::connect(
        &model.engine(), &MpvEngine::framesReady, &application,
        [&] {
            QTimer::singleShot(2000, &application, [&] {
                cpuAtStart = processCpuSeconds();
                measuring = true;
                QTimer::singleShot(seconds * 1000, &application, [&] {
                    std::printf("{\"mode\":\"%s\",\"cpu\":%.3f,\"seconds\":%d,\"searches\":%zu,"
                                "\"windowMedianMs\":%.2f,\"windowLongestMs\":%.2f,"
                                "\"searchMedianMs\":%.2f,\"searchP95Ms\":%.2f,\"pan\":%.3f}\n",
                                qPrintable(modeName), processCpuSeconds() - cpuAtStart, seconds,
                                searchCpuMs.size(), percentile(windowThreadMs, 0.5),
                                percentile(windowThreadMs, 1), percentile(searchCpuMs, 0.5),
                                percentile(searchCpuMs, 0.95), view.horizontalPan());
                    std::fflush(stdout);
                    application.quit();
                });
            });
        },
        Qt::SingleShotConnection);
    return application.exec();
}

} // namespace

int main(int argc, char **argv)
{
    prepareBenchProcess();
    QApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.size() == 5 && arguments.at(1) == QStringLiteral("detectors"))
        return measureDetectors(arguments);
    if (arguments.size() == 5 && arguments.at(1) == QStringLiteral("player"))
        return measurePlayer(application, arguments);
    if (arguments.size() == 3 && arguments.at(1) == QStringLiteral("engine-frame"))
        return measureEngineFrame(application, arguments.at(2));
    return usage();
}
