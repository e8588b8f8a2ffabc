#include "Base/AppIdentity.h"
#include "Player/PlayerModel.h"
#include "Player/PlayerTexts.h"

#include "TestHttpServer.h"
#include "TestMedia.h"
#include "TestPlayer.h"

#include <QDir>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

#include <cmath>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

Q_DECLARE_METATYPE(std::optional<QString>)

namespace {
const QString placeholder = AppIdentity::displayName.toString();

WebAddress fileAddress(const QString &path)
{
    return WebAddress::fromLocalFile(QDir(path).absolutePath());
}

WebAddress address(const QString &text)
{
    return WebAddress::fromText(text).value();
}

// Plays the clip paused at the position, with the model's clock caught up.
void playPausedAt(PlayerModel &model, double position)
{
    model.play(fileAddress(testMedia(u"clip.mp4"_s)), std::nullopt, false);
    QTRY_VERIFY(model.duration() > 4.9);
    model.togglePlayback();
    QVERIFY(!model.isPlaying());
    model.skip(position - model.currentTime());
    QTRY_VERIFY(std::fabs(model.currentTime() - position) < 0.04);
}
} // namespace

// The player model on a real headless engine, real media, and a local HTTP server.
class tst_PlayerModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void timeAndShapeFollowPlayback()
    {
        TestPlayer player;
        PlayerModel &model = player.model;
        QSignalSpy ratioChanges(&model, &PlayerModel::videoAspectRatioChanged);
        model.play(fileAddress(testMedia(u"clip.mp4"_s)), std::nullopt, false);
        QVERIFY(model.isPlaying());
        QTRY_VERIFY(std::fabs(model.duration() - 5.0) < 0.05);
        QTRY_VERIFY(model.currentTime() > 0.5);
        QVERIFY(model.isPlaying());
        QTRY_COMPARE(model.videoAspectRatio(), 16.0 / 9.0);
        QCOMPARE(model.videoAspectMediaLoadID(), model.mediaLoadID());
        // Ticks four times a second do not rewrite an unchanged shape.
        QTest::qWait(600);
        QCOMPARE(ratioChanges.count(), 1);

        // A new load forgets the shape until its own is known, under a new identity.
        const QUuid firstLoad = model.mediaLoadID();
        model.play(fileAddress(testMedia(u"My Film.mkv"_s)), std::nullopt, false);
        QCOMPARE(model.videoAspectRatio(), 0.0);
        QVERIFY(!model.videoAspectMediaLoadID());
        QVERIFY(model.mediaLoadID() != firstLoad);
        QTRY_COMPARE(model.videoAspectRatio(), 4.0 / 3.0);
        QCOMPARE(model.videoAspectMediaLoadID(), model.mediaLoadID());

        // Sound alone has no shape at all.
        model.play(fileAddress(testMedia(u"audio.m4a"_s)), std::nullopt, false);
        QTRY_VERIFY(std::fabs(model.duration() - 3.0) < 0.05);
        QTRY_VERIFY(model.currentTime() > 0.3);
        QCOMPARE(model.videoAspectRatio(), 0.0);
        QVERIFY(!model.videoAspectMediaLoadID());
    }

    void endOfMediaStopsTheClockAtTheDuration()
    {
        TestPlayer player;
        PlayerModel &model = player.model;
        model.play(fileAddress(testMedia(u"clip.mp4"_s)), std::nullopt, false);
        QTRY_VERIFY(model.duration() > 4.9);
        model.skip(4.5);
        QTRY_VERIFY_WITH_TIMEOUT(!model.isPlaying(), 5000);
        QCOMPARE(model.currentTime(), model.duration());
        QVERIFY(!model.errorMessage());
    }

    void skipStaysWithinTheMedia_data()
    {
        QTest::addColumn<double>("from");
        QTest::addColumn<double>("seconds");
        QTest::addColumn<double>("expected"); // negative: the duration
        QTest::newRow("back past the start") << 3.0 << -5.0 << 0.0;
        QTest::newRow("forward past the end") << 3.0 << 5.0 << -1.0;
        QTest::newRow("within") << 1.0 << 1.52 << 2.52;
    }

    void skipStaysWithinTheMedia()
    {
        QFETCH(double, from);
        QFETCH(double, seconds);
        QFETCH(double, expected);
        TestPlayer player;
        PlayerModel &model = player.model;
        playPausedAt(model, from);
        model.skip(seconds);
        const double target = expected < 0 ? model.duration() : expected;
        QTRY_VERIFY2(std::fabs(model.currentTime() - target) < 0.04,
                     qPrintable(QString::number(model.currentTime())));
    }

    void titleOfAStartedSource_data()
    {
        QTest::addColumn<WebAddress>("url");
        QTest::addColumn<std::optional<QString>>("displayName");
        QTest::addColumn<QString>("title");
        const WebAddress film =
            address(QUrl::fromLocalFile(testMedia(u"My Film.mkv"_s)).toString(QUrl::FullyEncoded));
        QTest::newRow("decoded file name") << film << std::optional<QString>() << u"My Film.mkv"_s;
        QTest::newRow("given name") << film << std::optional<QString>(u"Movie"_s) << u"Movie"_s;
        QTest::newRow("given empty name") << film << std::optional<QString>(u""_s) << u""_s;
        QTest::newRow("undecodable name")
            << address(u"http://127.0.0.1:1/%FF.ts"_s) << std::optional<QString>()
            << u"http://127.0.0.1:1/%FF.ts"_s;
    }

    void titleOfAStartedSource()
    {
        QFETCH(WebAddress, url);
        QFETCH(std::optional<QString>, displayName);
        QFETCH(QString, title);
        TestPlayer player;
        PlayerModel &model = player.model;
        model.play(url, displayName, false);
        QCOMPARE(model.title(), title);
        QCOMPARE(model.currentURL(), url);
        const auto *last =
            std::get_if<LastPlayableSource::Media>(&model.lastPlayableSource()->source);
        QVERIFY(last);
        QCOMPARE(last->title, title);
    }

    void unplayableMediaSaysWhy_data()
    {
        QTest::addColumn<WebAddress>("url");
        QTest::addColumn<QString>("notice");
        const QString notMedia = u"it is not audio or video in a format the player reads."_s;
        const QString notHandled = u"the player does not handle this kind of media."_s;
        const auto row = [](const char *name, const WebAddress &url, const QString &notice) {
            QTest::newRow(name) << url << notice;
        };
        row("missing file", fileAddress(testMedia(u"nowhere.mp4"_s)),
            u"Could not play \u201Cnowhere.mp4\u201D: the file is missing or cannot be read."_s);
        row("text file", fileAddress(testMedia(u"text.mp4"_s)),
            u"Could not play \u201Ctext.mp4\u201D: "_s + notMedia);
        row("empty file", fileAddress(testMedia(u"empty.mp4"_s)),
            u"Could not play \u201Cempty.mp4\u201D: "_s + notMedia);
        row("truncated mp4", fileAddress(testMedia(u"truncated.mp4"_s)),
            u"Could not play \u201Ctruncated.mp4\u201D: "_s + notMedia);
        row("refused connection", address(u"http://127.0.0.1:1/live.m3u8"_s),
            u"Could not play \u201Clive.m3u8\u201D: the server refused it, does not have it or "
            u"could not be reached."_s);
        row("unknown scheme", address(u"gopher://127.0.0.1:1/clip"_s),
            u"Could not play \u201Cclip\u201D: "_s + notHandled);
        row("process file descriptor", address(u"fdclose://0"_s),
            u"Could not play \u201Cfdclose://0\u201D: "_s + notHandled);
        row("edit list of local files", address(u"edl:///etc/hostname"_s),
            u"Could not play \u201Chostname\u201D: "_s + notHandled);
    }

    void unplayableMediaSaysWhy()
    {
        QFETCH(WebAddress, url);
        QFETCH(QString, notice);
        TestPlayer player;
        PlayerModel &model = player.model;
        model.play(url, std::nullopt, true);
        QVERIFY(model.isPlaying());
        QTRY_VERIFY(!model.isPlaying());
        // The failure is told over the picture; the message of the address field stays empty.
        QTRY_COMPARE(model.playbackFailure(), notice);
        QVERIFY(!model.errorMessage());
        QVERIFY(!model.isBuffering());
        QCOMPARE(model.currentTime(), 0.0);
        QCOMPARE(model.duration(), 0.0);
        model.dismissPlaybackFailure();
        QVERIFY(!model.playbackFailure());
        // The player goes on working, and the failure is not taken for the next load's.
        model.play(url, std::nullopt, false);
        model.play(fileAddress(testMedia(u"clip.mp4"_s)), std::nullopt, false);
        QTRY_VERIFY(model.currentTime() > 0.5);
        QVERIFY(model.isPlaying());
        QVERIFY(!model.playbackFailure());
    }

    void aStreamWithoutDataFails()
    {
        TestHttpServer server;
        TestHttpReply silent;
        silent.neverAnswer = true;
        server.route("/stream.m3u8", silent);
        TestPlayer player;
        PlayerModel &model = player.model;
        model.setStreamDataTimeout(std::chrono::milliseconds(1500));
        QElapsedTimer clock;
        clock.start();
        model.play(address(server.url(u"/stream.m3u8"_s)), u"News"_s, true);
        QTRY_VERIFY_WITH_TIMEOUT(model.playbackFailure(), 10000);
        QVERIFY(clock.elapsed() >= 1500);
        QVERIFY(model.playbackFailure()->startsWith(u"Could not play \u201CNews\u201D: no data"_s));
    }

    void volumeStaysOnItsGrid_data()
    {
        QTest::addColumn<double>("start");
        QTest::addColumn<bool>("adjust"); // adjustVolume(by:) instead of setVolume
        QTest::addColumn<double>("value");
        QTest::addColumn<double>("volume");
        QTest::addColumn<bool>("muted");
        QTest::addColumn<QString>("toast");
        QTest::newRow("set above range") << 0.5 << false << 1.7 << 1.0 << false << QString();
        QTest::newRow("set below range") << 0.5 << false << -0.2 << 0.0 << true << QString();
        QTest::newRow("set after mute") << 0.0 << false << 0.3 << 0.3 << false << QString();
        QTest::newRow("step up to the top")
            << 0.97 << true << 0.05 << 1.0 << false << u"Volume: 100%"_s;
        QTest::newRow("step down to zero")
            << 0.03 << true << -0.05 << 0.0 << true << u"Volume: 0% (Muted)"_s;
        QTest::newRow("steps do not drift")
            << 0.3 << true << 0.1 << 0.4 << false << u"Volume: 40%"_s;
    }

    void volumeStaysOnItsGrid()
    {
        QFETCH(double, start);
        QFETCH(bool, adjust);
        QFETCH(double, value);
        QFETCH(double, volume);
        QFETCH(bool, muted);
        QFETCH(QString, toast);
        TestPlayer player;
        PlayerModel &model = player.model;
        model.setVolume(start);
        adjust ? model.adjustVolume(value) : model.setVolume(value);
        QCOMPARE(model.volume(), volume);
        QCOMPARE(model.isMuted(), muted);
        QCOMPARE(model.toastMessage().value_or(QString()), toast);
    }

    void aNewerToastReplacesAnOlderOne()
    {
        TestPlayer player;
        PlayerModel &model = player.model;
        QElapsedTimer clock;
        clock.start();
        model.showToast(u"first"_s, 400'000'000);
        QTest::qWait(250);
        model.showToast(u"second"_s, 400'000'000);
        // The first toast's time is over, the second one's is not.
        QTest::qWait(550 - int(clock.elapsed()));
        QCOMPARE(model.toastMessage(), u"second"_s);
        QTRY_VERIFY(!model.toastMessage());
        QVERIFY(clock.elapsed() >= 650);
    }

    void playAfterStopReplaysTheLastSource()
    {
        TestPlayer player;
        PlayerModel &model = player.model;
        model.togglePlayback();
        QCOMPARE(model.toastMessage(), PlayerTexts::nothingToPlay.toString());
        QVERIFY(!model.isPlaying());

        const WebAddress clip = fileAddress(testMedia(u"clip.mp4"_s));
        model.play(clip, u"Clip"_s, false);
        QTRY_VERIFY(model.currentTime() > 0.2);
        const QUuid load = model.mediaLoadID();
        model.stop();
        QCOMPARE(model.title(), placeholder);
        QVERIFY(!model.currentURL());
        QVERIFY(!model.isPlaying());
        QCOMPARE(model.currentTime(), 0.0);
        QCOMPARE(model.duration(), 0.0);
        QCOMPARE(model.videoAspectRatio(), 0.0);
        QCOMPARE(model.mediaLoadID(), load);

        model.togglePlayback();
        QCOMPARE(model.title(), u"Clip"_s);
        QCOMPARE(model.currentURL(), clip);
        QVERIFY(model.mediaLoadID() != load);
        QTRY_VERIFY(model.currentTime() > 0.2);
    }

    void clearForgetsNetworkSourcesOnly_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<bool>("replays");
        QTest::newRow("local file") << u"file"_s << true;
        QTest::newRow("stream") << u"http://127.0.0.1:1/live.m3u8"_s << false;
        QTest::newRow("web video") << u"https://youtu.be/abc"_s << false;
    }

    void clearForgetsNetworkSourcesOnly()
    {
        QFETCH(QString, source);
        QFETCH(bool, replays);
        TestPlayer player;
        PlayerModel &model = player.model;
        if (source == u"file")
            model.play(fileAddress(testMedia(u"clip.mp4"_s)), std::nullopt, false);
        else
            model.openRemote(source, std::nullopt);
        model.clearNetworkStream();
        QVERIFY(!model.isPlaying());
        QVERIFY(!model.youtubeContent());
        model.togglePlayback();
        QCOMPARE(model.isPlaying(), replays);
        QCOMPARE(model.toastMessage().has_value(), !replays);
    }

    void openRemoteClassifiesTheAddress_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<std::optional<QString>>("name");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("title");
        const std::optional<QString> none;
        QTest::newRow("bracketed live stream")
            << u"  <https://127.0.0.1:1/tv/live.m3u8>\n"_s << none << u"live"_s << u"live.m3u8"_s;
        QTest::newRow("stream with a movie name")
            << u"HTTPS://127.0.0.1:1/tv/live.m3u8"_s << std::optional<QString>(u" Evening "_s)
            << u"live"_s << u"Evening"_s;
        QTest::newRow("stream, blank movie name")
            << u"http://127.0.0.1:1/film.mp4"_s << std::optional<QString>(u"  "_s) << u"file"_s
            << u"film.mp4"_s;
        QTest::newRow("youtube, blank movie name")
            << u"https://www.youtube.com/watch?v=abc&type=m3u"_s << std::optional<QString>(u"  "_s)
            << u"youtube"_s << placeholder;
        QTest::newRow("ok.ru") << u"https://ok.ru/video/12345"_s
                               << std::optional<QString>(u"Film"_s) << u"okVideo"_s << u"Film"_s;
        QTest::newRow("other scheme")
            << u"ftp://127.0.0.1/live.m3u8"_s << none << u"refused"_s << QString();
    }

    void openRemoteClassifiesTheAddress()
    {
        QFETCH(QString, text);
        QFETCH(std::optional<QString>, name);
        QFETCH(QString, kind);
        QFETCH(QString, title);
        TestPlayer player;
        PlayerModel &model = player.model;
        model.play(fileAddress(testMedia(u"clip.mp4"_s)), u"Before"_s, false);
        const QUuid requestBefore = model.remoteRequestID();
        model.openRemote(text, name);
        QVERIFY(model.remoteRequestID() != requestBefore);
        if (kind == u"refused") {
            QCOMPARE(model.errorMessage(), PlayerTexts::invalidRemoteAddress.toString());
            QCOMPARE(model.title(), u"Before"_s);
            QVERIFY(model.isPlaying());
            QTRY_VERIFY(model.currentTime() > 0.1);
            return;
        }
        QVERIFY(!model.errorMessage());
        QCOMPARE(model.title(), title);
        QCOMPARE(model.youtubeContent().has_value(), kind == u"youtube");
        QCOMPARE(model.okVideoContent().has_value(), kind == u"okVideo");
        QCOMPARE(model.isLiveStream(), kind == u"live");
        QVERIFY(model.isPlaying());
        if (kind == u"youtube" || kind == u"okVideo") {
            QCOMPARE(model.videoAspectRatio(), 16.0 / 9.0);
            QCOMPARE(model.videoAspectMediaLoadID(), model.mediaLoadID());
            QCOMPARE(model.currentURL()->toLocalFile(), testMedia(u"clip.mp4"_s));
        }
    }

    void bufferingShowsOnlyForLongLiveStalls_data()
    {
        QTest::addColumn<bool>("live");
        QTest::addColumn<int>("stallMs");
        QTest::addColumn<bool>("indicator");
        QTest::newRow("live, long stall") << true << 3000 << true;
        QTest::newRow("live, short stall") << true << 200 << false;
        QTest::newRow("not live, long stall") << false << 3000 << false;
    }

    void bufferingShowsOnlyForLongLiveStalls()
    {
        QFETCH(bool, live);
        QFETCH(int, stallMs);
        QFETCH(bool, indicator);
        // A live channel: one 1 s segment more every second, five in the window; the segment due at
        // 4 s is held back by the stall.
        TestHttpServer server;
        QElapsedTimer sinceStart;
        sinceStart.start();
        constexpr int heldSegment = 6;
        server.setHandler([&](const QByteArray &path) {
            if (path == "/live/index.m3u8") {
                const qint64 newest = 2 + sinceStart.elapsed() / 1000;
                const qint64 oldest = std::max<qint64>(0, newest - 4);
                QByteArray text = "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:1\n"
                                  "#EXT-X-MEDIA-SEQUENCE:" +
                                  QByteArray::number(oldest) + "\n";
                for (qint64 i = oldest; i <= newest; ++i)
                    text += "#EXTINF:1.0,\nseg" + QByteArray::number(i) + ".ts\n";
                return TestHttpReply::of(200, "OK", text, "application/vnd.apple.mpegurl");
            }
            TestHttpReply reply = TestHttpReply::file(
                testMedia(u"live"_s + QString::fromLatin1(path.mid(5))), "video/mp2t");
            if (path == "/live/seg" + QByteArray::number(heldSegment) + ".ts")
                reply.delay = std::chrono::milliseconds(stallMs);
            return reply;
        });

        TestPlayer player;
        PlayerModel &model = player.model;
        QSignalSpy buffering(&model, &PlayerModel::isBufferingChanged);
        model.play(address(server.url(u"/live/index.m3u8"_s)), std::nullopt, live);
        QTRY_VERIFY(model.currentTime() > 0);
        QTRY_VERIFY_WITH_TIMEOUT(
            server.requestCount("/live/seg" + QByteArray::number(heldSegment + 1) + ".ts") > 0,
            15000);
        QTest::qWait(1500);
        QCOMPARE(buffering.count() > 0, indicator);
        // Shown while stalled, gone once playback resumes.
        QVERIFY(!model.isBuffering());
        QVERIFY(model.isPlaying());
    }
};

QTEST_GUILESS_MAIN(tst_PlayerModel)
#include "tst_PlayerModel.moc"
