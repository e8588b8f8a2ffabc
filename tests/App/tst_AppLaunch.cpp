#include "PlayerScreenshot.h"
#include "ProcessRunner.h"
#include "TestMedia.h"

#include <QImage>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// The environment of a machine with no display at all.
QProcessEnvironment withoutDisplay()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(QString::fromLatin1(name));
    return environment;
}

} // namespace

class tst_AppLaunch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answersWithoutDisplay_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QByteArray>("err"); // what standard error starts with

        QTest::newRow("version") << QStringList{u"--version"_s} << 0 << QByteArray();
        QTest::newRow("help") << QStringList{u"--help"_s, u"file.mp4"_s} << 0 << QByteArray();
        QTest::newRow("unknown option")
            << QStringList{u"--frobnicate"_s} << 2
            << QByteArray("velmplayerpro: unknown option: --frobnicate");
        QTest::newRow("socket without path")
            << QStringList{u"a.mp4"_s, u"--ipc-server"_s} << 2
            << QByteArray("velmplayerpro: --ipc-server needs a socket path");
        QTest::newRow("wait without screenshot")
            << QStringList{u"--after"_s, u"2"_s} << 2
            << QByteArray("velmplayerpro: --after is only for --screenshot");
        QTest::newRow("wait that is no number")
            << QStringList{u"--screenshot=/tmp/x.png"_s, u"--after"_s, u"soon"_s} << 2
            << QByteArray("velmplayerpro: --after needs a number of seconds");
    }

    void answersWithoutDisplay()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QByteArray, err);
        const ProcessResult result =
            runProcess(QStringLiteral(VELM_APP), arguments, {}, withoutDisplay());
        QVERIFY(result.finished);
        QCOMPARE(result.exitCode, exitCode);
        // Answers go to standard output, complaints to standard error, never both.
        QCOMPARE(result.out.isEmpty(), exitCode != 0);
        QVERIFY2(err.isEmpty() ? result.err.isEmpty() : result.err.startsWith(err),
                 result.err.constData());
    }

    void refusesCleanlyWhenNoWindowCanOpen_data()
    {
        QTest::addColumn<QString>("display"); // empty: none set at all
        QTest::addColumn<QByteArray>("message");

        QTest::newRow("no display variable")
            << QString() << QByteArray("velmplayerpro: no display found");
        // A display server that is not there: Qt's platform plugin gives up and we turn its abort
        // into a message and a plain exit.
        QTest::newRow("unreachable display")
            << u":4242"_s << QByteArray("velmplayerpro: cannot open a window");
    }

    void refusesCleanlyWhenNoWindowCanOpen()
    {
        QFETCH(QString, display);
        QFETCH(QByteArray, message);
        QProcessEnvironment environment = withoutDisplay();
        if (!display.isEmpty())
            environment.insert(u"DISPLAY"_s, display);
        const ProcessResult result = runProcess(QStringLiteral(VELM_APP), {}, {}, environment);
        QVERIFY2(result.finished, "the player crashed instead of exiting");
        QCOMPARE(result.exitCode, 1);
        QVERIFY2(result.err.contains(message), result.err.constData());
    }

    void screenshotShowsTheFirstFrame()
    {
        const PlayerScreenshot shot =
            takePlayerScreenshot(QStringLiteral(VELM_APP), testMedia(u"columns.mp4"_s));
        QVERIFY(shot.run.finished);
        QCOMPARE(shot.run.exitCode, 0);
        QVERIFY(!shot.picture.isNull());
        // The red, green and blue columns of the video's first frame are in the picture.
        for (const QRgb wanted : {qRgb(255, 0, 0), qRgb(0, 255, 0), qRgb(0, 0, 255)})
            QVERIFY2(shot.showsColour(wanted), qPrintable(QString::number(wanted, 16)));
    }
};

QTEST_GUILESS_MAIN(tst_AppLaunch)
#include "tst_AppLaunch.moc"
