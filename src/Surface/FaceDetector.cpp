#include "Surface/FaceDetector.h"

#include "Surface/BlazeFaceDecoding.h"

#include <QFile>

#include <algorithm>
#include <cmath>

#include <opencv2/core/utility.hpp>
#include <opencv2/dnn.hpp>
#include <opencv2/imgproc.hpp>

namespace {

constexpr int shippedInputSize = 256;
// Below this the network's guesses include suits, hands and patterns.
constexpr double minScore = 0.6;
constexpr const char *modelResource = ":/models/face_detection_back_256x256.onnx";

} // namespace

struct FaceDetector::Network
{
    cv::dnn::Net net;
    std::vector<cv::String> outputs;
};

FaceDetector::FaceDetector() : FaceDetector(QString::fromLatin1(modelResource), shippedInputSize) {}

FaceDetector::FaceDetector(const QString &modelFile, int inputSize)
    : m_network(std::make_unique<Network>()), m_inputSize(inputSize)
{
    // One thread: detection runs beside playback, which needs the other core more.
    cv::setNumThreads(1);
    QFile model(modelFile);
    if (!model.open(QIODevice::ReadOnly))
        return;
    const QByteArray bytes = model.readAll();
    try {
        m_network->net = cv::dnn::readNetFromONNX(bytes.constData(), size_t(bytes.size()));
        m_network->outputs = m_network->net.getUnconnectedOutLayersNames();
    } catch (const cv::Exception &) {
        m_network->net = cv::dnn::Net();
    }
}

FaceDetector::~FaceDetector() = default;

bool FaceDetector::isReady() const
{
    return !m_network->net.empty() && m_network->outputs.size() == 4 && m_inputSize > 0;
}

std::vector<FaceBox> FaceDetector::detect(const QImage &picture)
{
    const int inputSize = m_inputSize;
    if (!isReady() || picture.isNull())
        return {};
    const QImage rgb = picture.convertToFormat(QImage::Format_RGB888);
    const cv::Mat source(rgb.height(), rgb.width(), CV_8UC3, const_cast<uchar *>(rgb.constBits()),
                         size_t(rgb.bytesPerLine()));
    // The whole picture, fitted and centred in the square input.
    const double scale = double(inputSize) / std::max(rgb.width(), rgb.height());
    const cv::Size fitted(std::max(1, int(std::lround(rgb.width() * scale))),
                          std::max(1, int(std::lround(rgb.height() * scale))));
    const cv::Point offset((inputSize - fitted.width) / 2, (inputSize - fitted.height) / 2);
    cv::Mat square(inputSize, inputSize, CV_8UC3, cv::Scalar(0, 0, 0));
    cv::resize(source, square(cv::Rect(offset, fitted)), fitted, 0, 0, cv::INTER_AREA);
    cv::Mat input;
    square.convertTo(input, CV_32F, 2.0 / 255, -1);
    const int shape[] = {1, inputSize, inputSize, 3};

    std::vector<cv::Mat> results;
    try {
        m_network->net.setInput(cv::Mat(4, shape, CV_32F, input.data));
        m_network->net.forward(results, m_network->outputs);
    } catch (const cv::Exception &) {
        return {};
    }
    // Each grid gives its scores (one number an anchor) and its boxes (16); the fine grid's 512
    // anchors come before the coarse grid's 384.
    for (const cv::Mat &result : results) {
        if (result.dims != 3 || result.type() != CV_32F)
            return {};
    }
    std::sort(results.begin(), results.end(), [](const cv::Mat &a, const cv::Mat &b) {
        return std::pair(a.size[2], -a.size[1]) < std::pair(b.size[2], -b.size[1]);
    });
    std::vector<float> scores;
    std::vector<float> boxes;
    for (const cv::Mat &result : results) {
        std::vector<float> &into = result.size[2] == 1 ? scores : boxes;
        into.insert(into.end(), result.ptr<float>(), result.ptr<float>() + result.total());
    }
    std::vector<FaceBox> faces;
    for (const auto &found : BlazeFaceDecoding::decode(boxes, scores, inputSize, minScore)) {
        const FaceBox &box = found.box;
        faces.push_back({(box.x * inputSize - offset.x) / fitted.width,
                         (box.y * inputSize - offset.y) / fitted.height,
                         box.width * inputSize / fitted.width,
                         box.height * inputSize / fitted.height});
    }
    return faces;
}
