#include "Player/PlayerModel.h"
#include "Player/PlayerTexts.h"
#include "Player/ProgrammeGuide.h"
#include "Playlist/PlaylistReader.h"
#include "Playlist/PlaylistTexts.h"

#include "NumberedPlaylist.h"
#include "TestHttpServer.h"
#include "TestPlayer.h"

#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
const QByteArray twoChannels = "#EXTM3U\n#EXTINF:-1,One\nhttp://a.example/1.m3u8\n"
                               "#EXTINF:-1,Two\nrel/2.m3u8\n";

TestHttpReply playlist(const QByteArray &body, std::chrono::milliseconds delay = 0ms)
{
    TestHttpReply reply = TestHttpReply::of(200, "OK", body, "audio/x-mpegurl");
    reply.delay = delay;
    return reply;
}

QStringList names(const QList<PlaylistEntry> &entries)
{
    QStringList list;
    for (const PlaylistEntry &entry : entries)
        list.append(entry.name);
    return list;
}

QString writeFile(const QTemporaryDir &folder, const QString &name, const QByteArray &bytes)
{
    QFile file(folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write the test file %s", qPrintable(file.fileName()));
    return file.fileName();
}

// Waits until the model's newest playlist request has ended.
void waitForLoad(QFuture<void> future)
{
    QTRY_VERIFY_WITH_TIMEOUT(future.isFinished(), 10000);
}
} // namespace

// Playlists loaded from a local HTTP server and imported from files into a headless model.
class tst_PlaylistLoading : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void channelsAndTitleArePublished_data()
    {
        QTest::addColumn<bool>(
            "fromFile"); // imported from my.list.m3u, else loaded from the server
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<std::optional<QString>>("name");
        QTest::addColumn<QStringList>("channels");
        QTest::addColumn<QString>("title");
        const QStringList both{u"One"_s, u"Two"_s};
        const std::optional<QString> blank(u"   "_s);
        const QByteArray latin1("#EXTINF:-1,T\xe9l\xe9 Fran\xe7"
                                "aise\r\nhttp://a/1\r\n");
        QTest::newRow("load, named")
            << false << twoChannels << std::optional<QString>(u" Sports \n"_s) << both
            << u"Sports"_s;
        QTest::newRow("load, blank name")
            << false << twoChannels << blank << both << u"IPTV Playlist"_s;
        QTest::newRow("load, latin-1") << false << latin1 << std::optional<QString>()
                                       << QStringList{u"Télé Française"_s} << u"IPTV Playlist"_s;
        QTest::newRow("import, named")
            << true << twoChannels << std::optional<QString>(u"Saved"_s) << both << u"Saved"_s;
        QTest::newRow("import, blank name") << true << twoChannels << blank << both << u"my.list"_s;
        QTest::newRow("import, latin-1") << true << latin1 << std::optional<QString>()
                                         << QStringList{u"Télé Française"_s} << u"my.list"_s;
    }

    void channelsAndTitleArePublished()
    {
        QFETCH(bool, fromFile);
        QFETCH(QByteArray, body);
        QFETCH(std::optional<QString>, name);
        QFETCH(QStringList, channels);
        QFETCH(QString, title);
        QTemporaryDir folder;
        TestHttpServer server;
        TestPlayer player;
        PlayerModel &model = player.model;
        QString base;
        if (fromFile) {
            const QString path = writeFile(folder, u"my.list.m3u"_s, body);
            auto import = model.importLocalM3UFile(path, name);
            QTRY_VERIFY(import.isFinished());
            QCOMPARE(import.result().value_or(QList<PlaylistEntry>()), model.playlist());
            base = QUrl::fromLocalFile(folder.path()).toString();
        } else {
            TestHttpReply reply = TestHttpReply::of(200, "OK", body, "audio/x-mpegurl");
            reply.pieceInterval = 20ms; // a slow body is no time-out: data keeps coming
            reply.pieceSize = 16;
            server.route("/tv/list.m3u", reply);
            model.setPlaylistTimeout(500ms);
            const QFuture<void> load = model.openRemote(server.url(u"/tv/list.m3u"_s), name);
            QVERIFY(model.isLoading());
            waitForLoad(load);
            QVERIFY(server.requestHeads().constFirst().contains("\r\nUser-Agent: VelmPlayerPro/"));
            base = server.url(u"/tv"_s);
        }
        QVERIFY(!model.isLoading());
        QVERIFY2(!model.errorMessage(), qPrintable(model.errorMessage().value_or(QString())));
        QCOMPARE(names(model.playlist()), channels);
        QCOMPARE(model.title(), title);
        if (channels.size() == 2) // relative lines resolve against the playlist's own address
            QCOMPARE(model.playlist().at(1).url.text(), base + u"/rel/2.m3u8"_s);
        QVERIFY(!model.isPlaying()); // a playlist only lists channels
    }

    void onlyTheNewestLoadCounts_data()
    {
        QTest::addColumn<int>("firstStatus");
        QTest::newRow("first succeeds late") << 200;
        QTest::newRow("first fails late") << 404;
    }

    void onlyTheNewestLoadCounts()
    {
        QFETCH(int, firstStatus);
        TestHttpServer server;
        TestHttpReply first = playlist("#EXTM3U\n#EXTINF:-1,Old\nhttp://a/old\n", 600ms);
        first.status = firstStatus;
        first.reason = "Whatever";
        server.route("/first.m3u", first);
        server.route("/second.m3u", playlist("#EXTM3U\n#EXTINF:-1,New\nhttp://a/new\n"));
        TestPlayer player;
        PlayerModel &model = player.model;
        QSignalSpy errors(&model, &PlayerModel::errorMessageChanged);
        const QFuture<void> older = model.openRemote(server.url(u"/first.m3u"_s), u"First"_s);
        const QFuture<void> newer = model.openRemote(server.url(u"/second.m3u"_s), u"Second"_s);
        waitForLoad(newer);
        QCOMPARE(names(model.playlist()), QStringList{u"New"_s});
        QVERIFY(!model.isLoading());
        waitForLoad(older);
        QCOMPARE(server.requestCount("/first.m3u"), 1);
        QCOMPARE(names(model.playlist()), QStringList{u"New"_s});
        QCOMPARE(model.title(), u"Second"_s);
        QVERIFY(!model.errorMessage());
        QCOMPARE(errors.count(), 0);
        QVERIFY(!model.isLoading());
    }

    void failedLoadsSayWhy_data()
    {
        QTest::addColumn<TestHttpReply>("reply");
        QTest::addColumn<QString>("description");
        const TestHttpReply notFound = TestHttpReply::of(404, "Not Found", "Not here");
        QTest::newRow("status 404")
            << notFound << u"The server responded with status 404 (Not Found)."_s;
        TestHttpReply silent;
        silent.neverAnswer = true;
        QTest::newRow("server never answers") << silent << u"The server did not answer in time."_s;
        TestHttpReply stalls = playlist(twoChannels);
        stalls.pieceInterval = 2s;
        QTest::newRow("body stalls") << stalls << u"The server did not answer in time."_s;
        QTest::newRow("no channels") << playlist("#EXTM3U\n#EXTINF:-1,Nothing\n")
                                     << u"No playable address was found in the playlist."_s;
        QTest::newRow("refused connection") << TestHttpReply() << u"Connection refused"_s;
        TestHttpReply announcedHuge;
        announcedHuge.endlessLength = PlaylistReader::maximumBytes + 1;
        QTest::newRow("announced too large")
            << announcedHuge << PlaylistReader::tooLargeDescription();
    }

    void failedLoadsSayWhy()
    {
        QFETCH(TestHttpReply, reply);
        QFETCH(QString, description);
        TestHttpServer server;
        server.route("/list.m3u", reply);
        const QString address = description == u"Connection refused"_s
                                    ? u"http://127.0.0.1:1/list.m3u"_s
                                    : server.url(u"/list.m3u"_s);
        TestPlayer player;
        PlayerModel &model = player.model;
        model.setPlaylistTimeout(400ms);
        waitForLoad(model.openRemote(address, std::nullopt));
        QCOMPARE(model.errorMessage(), PlayerTexts::playlistOpenFailed.toString() + description);
        QVERIFY(model.playlist().isEmpty());
        QVERIFY(!model.isLoading());
    }

    void aLongListArrivesWhole_data()
    {
        // Megabytes arrive in many pieces, read straight into room reserved for the announced
        // length, or grown as they come without one.
        QTest::addColumn<bool>("announced");
        QTest::addColumn<qsizetype>("pieceSize"); // 0: as fast as the socket takes it
        QTest::newRow("announced length") << true << qsizetype(0);
        QTest::newRow("no length, ends at close") << false << qsizetype(0);
        QTest::newRow("announced length, odd pieces") << true << qsizetype(99'991);
    }

    void aLongListArrivesWhole()
    {
        QFETCH(bool, announced);
        QFETCH(qsizetype, pieceSize);
        constexpr int count = 40'000;
        QStringList expected;
        for (int i = 0; i < count; ++i)
            expected.append(u"Channel %1"_s.arg(i));
        TestHttpReply reply = playlist(numberedPlaylist(count));
        reply.announceLength = announced;
        if (pieceSize > 0) {
            reply.pieceSize = pieceSize;
            reply.pieceInterval = 1ms;
        }
        TestHttpServer server;
        server.route("/long.m3u", reply);
        TestPlayer player;
        PlayerModel &model = player.model;
        waitForLoad(model.openRemote(server.url(u"/long.m3u"_s), std::nullopt));
        QVERIFY2(!model.errorMessage(), qPrintable(model.errorMessage().value_or(QString())));
        QCOMPARE(names(model.playlist()), expected);
        QCOMPARE(model.playlist().constLast().url.text(),
                 u"http://tv.example/%1.m3u8"_s.arg(count - 1));
    }

    void aHugeBodyNeitherBlocksNorGrows()
    {
        // Gigabytes without a length: refused once the body passes the limit, while the event loop
        // keeps turning.
        TestHttpServer server;
        TestHttpReply endless;
        endless.endlessLength = qint64(4) << 30;
        endless.announceLength = false;
        server.route("/huge.m3u", endless);
        TestPlayer player;
        PlayerModel &model = player.model;
        QElapsedTimer sinceTick;
        qint64 longestGap = 0;
        QTimer ticker;
        QObject::connect(&ticker, &QTimer::timeout,
                         [&] { longestGap = std::max(longestGap, sinceTick.restart()); });
        sinceTick.start();
        ticker.start(10);
        waitForLoad(model.openRemote(server.url(u"/huge.m3u"_s), std::nullopt));
        QCOMPARE(model.errorMessage(), PlayerTexts::playlistOpenFailed.toString() +
                                           PlaylistReader::tooLargeDescription());
        QVERIFY2(longestGap < 500, qPrintable(QString::number(longestGap)));
    }

    void abandonedTransfersHangUp_data()
    {
        // Transfers run on a thread of their own: ending one there must still close its
        // connection at once, not at its time-out, and a transfer under way must not hold up or
        // break the player's end.
        QTest::addColumn<bool>("guide");
        QTest::newRow("player closed while the list is asked for") << false;
        QTest::newRow("list replaced while its guide is asked for") << true;
    }

    void abandonedTransfersHangUp()
    {
        QFETCH(bool, guide);
        TestHttpServer server;
        TestHttpReply silent;
        silent.neverAnswer = true;
        server.route("/silent", silent);
        server.route("/guided.m3u",
                     playlist("#EXTM3U url-tvg=\"" + server.url(u"/silent"_s).toUtf8() +
                              "\"\n#EXTINF:-1,One\nhttp://a.example/1\n"));
        server.route("/plain.m3u", playlist(twoChannels));
        auto player = std::make_unique<TestPlayer>();
        PlayerModel &model = player->model;
        model.setPlaylistTimeout(60s);
        if (guide) {
            waitForLoad(model.openRemote(server.url(u"/guided.m3u"_s), std::nullopt));
            QTRY_COMPARE(server.requestCount("/silent"), 1);
            QCOMPARE(model.guide().status(), ProgrammeGuide::Status::loading);
            waitForLoad(model.openRemote(server.url(u"/plain.m3u"_s), std::nullopt));
            QCOMPARE(model.playlist().size(), 2);
        } else {
            model.openRemote(server.url(u"/silent"_s), std::nullopt);
            QTRY_COMPARE(server.requestCount("/silent"), 1);
            player.reset();
        }
        QTRY_COMPARE_WITH_TIMEOUT(server.openConnections(), 0, 5000);
    }

    void failedImportsEmptyTheList_data()
    {
        QTest::addColumn<QString>("fileName"); // in a temporary folder; "" for the folder itself
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<qint64>("size"); // when larger than the body: a sparse file of that size
        QTest::addColumn<QString>("description");
        QTest::newRow("no addresses")
            << u"names.m3u"_s << QByteArray("#EXTM3U\n#EXTINF:-1,A\n") << qint64(0)
            << u"No playable address was found in the playlist."_s;
        QTest::newRow("empty file") << u"empty.m3u"_s << QByteArray() << qint64(0)
                                    << u"No playable address was found in the playlist."_s;
        QTest::newRow("missing file")
            << u"missing.m3u"_s << QByteArray() << qint64(-1) << u"No such file or directory"_s;
        QTest::newRow("a folder") << QString() << QByteArray() << qint64(0) << QString();
        QTest::newRow("too large")
            << u"huge.m3u"_s << twoChannels << PlaylistReader::maximumBytes + 1
            << PlaylistReader::tooLargeDescription();
        // Not text at all: a video with addresses in its metadata, an archive, noise.
        const QString notAPlaylist = PlaylistTexts::notAPlaylist.toString();
        QTest::newRow("a video") << u"clip.m3u"_s
                                 << (QByteArray("\0\0\0\x20"
                                                "ftypisom\0\0\x02\0",
                                                16) +
                                     twoChannels)
                                 << qint64(0) << notAPlaylist;
        QTest::newRow("an archive") << u"list.m3u"_s << (QByteArray("PK\x03\x04") + twoChannels)
                                    << qint64(0) << notAPlaylist;
        QByteArray noise(64 * 1024, Qt::Uninitialized);
        for (qsizetype i = 0; i < noise.size(); ++i)
            noise[i] =
                char(((i * 2654435761u) >> 13) | 1); // no NUL: only its controls give it away
        QTest::newRow("noise") << u"noise.m3u"_s << (twoChannels + noise) << qint64(0)
                               << notAPlaylist;
    }

    void failedImportsEmptyTheList()
    {
        QFETCH(QString, fileName);
        QFETCH(QByteArray, body);
        QFETCH(qint64, size);
        QFETCH(QString, description);
        QTemporaryDir folder;
        const QString path = fileName.isEmpty() ? folder.path() : folder.filePath(fileName);
        if (size >= 0 && !fileName.isEmpty())
            QVERIFY(QFile::resize(writeFile(folder, fileName, body), std::max(size, body.size())));
        TestPlayer player;
        PlayerModel &model = player.model;
        TestHttpServer server;
        server.route("/list.m3u", playlist(twoChannels));
        waitForLoad(model.openRemote(server.url(u"/list.m3u"_s), std::nullopt));
        QCOMPARE(model.playlist().size(), 2);

        auto import = model.importLocalM3UFile(path, std::nullopt);
        QTRY_VERIFY(import.isFinished());
        QVERIFY(!import.result());
        QVERIFY(model.playlist().isEmpty());
        QVERIFY(model.errorMessage()->startsWith(PlayerTexts::playlistImportFailed.toString()));
        if (!description.isEmpty())
            QCOMPARE(*model.errorMessage(),
                     PlayerTexts::playlistImportFailed.toString() + description);
    }

    void importSupersedesARunningLoad()
    {
        TestHttpServer server;
        server.route("/slow.m3u", playlist("#EXTM3U\n#EXTINF:-1,Network\nhttp://a/n\n", 500ms));
        QTemporaryDir folder;
        const QString path = writeFile(folder, u"local.m3u"_s, "#EXTINF:-1,Local\nhttp://a/l\n");

        TestPlayer player;
        PlayerModel &model = player.model;
        const QFuture<void> load = model.openRemote(server.url(u"/slow.m3u"_s), std::nullopt);
        QVERIFY(model.isLoading());
        auto import = model.importLocalM3UFile(path, std::nullopt);
        QVERIFY(!model.isLoading()); // the spinner goes at once
        QTRY_VERIFY(import.isFinished());
        waitForLoad(load);
        QCOMPARE(names(model.playlist()), QStringList{u"Local"_s});
        QCOMPARE(model.title(), u"local"_s);
        QVERIFY(!model.isLoading());
    }
};

QTEST_GUILESS_MAIN(tst_PlaylistLoading)
#include "tst_PlaylistLoading.moc"
