#include "PlayerScreenshot.h"
#include "ProcessRunner.h"
#include "TestMedia.h"

#include <QFileInfo>
#include <QImage>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString id = u"app.velmplayer.VelmPlayerPro"_s;

} // namespace

// The player installed with `cmake --install` into a prefix of the test's own, as a packager or a
// user building from source installs it.
class tst_Install : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const ProcessResult result =
            runProcess(QStringLiteral(VELM_CMAKE), {u"--install"_s, QStringLiteral(VELM_BUILD_DIR),
                                                    u"--prefix"_s, m_prefix.path()});
        QVERIFY2(result.finished && result.exitCode == 0, result.err.constData());
    }

    void installsWhatTheDesktopNeeds_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("the player") << u"bin/velmplayerpro"_s;
        QTest::newRow("the playlist tool") << u"bin/velm-m3u"_s;
        QTest::newRow("the desktop entry") << u"share/applications/%1.desktop"_s.arg(id);
        QTest::newRow("the software centre's description")
            << u"share/metainfo/%1.metainfo.xml"_s.arg(id);
        QTest::newRow("the scalable icon") << u"share/icons/hicolor/scalable/apps/%1.svg"_s.arg(id);
        for (int size : {16, 22, 24, 32, 48, 64, 128, 256, 512})
            QTest::addRow("the %d-pixel icon", size)
                << u"share/icons/hicolor/%1x%1/apps/%2.png"_s.arg(size).arg(id);
        QTest::newRow("the face model's licence")
            << u"share/doc/velmplayerpro/face-model/LICENSE"_s;
        QTest::newRow("the face model's provenance")
            << u"share/doc/velmplayerpro/face-model/README.md"_s;
    }

    void installsWhatTheDesktopNeeds()
    {
        QFETCH(QString, path);
        const QFileInfo file(installed(path));
        QVERIFY2(file.isFile() && file.size() > 0, qPrintable(path));
        if (path.endsWith(u".png"_s)) {
            const QImage icon(file.filePath());
            const int size = path.section(u'/', 3, 3).section(u'x', 0, 0).toInt();
            QCOMPARE(icon.size(), QSize(size, size));
            // Drawn, with the corners left clear for the rounded square.
            QCOMPARE(qAlpha(icon.pixel(0, 0)), 0);
            QCOMPARE(qAlpha(icon.pixel(size / 2, size / 2)), 255);
        }
    }

    void desktopFilesPassTheirValidators_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("desktop-file-validate")
            << u"desktop-file-validate"_s
            << QStringList{installed(u"share/applications/%1.desktop"_s.arg(id))};
        QTest::newRow("appstreamcli")
            << u"appstreamcli"_s
            << QStringList{u"validate"_s, u"--no-net"_s,
                           installed(u"share/metainfo/%1.metainfo.xml"_s.arg(id))};
    }

    void desktopFilesPassTheirValidators()
    {
        QFETCH(QString, program);
        QFETCH(QStringList, arguments);
        const ProcessResult result = runProcess(program, arguments);
        QVERIFY2(result.finished && result.exitCode == 0, (result.out + result.err).constData());
        QVERIFY2(!result.out.contains("warning") && !result.out.contains("error"),
                 result.out.constData());
    }

    void desktopEntryNamesWhatIsInstalled()
    {
        QSettings entry(installed(u"share/applications/%1.desktop"_s.arg(id)),
                        QSettings::IniFormat);
        entry.beginGroup(u"Desktop Entry"_s);
        const QStringList exec = entry.value(u"Exec"_s).toString().split(u' ');
        QVERIFY(QFileInfo(installed(u"bin/"_s + exec.value(0))).isExecutable());
        // Files and links from the file manager come as addresses, after the end of options.
        QCOMPARE(exec.mid(1), QStringList({u"--"_s, u"%U"_s}));
        QCOMPARE(entry.value(u"Icon"_s).toString(), id);
    }

    void installedPlayerOpensAFile()
    {
        const PlayerScreenshot shot =
            takePlayerScreenshot(installed(u"bin/velmplayerpro"_s), testMedia(u"columns.mp4"_s));
        QVERIFY2(shot.run.finished && shot.run.exitCode == 0, shot.run.err.constData());
        QVERIFY(shot.showsColour(qRgb(0, 255, 0))); // the video's green column
    }

private:
    QString installed(const QString &path) const { return m_prefix.filePath(path); }

    QTemporaryDir m_prefix;
};

QTEST_GUILESS_MAIN(tst_Install)
#include "tst_Install.moc"
