#pragma once

#include <QImage>
#include <QPainter>
#include <QString>

#include <vector>

// Pictures for judging a face detector: the public-domain photographs of the test data, frames
// made from them as a video would show them (small in a wide frame, mirrored, turned, in 720p),
// and pictures without a face. Each face picture says where its face's midpoint is.
namespace FacePictures {

struct Picture
{
    QString name;
    QImage image;
    double midpoint = 0; // of the face, in fractions of the width; pictures without a face: 0
};

inline QImage photograph(const QString &name)
{
    return QImage(QStringLiteral(VELM_TEST_DATA "/faces/") + name);
}

// Where the face is in each photograph, measured by eye on the full picture: the midpoint
// between the outer corners of the eyes, in fractions of the width.
inline constexpr double astronautFace = 0.44;
inline constexpr double hopperFace = 0.52;

// A photograph scaled to height, placed with its left edge at x in a grey frame of size.
inline QImage framed(const QImage &picture, QSize size, int x, int height, double turnDegrees = 0)
{
    QImage frame(size, QImage::Format_RGB32);
    frame.fill(QColor(128, 128, 128));
    QPainter painter(&frame);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QImage scaled = picture.scaledToHeight(height, Qt::SmoothTransformation);
    painter.translate(x + scaled.width() / 2.0, (size.height() - height) / 2.0 + height / 2.0);
    painter.rotate(turnDegrees);
    painter.drawImage(QPointF(-scaled.width() / 2.0, -height / 2.0), scaled);
    return frame;
}

// Where a point at fraction f of a photograph's width lands in a frame made by framed().
inline double inFrame(double f, const QImage &picture, QSize size, int x, int height)
{
    return (x + f * picture.width() * height / picture.height()) / size.width();
}

inline std::vector<Picture> withFaces()
{
    const QImage astronaut = photograph(QStringLiteral("astronaut.png"));
    const QImage hopper = photograph(QStringLiteral("grace_hopper_512x512.jpg"));
    const QSize hd(1920, 1080);
    const QSize hd720(1280, 720);
    return {
        {QStringLiteral("astronaut"), astronaut, astronautFace},
        {QStringLiteral("Hopper"), hopper, hopperFace},
        {QStringLiteral("Hopper mirrored"), hopper.mirrored(true, false), 1 - hopperFace},
        {QStringLiteral("astronaut on the right of a wide frame"), framed(astronaut, hd, 1200, 540),
         inFrame(astronautFace, astronaut, hd, 1200, 540)},
        {QStringLiteral("Hopper small on the left of a wide frame"), framed(hopper, hd, 100, 400),
         inFrame(hopperFace, hopper, hd, 100, 400)},
        {QStringLiteral("Hopper turned 15°"), framed(hopper, hd, 700, 700, 15),
         inFrame(hopperFace, hopper, hd, 700, 700)},
        {QStringLiteral("astronaut turned −15°, in 720p"), framed(astronaut, hd720, 100, 500, -15),
         inFrame(astronautFace, astronaut, hd720, 100, 500)},
    };
}

inline std::vector<Picture> withoutFaces()
{
    QImage grey(1280, 720, QImage::Format_RGB32);
    grey.fill(QColor(90, 90, 90));
    QImage stripes(1920, 1080, QImage::Format_RGB32);
    for (int y = 0; y < stripes.height(); ++y) {
        for (int x = 0; x < stripes.width(); ++x)
            stripes.setPixelColor(x, y,
                                  QColor::fromHsv((x / 7 + y / 5) % 360, 200, 40 + (x * y) % 200));
    }
    // The photograph with the face painted over: the suit, the flag and the rocket remain.
    QImage covered = photograph(QStringLiteral("astronaut.png"));
    QPainter(&covered).fillRect(QRect(130, 30, 170, 200), QColor(40, 40, 60));
    return {{QStringLiteral("grey"), grey},
            {QStringLiteral("stripes"), stripes},
            {QStringLiteral("the astronaut without her face"), covered}};
}

} // namespace FacePictures
