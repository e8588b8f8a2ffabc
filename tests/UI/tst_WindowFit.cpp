// The rule that gives the window the video's shape.

#include "UI/WindowFit.h"

#include <QTest>

class tst_WindowFit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fitsThePictureToTheVideo_data()
    {
        QTest::addColumn<QSize>("window");
        QTest::addColumn<QSize>("picture");
        QTest::addColumn<double>("aspect");
        QTest::addColumn<QSize>("available");
        QTest::addColumn<std::optional<QSize>>("fitted");
        const QSize screen(1920, 1050);
        // A 300 px sidebar beside the picture, a 44 px control bar under both.
        QTest::newRow("wide video keeps the height")
            << QSize(1000, 600) << QSize(700, 556) << 16.0 / 9 << screen
            << std::optional(QSize(300 + 988, 600));
        QTest::newRow("portrait video narrows the window")
            << QSize(1000, 600) << QSize(700, 556) << 9.0 / 16 << screen
            << std::optional(QSize(300 + 313, 600));
        QTest::newRow("too wide for the screen shrinks, shape kept")
            << QSize(1000, 600) << QSize(700, 556) << 3.0 << QSize(1300, 1050)
            << std::optional(QSize(1300, 44 + 333));
        QTest::newRow("never below the minimum") << QSize(600, 400) << QSize(600, 356) << 0.25
                                                 << screen << std::optional(QSize(520, 400));
        QTest::newRow("already in shape") << QSize(1011, 600) << QSize(711, 400) << 711.0 / 400
                                          << screen << std::optional<QSize>();
        QTest::newRow("unknown aspect")
            << QSize(1000, 600) << QSize(700, 556) << 0.0 << screen << std::optional<QSize>();
        QTest::newRow("not a number")
            << QSize(1000, 600) << QSize(700, 556) << std::numeric_limits<double>::quiet_NaN()
            << screen << std::optional<QSize>();
        QTest::newRow("no picture")
            << QSize(1000, 600) << QSize(700, 0) << 1.5 << screen << std::optional<QSize>();
    }

    void fitsThePictureToTheVideo()
    {
        QFETCH(QSize, window);
        QFETCH(QSize, picture);
        QFETCH(double, aspect);
        QFETCH(QSize, available);
        QFETCH(std::optional<QSize>, fitted);
        QCOMPARE(WindowFit::fittedWindowSize(window, picture, aspect, available, QSize(520, 360)),
                 fitted);
    }

    void staysOnTheScreen_data()
    {
        QTest::addColumn<QRect>("frame");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QRect>("placed");
        const QRect screen(0, 30, 1920, 1050);
        QTest::newRow("room to grow")
            << QRect(100, 100, 800, 500) << QSize(1000, 600) << QRect(100, 100, 1000, 600);
        QTest::newRow("pushed back from the right")
            << QRect(1500, 100, 400, 500) << QSize(1000, 600) << QRect(920, 100, 1000, 600);
        QTest::newRow("pushed up from the bottom")
            << QRect(100, 900, 400, 100) << QSize(400, 600) << QRect(100, 480, 400, 600);
        QTest::newRow("pulled in from above")
            << QRect(100, 0, 400, 300) << QSize(400, 300) << QRect(100, 30, 400, 300);
    }

    void staysOnTheScreen()
    {
        QFETCH(QRect, frame);
        QFETCH(QSize, size);
        QFETCH(QRect, placed);
        QCOMPARE(WindowFit::placed(frame, size, QRect(0, 30, 1920, 1050)), placed);
    }
};

QTEST_APPLESS_MAIN(tst_WindowFit)
#include "tst_WindowFit.moc"
