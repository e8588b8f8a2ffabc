#pragma once

#include "Surface/BlazeFaceDecoding.h"
#include "Surface/FaceBox.h"

#include <QImage>

#include <memory>
#include <vector>

// Finds faces in a picture with the face network in the application's resources. The network comes
// in several input shapes; a picture goes to the one it fills at the largest scale, fitted whole
// (bars on the short sides), so boxes come back in fractions of the picture itself. Not for
// several threads at once: use one per thread.
class FaceDetector
{
public:
    struct Model
    {
        QString file;
        BlazeFaceDecoding::Input input;
    };

    // The shipped models; other BlazeFace model files and their inputs can be named instead.
    FaceDetector();
    explicit FaceDetector(const std::vector<Model> &models);
    ~FaceDetector();
    FaceDetector(const FaceDetector &) = delete;
    FaceDetector &operator=(const FaceDetector &) = delete;

    // False when the model could not be loaded; detect() then finds nothing.
    bool isReady() const;
    // The faces, in the order the network ranks them (most certain first).
    std::vector<FaceBox> detect(const QImage &picture);

private:
    struct Network;
    Network *networkFor(QSize picture);

    std::vector<std::unique_ptr<Network>> m_networks;
};
