#include "ControlClient.h"
#include "TestHttpServer.h"
#include "TestMedia.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QString error(const QJsonObject &reply)
{
    return reply.value(u"error"_s).toString();
}

} // namespace

// The control socket against the real application under Xvfb, with settings in a home of its
// own and playlists from a local HTTP server.
class tst_ControlSocket : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_socketPath = m_home.filePath(u"control.sock"_s);
        m_server.route("/tv/list.m3u",
                       TestHttpReply::of(
                           200, "OK",
                           "#EXTM3U\n"
                           "#EXTINF:-1 tvg-country=\"DE\" group-title=\"News\",Tagesschau\n"
                           "https://tv.example/tagesschau.m3u8\n"
                           "#EXTINF:-1 tvg-logo=\"http://l/s.png\" group-title=\"Sport\",Sport 1\n"
                           "live/sport.m3u8\n"
                           "#EXTINF:-1,Music\nhttp://tv.example/music.ts\n"));
        start();
    }

    void cleanupTestCase()
    {
        if (m_app.state() != QProcess::NotRunning) {
            m_app.kill();
            m_app.waitForFinished();
        }
    }

    void answersBadRequestsAndGoesOn()
    {
        QCOMPARE(error(m_client.sendLine("{\"command\": [\"get_property\", \"volume\"")),
                 u"invalid JSON"_s);
        QCOMPARE(error(m_client.sendLine("[\"stop\"]")), u"invalid JSON"_s);
        QCOMPARE(error(m_client.sendLine("{\"request_id\": 7}")), u"no command array"_s);
        QCOMPARE(m_client.sendLine("{\"command\":[\"stop\"],\"request_id\":\"abc\"}"),
                 (QJsonObject{{u"request_id"_s, u"abc"_s},
                              {u"error"_s, u"success"_s},
                              {u"data"_s, QJsonValue()}}));
        QCOMPARE(error(m_client.request({u"explode"_s})), u"unknown command: explode"_s);
        QCOMPARE(error(m_client.request({u"get_property"_s, u"nonsense"_s})),
                 u"property not found"_s);
        QCOMPARE(error(m_client.request({u"get_property"_s, u"objectName"_s})),
                 u"property not found"_s);
        QCOMPARE(error(m_client.request({u"skip"_s, u"five"_s})), u"invalid parameter"_s);
        QCOMPARE(error(m_client.request({u"setVolume"_s})), u"invalid parameter"_s);
        QCOMPARE(error(m_client.request({u"play"_s, u"relative/file.mp4"_s})).left(30),
                 u"not an absolute path or addres"_s);
        QCOMPARE(error(m_client.sendLine(QByteArray(2 << 20, 'x'))), u"line too long"_s);
        // A line past the limit is refused also when it arrives in one piece with its line break.
        const QByteArray longRequest =
            "{\"command\":[\"stop\"],\"x\":\"" + QByteArray(3 << 20, 'x') + "\"}";
        QCOMPARE(error(m_client.sendLine(longRequest)), u"line too long"_s);
        QCOMPARE(error(m_client.request({u"key"_s, u"NoSuchKey"_s})), u"invalid parameter"_s);
        QCOMPARE(error(m_client.request({u"export_local_m3u"_s, u"relative.m3u"_s})),
                 u"not an absolute path: relative.m3u"_s);
        QVERIFY(error(m_client.request({u"screenshot"_s, m_home.filePath(u"window.xyz"_s)}))
                    .startsWith(u"cannot write"_s));
        QVERIFY(!QFile::exists(m_home.filePath(u"window.xyz"_s)));

        // The connection and the player are still there, and a second client is served too.
        QCOMPARE(m_client.data({u"get_property"_s, u"volume"_s}), QJsonValue(1.0));
        ControlClient second;
        QVERIFY(second.connectTo(m_socketPath));
        QCOMPARE(second.data({u"get_property"_s, u"isLoading"_s}), QJsonValue(false));
    }

    void survivesClientsThatLeaveEarly_data()
    {
        QTest::addColumn<QByteArray>("sent");
        QTest::newRow("one request") << QByteArray("{\"command\":[\"get_property\",\"volume\"]}\n");
        QTest::newRow("a bad line") << QByteArray("{\"command\": [\n");
        QTest::newRow("events asked for")
            << QByteArray("{\"command\":[\"enable_event\",\"all\"]}\n").repeated(50);
        QTest::newRow("a thousand requests")
            << QByteArray("{\"command\":[\"get_property\",\"title\"]}\n").repeated(1000);
        QByteArray noise(10 << 20, Qt::Uninitialized);
        for (qsizetype i = 0; i < noise.size(); ++i)
            noise[i] = char((i * 7919 + i / 13) & 0xFF);
        QTest::newRow("10 MB of noise") << noise;
    }

    void survivesClientsThatLeaveEarly()
    {
        QFETCH(QByteArray, sent);
        for (int round = 0; round < 3; ++round) {
            QLocalSocket rude;
            rude.connectToServer(m_socketPath);
            QVERIFY(rude.waitForConnected(5000));
            rude.write(sent);
            rude.waitForBytesWritten(5000);
            rude.abort(); // gone without reading a single answer
        }
        QCOMPARE(m_client.data({u"get_property"_s, u"isLoading"_s}), QJsonValue(false));
        QCOMPARE(m_app.state(), QProcess::Running);
    }

    void repliesWhenTheCommandIsDone()
    {
        const auto set = [this](const QString &name, const QJsonValue &value) {
            return error(m_client.request({u"set_property"_s, name, value}));
        };
        QCOMPARE(m_client.data({u"get_property"_s, u"errorMessage"_s}),
                 QJsonValue(QJsonValue::Null));
        // An asynchronous command replies once its work has ended: here, once the list has loaded.
        QCOMPARE(error(m_client.request(
                     {u"openRemote"_s, m_server.url(u"/tv/list.m3u"_s), u" My TV "_s})),
                 u"success"_s);
        QCOMPARE(m_client.data({u"get_property"_s, u"playlist"_s}), QJsonValue(3));
        QCOMPARE(m_client.data({u"playlist_entry"_s, 1}).toObject().value(u"url"_s),
                 m_server.url(u"/tv/live/sport.m3u8"_s));
        QCOMPARE(error(m_client.request({u"playlist_entry"_s, 3})), u"index out of range"_s);

        // The window's state, read and written.
        QCOMPARE(set(u"selectedSidebarSection"_s, u"network"_s), u"success"_s);
        QCOMPARE(set(u"channelSearch"_s, u"SPORT"_s), u"success"_s);
        QCOMPARE(m_client.data({u"filtered_count"_s}), QJsonValue(1));
        QCOMPARE(set(u"portraitMode"_s, u"Sideways"_s), u"invalid value for portraitMode"_s);
        // The pan is set by hand only where the mouse pans, and kept through the other modes.
        QCOMPARE(set(u"horizontalPan"_s, 0.5),
                 u"horizontalPan can be set in Manual Reframe only"_s);
        QCOMPARE(set(u"portraitMode"_s, u"Manual Reframe"_s), u"success"_s);
        QCOMPARE(set(u"horizontalPan"_s, 1.5), u"invalid value for horizontalPan"_s);
        QCOMPARE(set(u"horizontalPan"_s, u"left"_s), u"invalid value for horizontalPan"_s);
        QCOMPARE(set(u"horizontalPan"_s, -0.25), u"success"_s);
        QCOMPARE(set(u"portraitMode"_s, u"Smart Reframe"_s), u"success"_s);
        QCOMPARE(m_client.data({u"get_property"_s, u"horizontalPan"_s}), QJsonValue(-0.25));
        QCOMPARE(set(u"portraitMode"_s, u"Normal"_s), u"success"_s);
        QCOMPARE(set(u"title"_s, u"x"_s), u"property not found or read-only: title"_s);

        // Keys go through the application's own keyboard monitor.
        QCOMPARE(error(m_client.request({u"setVolume"_s, 0.333333})), u"success"_s);
        QCOMPARE(m_client.data({u"get_property"_s, u"volume"_s}), QJsonValue(0.33));
        QCOMPARE(error(m_client.request({u"setVolume"_s, 0.5})), u"success"_s);
        QCOMPARE(error(m_client.request({u"key"_s, u"Up"_s, u"Shift"_s, u"Command"_s})),
                 u"success"_s);
        QCOMPARE(m_client.data({u"get_property"_s, u"volume"_s}), QJsonValue(0.51));
        QCOMPARE(error(m_client.request({u"key"_s, u"Ctrl+Up"_s})), u"invalid parameter"_s);

        QCOMPARE(error(m_client.request({u"save_to_local_m3u"_s, 1})), u"success"_s);
        QCOMPARE(m_client.data({u"local_entries"_s}).toArray().at(0)[u"name"_s], u"Sport 1"_s);
        QCOMPARE(error(m_client.request({u"restore_local_m3u"_s})),
                 u"no replaced links are kept"_s);
        // A file that takes no writing says why, not only what became of a temporary file beside
        // it.
        const QString refused =
            error(m_client.request({u"export_local_m3u"_s, u"/proc/version"_s}));
        QVERIFY2(refused == u"Could Not Export M3U Playlist: Permission denied"_s ||
                     refused.endsWith(u"(no new file can be made in /proc)"_s),
                 qPrintable(refused));

        // Media that does not play says why, in a property of its own.
        QCOMPARE(error(m_client.request({u"play"_s, m_home.filePath(u"missing.mp4"_s)})),
                 u"success"_s);
        QVERIFY(QTest::qWaitFor(
            [&] {
                return m_client.data({u"get_property"_s, u"playbackFailure"_s}) ==
                       QJsonValue(u"Could not play \u201Cmissing.mp4\u201D: the file is missing or "
                                  u"cannot be read."_s);
            },
            10000));

        // A playlist that fails answers with the failure.
        QCOMPARE(error(m_client.request({u"openRemote"_s, m_server.url(u"/tv/missing.m3u"_s)})),
                 u"Could not open playlist: The server responded with status 404 (Not Found)."_s);

        // Written in the format the file name asks for.
        const QString picture = m_home.filePath(u"window.jpg"_s);
        QCOMPARE(error(m_client.request({u"screenshot"_s, picture})), u"success"_s);
        QFile written(picture);
        QVERIFY(written.open(QIODevice::ReadOnly));
        QVERIFY(written.read(3) == "\xFF\xD8\xFF"); // JPEG
        const QImage image(picture);
        QCOMPARE(image.size(), QSize(m_client.data({u"get_property"_s, u"width"_s}).toInt(),
                                     m_client.data({u"get_property"_s, u"height"_s}).toInt()) *
                                   image.devicePixelRatio());
    }

    void answersWhatIsOnTheGuide()
    {
        const QDateTime now = QDateTime::currentDateTimeUtc();
        const auto at = [&](int hours) { return now.addSecs(hours * 3600); };
        const auto xmltv = [](const QDateTime &time) {
            return time.toString(u"yyyyMMddHHmmss"_s).toLatin1() + " +0000";
        };
        m_server.route("/tv/guide.xml",
                       TestHttpReply::of(200, "OK",
                                         "<tv><channel id=\"t\"><display-name>Tagesschau</display-"
                                         "name></channel><programme channel=\"t\" start=\"" +
                                             xmltv(at(-1)) + "\" stop=\"" + xmltv(at(1)) +
                                             "\"><title>On Air</title></programme><programme "
                                             "channel=\"t\" start=\"" +
                                             xmltv(at(1)) + "\" stop=\"" + xmltv(at(2)) +
                                             "\"><title>Coming Up</title></programme></tv>"));
        const auto set = [this](const QJsonValue &value) {
            return error(m_client.request({u"set_property"_s, u"guideAddress"_s, value}));
        };
        QCOMPARE(set(u"gopher://tv/guide.xml"_s), u"not an http, https or file address"_s);
        QCOMPARE(set(m_server.url(u"/tv/guide.xml"_s)), u"success"_s);
        QCOMPARE(m_client.data({u"get_property"_s, u"guideAddress"_s}),
                 QJsonValue(m_server.url(u"/tv/guide.xml"_s)));
        QCOMPARE(error(m_client.request({u"openRemote"_s, m_server.url(u"/tv/list.m3u"_s)})),
                 u"success"_s);
        QTRY_COMPARE(m_client.data({u"get_property"_s, u"guideStatus"_s}), QJsonValue(u"ready"_s));
        const auto iso = [](const QDateTime &time) {
            return QJsonValue(time.toString(Qt::ISODate));
        };
        QCOMPARE(m_client.data({u"guide_now"_s, 0}),
                 QJsonValue(QJsonObject{{u"title"_s, u"On Air"_s},
                                        {u"start"_s, iso(at(-1))},
                                        {u"stop"_s, iso(at(1))}}));
        QCOMPARE(m_client.data({u"guide_next"_s, 0}).toObject().value(u"title"_s),
                 QJsonValue(u"Coming Up"_s));
        QCOMPARE(m_client.data({u"guide_now"_s, 1}), QJsonValue(QJsonValue::Null));
        QCOMPARE(error(m_client.request({u"guide_next"_s, 3})), u"index out of range"_s);
        // Cleared, the list names no guide: there is none.
        QCOMPARE(set(u""_s), u"success"_s);
        QCOMPARE(m_client.data({u"get_property"_s, u"guideStatus"_s}), QJsonValue(u"none"_s));
    }

    void recordsOnRequest()
    {
        const QString path = m_home.filePath(u"socket.mp4"_s);
        const auto start = [&](const QJsonObject &options) {
            return m_client.request({u"start_recording"_s, options});
        };
        QCOMPARE(error(start({{u"path"_s, path}, {u"stopAfter"_s, u"45"_s}})),
                 u"Enter a valid duration such as 30m, 90m or 1.2hr, or leave the field blank for "
                 "manual Stop."_s);
        QCOMPARE(m_client.data({u"get_property"_s, u"recordingState"_s}), u"idle"_s);
        QVERIFY(!QFile::exists(path));
        QCOMPARE(error(start({{u"path"_s, u"relative.mp4"_s}})), u"invalid parameter"_s);
        QCOMPARE(error(start({{u"path"_s, path}, {u"quality"_s, u"4k"_s}})),
                 u"invalid parameter"_s);
        QCOMPARE(error(m_client.request({u"stop_recording"_s})), u"not recording"_s);

        QCOMPARE(
            error(start({{u"path"_s, path}, {u"quality"_s, u"hd"_s}, {u"stopAfter"_s, u"2m"_s}})),
            u"success"_s);
        QCOMPARE(m_client.data({u"get_property"_s, u"recordingState"_s}), u"recording"_s);
        QCOMPARE(error(start({{u"path"_s, path}})), u"a recording is already running"_s);
        QTRY_VERIFY(m_client.data({u"get_property"_s, u"recordingPanelText"_s})
                        .toString()
                        .startsWith(u"REC  00:01  •  LEFT  01:5"_s));
        QCOMPARE(m_client.data({u"stop_recording"_s}), path);
        QVERIFY(m_client.data({u"get_property"_s, u"recordingDuration"_s}).toDouble() >= 1);
        QCOMPARE(m_client.data({u"get_property"_s, u"recordingSavedPath"_s}), path);
        QCOMPARE(m_client.data({u"get_property"_s, u"recordingState"_s}), u"idle"_s);
        QVERIFY(m_client.data({u"get_property"_s, u"recordingPanelText"_s}).isNull());
        QVERIFY(m_client.data({u"get_property"_s, u"recordingError"_s}).isNull());
        QVERIFY(QFileInfo(path).size() > 0);
    }

    void handsLaterLaunchesToThePlayer_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("played"); // by the running player; empty: it plays nothing new

        const QString clip = QUrl::fromLocalFile(testMedia(u"clip.mp4"_s)).toString();
        QTest::newRow("a file relative to the launch's folder")
            << QStringList{u"columns.mp4"_s}
            << QUrl::fromLocalFile(testMedia(u"columns.mp4"_s)).toString();
        QTest::newRow("an address, after options end") << QStringList{u"--"_s, clip} << clip;
        QTest::newRow("nothing to open") << QStringList{} << QString();
        // These open windows of their own: the picture is taken there, not in the running player.
        QTest::newRow("a new window") << QStringList{u"--new-window"_s,
                                                     u"--screenshot"_s,
                                                     m_home.filePath(u"own.png"_s),
                                                     u"--after"_s,
                                                     u"0"_s,
                                                     u"audio.m4a"_s}
                                      << QString();
        QTest::newRow("a scripted window")
            << QStringList{u"--screenshot"_s, m_home.filePath(u"scripted.png"_s), u"--after"_s,
                           u"0"_s, u"audio.m4a"_s}
            << QString();
    }

    void handsLaterLaunchesToThePlayer()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, played);
        const QJsonValue before = m_client.data({u"get_property"_s, u"currentURL"_s});
        QCOMPARE(launchAgain(arguments, QFileInfo(testMedia(u"clip.mp4"_s)).path()), 0);
        if (!played.isEmpty()) {
            QTRY_COMPARE(m_client.data({u"get_property"_s, u"currentURL"_s}), QJsonValue(played));
            return;
        }
        QCOMPARE(m_client.data({u"get_property"_s, u"currentURL"_s}), before);
        const qsizetype screenshot = arguments.indexOf(u"--screenshot"_s);
        if (screenshot >= 0)
            QVERIFY(!QImage(arguments.at(screenshot + 1)).isNull());
    }

    void takesOverTheSocketOfAPlayerThatDied()
    {
        m_app.kill();
        m_app.waitForFinished();
        // The socket file stays behind, with nobody answering on it.
        QCOMPARE(QDir(m_home.filePath(u"runtime"_s)).entryList(QDir::System).size(), 1);
        start();
        const QString file = testMedia(u"clip.mp4"_s);
        QCOMPARE(launchAgain({file}, m_home.path()), 0);
        QTRY_COMPARE(m_client.data({u"get_property"_s, u"currentURL"_s}),
                     QJsonValue(QUrl::fromLocalFile(file).toString()));
    }

    void quitsAndKeepsTheSavedLinks()
    {
        const QJsonValue saved = m_client.data({u"local_entries"_s});
        for (int run = 0; run < 2; ++run) {
            if (run == 1) {
                start();
                QCOMPARE(m_client.data({u"local_entries"_s}), saved);
            }
            QCOMPARE(error(m_client.request({u"quit"_s})), u"success"_s);
            // It may have gone already while the reply was read.
            QVERIFY(m_app.state() == QProcess::NotRunning || m_app.waitForFinished(20000));
            QCOMPARE(m_app.exitStatus(), QProcess::NormalExit);
            QCOMPARE(m_app.exitCode(), 0);
        }
    }

private:
    void start()
    {
        QVERIFY(QDir(m_home.path()).mkpath(u"runtime"_s));
        QFile::setPermissions(m_home.filePath(u"runtime"_s),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        m_app.setProcessEnvironment(environment());
        m_app.setProcessChannelMode(QProcess::ForwardedChannels);
        m_app.start(QStringLiteral(VELM_APP), {u"--ipc-server"_s, m_socketPath});
        QVERIFY(m_app.waitForStarted());
        QVERIFY(m_client.connectTo(m_socketPath));
    }
    QProcessEnvironment environment() const;
    // Launches the player again as a file manager would, from directory; its exit code, or -1
    // when it did not end.
    int launchAgain(const QStringList &arguments, const QString &directory);

    QTemporaryDir m_home;
    QString m_socketPath;
    QProcess m_app;
    ControlClient m_client;
    TestHttpServer m_server;
};

QProcessEnvironment tst_ControlSocket::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"HOME"_s, m_home.path());
    environment.insert(u"XDG_CONFIG_HOME"_s, m_home.filePath(u"config"_s));
    environment.insert(u"XDG_RUNTIME_DIR"_s, m_home.filePath(u"runtime"_s));
    return environment;
}

int tst_ControlSocket::launchAgain(const QStringList &arguments, const QString &directory)
{
    QProcess launch;
    launch.setProcessEnvironment(environment());
    launch.setWorkingDirectory(directory);
    launch.setProcessChannelMode(QProcess::ForwardedChannels);
    launch.start(QStringLiteral(VELM_APP), arguments);
    if (!launch.waitForFinished(30000)) {
        launch.kill();
        launch.waitForFinished();
        return -1;
    }
    return launch.exitStatus() == QProcess::NormalExit ? launch.exitCode() : -1;
}

QTEST_GUILESS_MAIN(tst_ControlSocket)
#include "tst_ControlSocket.moc"
