// Measures the smart portrait mode's face search, for bench/reframe-detect:
//   velm-bench-reframe detectors FRONT_MODEL HAAR_CASCADE LBP_CASCADE
// runs each candidate detector (the shipped BlazeFace "back" model, the BlazeFace "front" model,
// OpenCV's Haar and LBP face cascades) on the face pictures of the tests and on 1080p and 720p
// frames, and prints one JSON line each: hits (the face's midpoint found within 0.04), false
// finds on the pictures without a face, and the milliseconds of one step (the frame scaled to the
// 512-pixel analysis picture, then searched), median and 95th percentile.
//   velm-bench-reframe player MODE SECONDS CLIP
// plays CLIP in a 960 × 540 view in "manual" or "smart" mode and, after two seconds, prints the
// process's CPU seconds over SECONDS, the searches started and the longest time a step kept the
// window's thread.

#include "BenchPlayer.h"
#include "FacePictures.h"
#include "ProcessCpu.h"

#include "App/AppStartup.h"
#include "Surface/FaceDetector.h"
#include "Surface/PlayerHostingView.h"
#include "Surface/SmartReframe.h"

#include <QApplication>
#include <QElapsedTimer>
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
               "       velm-bench-reframe player manual|smart SECONDS CLIP\n",
               stderr);
    return 2;
}

// What a step hands the detector: the frame at most 512 pixels across, as the view reads it back.
QImage analysisPicture(const QImage &frame)
{
    return frame.width() >= frame.height() ? frame.scaledToWidth(std::min(512, frame.width()))
                                           : frame.scaledToHeight(std::min(512, frame.height()));
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
    for (const QSize size : {QSize(1920, 1080), QSize(1280, 720)}) {
        const QImage frame = FacePictures::framed(hopper, size, size.width() / 3, size.height() / 2)
                                 .convertToFormat(QImage::Format_RGBA8888);
        std::vector<double> steps;
        for (int i = 0; i < 40; ++i) {
            QElapsedTimer step;
            step.start();
            detect(analysisPicture(frame));
            if (i >= 5) // the first runs warm the caches up
                steps.push_back(step.nsecsElapsed() / 1e6);
        }
        std::printf(",\"median%d\":%.2f,\"p95_%d\":%.2f", size.height(), percentile(steps, 0.5),
                    size.height(), percentile(steps, 0.95));
    }
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
    int searchesAtStart = 0;
    QObject::connect(
        &model.engine(), &MpvEngine::framesReady, &application,
        [&] {
            QTimer::singleShot(2000, &application, [&] {
                cpuAtStart = processCpuSeconds();
                searchesAtStart = view.faceSearchesStarted();
                QTimer::singleShot(seconds * 1000, &application, [&] {
                    std::printf("{\"mode\":\"%s\",\"cpu\":%.3f,\"seconds\":%d,\"searches\":%d,"
                                "\"longestStepMs\":%.2f,\"pan\":%.3f}\n",
                                qPrintable(modeName), processCpuSeconds() - cpuAtStart, seconds,
                                view.faceSearchesStarted() - searchesAtStart,
                                view.longestFaceStepMs(), view.horizontalPan());
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
    AppStartup::limitMemoryPools();
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.size() == 5 && arguments.at(1) == QStringLiteral("detectors"))
        return measureDetectors(arguments);
    if (arguments.size() == 5 && arguments.at(1) == QStringLiteral("player"))
        return measurePlayer(application, arguments);
    return usage();
}
