#pragma once

#include "ProcessRunner.h"

#include <QImage>
#include <QTemporaryDir>

#include <cstdlib>

// A player executable started on a media file with a home of its own, as a user would, asked for
// a picture of its window once the first frame shows.
struct PlayerScreenshot
{
    ProcessResult run;
    QImage picture;

    // Whether a pixel of about that colour is on the picture's middle row.
    bool showsColour(QRgb wanted) const
    {
        const int row = picture.height() / 2;
        for (int x = 0; x < picture.width(); ++x) {
            const QRgb pixel = picture.pixel(x, row);
            if (std::abs(qRed(pixel) - qRed(wanted)) < 40 &&
                std::abs(qGreen(pixel) - qGreen(wanted)) < 40 &&
                std::abs(qBlue(pixel) - qBlue(wanted)) < 40)
                return true;
        }
        return false;
    }
};

inline PlayerScreenshot takePlayerScreenshot(const QString &program, const QString &media)
{
    QTemporaryDir home;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), home.path());
    const QString picture = home.filePath(QStringLiteral("window.png"));
    PlayerScreenshot result;
    result.run =
        runProcess(program, {QStringLiteral("--screenshot"), picture, media}, {}, environment);
    result.picture = QImage(picture);
    return result;
}
