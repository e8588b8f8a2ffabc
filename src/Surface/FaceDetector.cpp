#include "Surface/FaceDetector.h"

#include "Surface/BlazeFaceDecoding.h"

#include <QFile>

#include <algorithm>
#include <cmath>

#include <opencv2/core/utility.hpp>
#include <opencv2/dnn.hpp>
#include <opencv2/imgproc.hpp>

namespace {

// Below this the network's guesses include suits, hands and patterns.
constexpr double minScore = 0.6;

double fittingScale(QSize picture, const BlazeFaceDecoding::Input &input)
{
    return std::min(double(input.width) / picture.width(), double(input.height) / picture.height());
}

} // namespace

struct FaceDetector::Network
{
    cv::dnn::Net net;
    std::vector<cv::String> outputs;
    BlazeFaceDecoding::Input input;
};

// The square network for any picture, and the same network at 256 × 160 for pictures of 16:10 and
// wider, which it takes at the same scale for some 60 % of the work.
FaceDetector::FaceDetector()
    : FaceDetector({{QStringLiteral(":/models/face_detection_back_256x256.onnx"), {256, 256, 16}},
                    {QStringLiteral(":/models/face_detection_back_256x160.onnx"), {256, 160, 16}}})
{}

FaceDetector::FaceDetector(const std::vector<Model> &models)
{
    // One thread: detection runs beside playback, which needs the other core more.
    cv::setNumThreads(1);
    for (const Model &model : models) {
        auto network = std::make_unique<Network>();
        network->input = model.input;
        QFile file(model.file);
        if (file.open(QIODevice::ReadOnly)) {
            const QByteArray bytes = file.readAll();
            try {
                network->net = cv::dnn::readNetFromONNX(bytes.constData(), size_t(bytes.size()));
                network->outputs = network->net.getUnconnectedOutLayersNames();
            } catch (const cv::Exception &) {
                network->net = cv::dnn::Net();
            }
        }
        m_networks.push_back(std::move(network));
    }
}

FaceDetector::~FaceDetector() = default;

bool FaceDetector::isReady() const
{
    return !m_networks.empty() &&
           std::all_of(m_networks.begin(), m_networks.end(), [](const auto &network) {
               return !network->net.empty() && network->outputs.size() == 4 &&
                      network->input.isValid();
           });
}

FaceDetector::Network *FaceDetector::networkFor(QSize picture)
{
    // The largest scale first; at the same scale the smaller input, which costs less.
    const auto merit = [picture](const std::unique_ptr<Network> &network) {
        return std::pair(std::round(fittingScale(picture, network->input) * 1e6),
                         -network->input.width * network->input.height);
    };
    return std::max_element(m_networks.begin(), m_networks.end(),
                            [&](const auto &a, const auto &b) { return merit(a) < merit(b); })
        ->get();
}

std::vector<FaceBox> FaceDetector::detect(const QImage &picture)
{
    if (!isReady() || picture.isNull())
        return {};
    Network &network = *networkFor(picture.size());
    const int inputWidth = network.input.width;
    const int inputHeight = network.input.height;
    const QImage rgb = picture.convertToFormat(QImage::Format_RGB888);
    const cv::Mat source(rgb.height(), rgb.width(), CV_8UC3, const_cast<uchar *>(rgb.constBits()),
                         size_t(rgb.bytesPerLine()));
    // The whole picture, fitted and centred in the input.
    const double scale = fittingScale(rgb.size(), network.input);
    const cv::Size fitted(std::clamp(int(std::lround(rgb.width() * scale)), 1, inputWidth),
                          std::clamp(int(std::lround(rgb.height() * scale)), 1, inputHeight));
    const cv::Point offset((inputWidth - fitted.width) / 2, (inputHeight - fitted.height) / 2);
    cv::Mat framed(inputHeight, inputWidth, CV_8UC3, cv::Scalar(0, 0, 0));
    cv::resize(source, framed(cv::Rect(offset, fitted)), fitted, 0, 0, cv::INTER_AREA);
    cv::Mat input;
    framed.convertTo(input, CV_32F, 2.0 / 255, -1);
    const int shape[] = {1, inputHeight, inputWidth, 3};

    std::vector<cv::Mat> results;
    try {
        network.net.setInput(cv::Mat(4, shape, CV_32F, input.data));
        network.net.forward(results, network.outputs);
    } catch (const cv::Exception &) {
        return {};
    }
    // Each grid gives its scores (one number an anchor) and its boxes (16); the fine grid's
    // anchors come before the coarse grid's.
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
    for (const auto &found : BlazeFaceDecoding::decode(boxes, scores, network.input, minScore)) {
        const FaceBox &box = found.box;
        faces.push_back({(box.x * inputWidth - offset.x) / fitted.width,
                         (box.y * inputHeight - offset.y) / fitted.height,
                         box.width * inputWidth / fitted.width,
                         box.height * inputHeight / fitted.height});
    }
    return faces;
}
