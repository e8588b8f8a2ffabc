#pragma once

#include "Surface/FaceBox.h"

#include <QImage>

#include <memory>
#include <vector>

// Finds faces in a picture with the face network in the application's resources. The picture is
// fitted whole into the network's square input (bars on the short sides), so boxes come back in
// fractions of the picture itself. Not for several threads at once: use one per thread.
class FaceDetector
{
public:
    // The shipped model; another BlazeFace model file and its input side can be named instead.
    FaceDetector();
    FaceDetector(const QString &modelFile, int inputSize);
    ~FaceDetector();
    FaceDetector(const FaceDetector &) = delete;
    FaceDetector &operator=(const FaceDetector &) = delete;

    // False when the model could not be loaded; detect() then finds nothing.
    bool isReady() const;
    // The faces, in the order the network ranks them (most certain first).
    std::vector<FaceBox> detect(const QImage &picture);

private:
    struct Network;
    std::unique_ptr<Network> m_network;
    int m_inputSize;
};
