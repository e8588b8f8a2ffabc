// What Qt's widget composition costs the video surface, for bench/surface-vs-mpv:
//   velm-bench-composition widget|window WIDTHxHEIGHT SECONDS
// draws frames that only clear, as fast as they are taken, in a QOpenGLWidget (the surface's
// kind: Qt draws its texture into the window with the other widgets every frame) or in a
// QOpenGLWindow (a native surface that mpv's own window is like), and prints the frames drawn
// and the process's CPU milliseconds per frame, after a second to settle.

#include "ProcessCpu.h"

#include <QApplication>
#include <QOpenGLFunctions>
#include <QOpenGLWidget>
#include <QOpenGLWindow>
#include <QTimer>

#include <cstdio>

namespace {

int usage()
{
    std::fputs("usage: velm-bench-composition widget|window WIDTHxHEIGHT SECONDS\n", stderr);
    return 2;
}

// Clears to a changing colour and asks for the next frame at once.
template <typename Surface>
class ClearingSurface : public Surface, protected QOpenGLFunctions
{
public:
    long frames = 0;

protected:
    void initializeGL() override { initializeOpenGLFunctions(); }
    void paintGL() override
    {
        glClearColor(float(frames++ % 256) / 255, 0.2f, 0.3f, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        Surface::update();
    }
};

template <typename Surface>
int measure(QApplication &application, QSize size, int seconds, const char *name)
{
    ClearingSurface<Surface> surface;
    surface.resize(size);
    surface.show();
    long framesAtStart = 0;
    double cpuAtStart = 0;
    QTimer::singleShot(1000, &application, [&] {
        framesAtStart = surface.frames;
        cpuAtStart = processCpuSeconds();
        QTimer::singleShot(seconds * 1000, &application, [&] {
            const long frames = surface.frames - framesAtStart;
            std::printf("{\"surface\":\"%s\",\"frames\":%ld,\"cpuMsPerFrame\":%.3f}\n", name,
                        frames, (processCpuSeconds() - cpuAtStart) * 1000 / double(frames));
            application.quit();
        });
    });
    return application.exec();
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.size() != 4)
        return usage();
    const QStringList size = arguments.at(2).split(QLatin1Char('x'));
    const int seconds = arguments.at(3).toInt();
    if (size.size() != 2 || seconds <= 0)
        return usage();
    const QSize pixels(size.at(0).toInt(), size.at(1).toInt());
    if (arguments.at(1) == QStringLiteral("widget"))
        return measure<QOpenGLWidget>(application, pixels, seconds, "QOpenGLWidget");
    if (arguments.at(1) == QStringLiteral("window"))
        return measure<QOpenGLWindow>(application, pixels, seconds, "QOpenGLWindow");
    return usage();
}
