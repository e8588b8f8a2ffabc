#include "Playlist/PlaylistParser.h"

#include "TestHttpServer.h"

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

// One connection to the application's control socket, read without blocking the test's own
// event loop (its HTTP server answers the application meanwhile).
class ControlClient
{
public:
    bool connectTo(const QString &path)
    {
        m_socket.abort();
        return QTest::qWaitFor(
            [&] {
                m_socket.connectToServer(path);
                return m_socket.waitForConnected(100);
            },
            20000);
    }

    QJsonObject sendLine(const QByteArray &line)
    {
        m_socket.write(line + '\n');
        return nextReply();
    }

    QJsonObject request(const QJsonArray &command)
    {
        const int id = ++m_lastID;
        const QJsonObject reply =
            sendLine(QJsonDocument(QJsonObject{{u"command"_s, command}, {u"request_id"_s, id}})
                         .toJson(QJsonDocument::Compact));
        return reply.value(u"request_id"_s).toInt() == id ? reply : QJsonObject{};
    }

    QJsonValue data(const QJsonArray &command)
    {
        const QJsonObject reply = request(command);
        return reply.value(u"error"_s) == u"success"_s ? reply.value(u"data"_s) : QJsonValue();
    }

    QJsonObject nextReply()
    {
        for (;;) {
            if (!QTest::qWaitFor([&] { return m_socket.canReadLine(); }, 30000))
                return {};
            const QJsonObject line = QJsonDocument::fromJson(m_socket.readLine()).object();
            if (!line.contains(u"event"_s))
                return line;
            events.append(line.value(u"event"_s).toString());
        }
    }

    QStringList events;

private:
    QLocalSocket m_socket;
    int m_lastID = 0;
};

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
    void initTestCase();
    void cleanupTestCase();
    void answersBadRequestsAndGoesOn();
    void readsPublishedState();
    void savesExportsAndImportsLinks();
    void sendsKeysThroughTheMonitor();
    void drivesTheWindowState();
    void quitsAndKeepsTheSavedLinks();

private:
    void start();

    QTemporaryDir m_home;
    QString m_socketPath;
    QProcess m_app;
    ControlClient m_client;
    TestHttpServer m_server;
};

void tst_ControlSocket::initTestCase()
{
    m_socketPath = m_home.filePath(u"control.sock"_s);
    m_server.route(
        "/tv/list.m3u",
        TestHttpReply::of(200, "OK",
                          "#EXTM3U\n"
                          "#EXTINF:-1 tvg-country=\"DE\" group-title=\"News\",Tagesschau\n"
                          "https://tv.example/tagesschau.m3u8\n"
                          "#EXTINF:-1 tvg-logo=\"http://l/s.png\" group-title=\"Sport\",Sport 1\n"
                          "live/sport.m3u8\n"
                          "#EXTINF:-1,Music\nhttp://tv.example/music.ts\n"));
    start();
}

void tst_ControlSocket::start()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"HOME"_s, m_home.path());
    environment.insert(u"XDG_CONFIG_HOME"_s, m_home.filePath(u"config"_s));
    m_app.setProcessEnvironment(environment);
    m_app.setProcessChannelMode(QProcess::ForwardedChannels);
    m_app.start(QStringLiteral(VELM_APP), {u"--ipc-server"_s, m_socketPath});
    QVERIFY(m_app.waitForStarted());
    QVERIFY(m_client.connectTo(m_socketPath));
}

void tst_ControlSocket::cleanupTestCase()
{
    if (m_app.state() != QProcess::NotRunning) {
        m_app.kill();
        m_app.waitForFinished();
    }
}

void tst_ControlSocket::answersBadRequestsAndGoesOn()
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
    QCOMPARE(error(m_client.request({u"get_property"_s, u"nonsense"_s})), u"property not found"_s);
    QCOMPARE(error(m_client.request({u"get_property"_s, u"objectName"_s})),
             u"property not found"_s);
    QCOMPARE(error(m_client.request({u"skip"_s, u"five"_s})), u"invalid parameter"_s);
    QCOMPARE(error(m_client.request({u"setVolume"_s})), u"invalid parameter"_s);
    QCOMPARE(error(m_client.request({u"play"_s, u"relative/file.mp4"_s})).left(30),
             u"not an absolute path or addres"_s);
    QCOMPARE(error(m_client.sendLine(QByteArray(2 << 20, 'x'))), u"line too long"_s);

    // The connection and the player are still there, and a second client is served too.
    QCOMPARE(m_client.data({u"get_property"_s, u"volume"_s}), QJsonValue(1.0));
    ControlClient second;
    QVERIFY(second.connectTo(m_socketPath));
    QCOMPARE(second.data({u"get_property"_s, u"isLoading"_s}), QJsonValue(false));
}

void tst_ControlSocket::readsPublishedState()
{
    QCOMPARE(m_client.data({u"get_property"_s, u"title"_s}), QJsonValue(u"Velm Player Pro"_s));
    QCOMPARE(m_client.data({u"get_property"_s, u"errorMessage"_s}), QJsonValue(QJsonValue::Null));
    QCOMPARE(m_client.data({u"get_property"_s, u"width"_s}), QJsonValue(700));
    QCOMPARE(m_client.data({u"get_property"_s, u"isFullScreen"_s}), QJsonValue(false));

    QVERIFY(m_client.request({u"openRemote"_s, u"https://youtu.be/dQw4w9WgXcQ?list=PL1"_s})
                .value(u"error"_s) == u"success"_s);
    QCOMPARE(
        m_client.data({u"get_property"_s, u"youtubeContent"_s}),
        QJsonValue(QJsonObject{{u"videoID"_s, u"dQw4w9WgXcQ"_s}, {u"playlistID"_s, u"PL1"_s}}));
    QCOMPARE(m_client.data({u"get_property"_s, u"okVideoContent"_s}), QJsonValue(QJsonValue::Null));

    QCOMPARE(error(m_client.request({u"openRemote"_s, u"ftp://tv.example/a.m3u"_s})), u"success"_s);
    QCOMPARE(m_client.data({u"get_property"_s, u"errorMessage"_s}),
             QJsonValue(u"Enter a valid HTTP or HTTPS address."_s));
}

void tst_ControlSocket::savesExportsAndImportsLinks()
{
    // The reply comes once the list has loaded.
    QCOMPARE(
        error(m_client.request({u"openRemote"_s, m_server.url(u"/tv/list.m3u"_s), u" My TV "_s})),
        u"success"_s);
    QCOMPARE(m_client.data({u"get_property"_s, u"playlist"_s}), QJsonValue(3));
    QCOMPARE(m_client.data({u"get_property"_s, u"title"_s}), QJsonValue(u"My TV"_s));
    const QJsonObject sport = m_client.data({u"playlist_entry"_s, 1}).toObject();
    QCOMPARE(sport.value(u"name"_s), u"Sport 1"_s);
    QCOMPARE(sport.value(u"url"_s), m_server.url(u"/tv/live/sport.m3u8"_s));
    QCOMPARE(error(m_client.request({u"playlist_entry"_s, 3})), u"index out of range"_s);

    for (int index : {1, 0, 1})
        QCOMPARE(error(m_client.request({u"save_to_local_m3u"_s, index})), u"success"_s);
    QCOMPARE(m_client.data({u"get_property"_s, u"toastMessage"_s}),
             QJsonValue(u"Saved to Local M3U: Sport 1"_s));
    const QJsonArray saved = m_client.data({u"local_entries"_s}).toArray();
    QCOMPARE(saved.size(), 2);
    QCOMPARE(saved.at(0)[u"name"_s], u"Sport 1"_s);
    QCOMPARE(saved.at(0)[u"logoURL"_s], u"http://l/s.png"_s);
    QCOMPARE(saved.at(1)[u"countryCode"_s], u"DE"_s);

    const QString exported = m_home.filePath(u"saved.m3u"_s);
    QCOMPARE(m_client.data({u"export_local_m3u"_s, exported}), QJsonValue(u"saved.m3u"_s));
    QCOMPARE(m_client.data({u"get_property"_s, u"toastMessage"_s}),
             QJsonValue(u"Exported: saved.m3u"_s));
    QFile file(exported);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QList<PlaylistEntry> read = PlaylistParser::parse(QString::fromUtf8(file.readAll()),
                                                            WebAddress::fromLocalFile(exported));
    QCOMPARE(read.size(), 2);
    QCOMPARE(read.at(1).name, u"Tagesschau"_s);
    QCOMPARE(read.at(1).groupTitle, u"News"_s);
    QVERIFY(error(m_client.request({u"export_local_m3u"_s, m_home.filePath(u"missing/x.m3u"_s)}))
                .startsWith(u"Could Not Export M3U Playlist: "_s));

    // An import without channels leaves the saved links alone; one with channels replaces them.
    const QString empty = m_home.filePath(u"empty.m3u"_s);
    QFile emptyFile(empty);
    QVERIFY(emptyFile.open(QIODevice::WriteOnly));
    emptyFile.write("#EXTM3U\n#EXTINF:-1,Nothing\n");
    emptyFile.close();
    QCOMPARE(error(m_client.request({u"import_local_m3u"_s, empty})),
             u"Could not import playlist: No playable address was found in the playlist."_s);
    QCOMPARE(m_client.data({u"local_entries"_s}).toArray().size(), 2);
    QCOMPARE(m_client.data({u"import_local_m3u"_s, exported, u"Mine"_s}), QJsonValue(2));
    QCOMPARE(m_client.data({u"get_property"_s, u"title"_s}), QJsonValue(u"Mine"_s));
    const QJsonArray imported = m_client.data({u"local_entries"_s}).toArray();
    QCOMPARE(imported.at(0)[u"name"_s], u"Sport 1"_s);
    QVERIFY(imported.at(0)[u"id"_s] != saved.at(0)[u"id"_s]);
}

void tst_ControlSocket::sendsKeysThroughTheMonitor()
{
    QCOMPARE(error(m_client.request({u"setVolume"_s, 0.5})), u"success"_s);
    QCOMPARE(error(m_client.request({u"key"_s, u"Up"_s, u"Shift"_s, u"Command"_s})), u"success"_s);
    QCOMPARE(m_client.data({u"get_property"_s, u"volume"_s}), QJsonValue(0.51));
    QCOMPARE(error(m_client.request({u"key"_s, u"Up"_s, u"autorepeat"_s})), u"success"_s);
    QCOMPARE(m_client.data({u"get_property"_s, u"toastMessage"_s}), QJsonValue(u"Volume: 56%"_s));
    QCOMPARE(error(m_client.request({u"key"_s, u"Up"_s, u"Control"_s})), u"success"_s);
    QCOMPARE(m_client.data({u"get_property"_s, u"volume"_s}), QJsonValue(0.56));
    QCOMPARE(error(m_client.request({u"key"_s, u"Up"_s, u"Hyper"_s})), u"invalid parameter"_s);
    QCOMPARE(error(m_client.request({u"key"_s, u"Ctrl+Up"_s})), u"invalid parameter"_s);
}

void tst_ControlSocket::drivesTheWindowState()
{
    const auto set = [this](const QString &name, const QJsonValue &value) {
        return error(m_client.request({u"set_property"_s, name, value}));
    };
    const auto get = [this](const QString &name) {
        return m_client.data({u"get_property"_s, name});
    };
    QCOMPARE(set(u"selectedSidebarSection"_s, u"network"_s), u"success"_s);
    // Typed into the address field, an http address opens by itself after a calm moment.
    QCOMPARE(set(u"address"_s, u" "_s + m_server.url(u"/tv/list.m3u"_s) + u"\n"_s), u"success"_s);
    QCOMPARE(get(u"address"_s), QJsonValue(m_server.url(u"/tv/list.m3u"_s)));
    QVERIFY(QTest::qWaitFor([&] { return m_client.data({u"filtered_count"_s}) == 3; }, 10000));
    QCOMPARE(set(u"channelSearch"_s, u"SPORT"_s), u"success"_s);
    QCOMPARE(m_client.data({u"filtered_count"_s}), QJsonValue(1));
    QCOMPARE(set(u"channelSearch"_s, u""_s), u"success"_s);
    QCOMPARE(set(u"selectedCountryCode"_s, u"DE"_s), u"success"_s);
    QCOMPARE(m_client.data({u"filtered_count"_s}), QJsonValue(1));
    QCOMPARE(set(u"selectedCountryCode"_s, QJsonValue()), u"success"_s);
    QCOMPARE(get(u"selectedCountryCode"_s), QJsonValue(QJsonValue::Null));

    QCOMPARE(set(u"portraitMode"_s, u"Portrait Fill"_s), u"success"_s);
    QCOMPARE(get(u"portraitMode"_s), QJsonValue(u"Portrait Fill"_s));
    QCOMPARE(get(u"showSidebar"_s), QJsonValue(false));
    QCOMPARE(set(u"portraitMode"_s, u"Sideways"_s), u"invalid value for portraitMode"_s);
    QCOMPARE(set(u"selectedSidebarSection"_s, u"films"_s),
             u"invalid value for selectedSidebarSection"_s);
    QCOMPARE(set(u"showSidebar"_s, u"yes"_s), u"invalid value for showSidebar"_s);
    QCOMPARE(set(u"title"_s, u"x"_s), u"property not found or read-only: title"_s);
    QCOMPARE(set(u"selectedSidebarSection"_s, u"localM3U"_s), u"success"_s);
    QCOMPARE(get(u"selectedSidebarSection"_s), QJsonValue(u"localM3U"_s));

    const QString picture = m_home.filePath(u"window.png"_s);
    QCOMPARE(error(m_client.request({u"screenshot"_s, picture})), u"success"_s);
    const QImage image(picture);
    QCOMPARE(image.size(),
             QSize(get(u"width"_s).toInt(), get(u"height"_s).toInt()) * image.devicePixelRatio());
    QVERIFY(error(m_client.request({u"screenshot"_s, m_home.filePath(u"no/such/dir.png"_s)}))
                .startsWith(u"cannot write"_s));
}

void tst_ControlSocket::quitsAndKeepsTheSavedLinks()
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

QTEST_GUILESS_MAIN(tst_ControlSocket)
#include "tst_ControlSocket.moc"
