// The web players in a real browser engine, against local stand-ins of both services served over
// https on 127.0.0.1: a YT namespace over an HTML5 video, and an embed page with a video.

#include "Base/AppNotifier.h"
#include "Base/WebAddress.h"
#include "Player/PlayerModel.h"
#include "Recording/PlayerSurfaceRegistry.h"
#include "TestHttpServer.h"
#include "TestMedia.h"
#include "TestTls.h"
#include "TestViews.h"
#include "Web/OKVideoPlayerRegistry.h"
#include "Web/OKVideoPlayerView.h"
#include "Web/WebPlayerPage.h"
#include "Web/WebPlayerTexts.h"
#include "Web/YouTubeHostingView.h"
#include "Web/YouTubePlayerRegistry.h"
#include "Web/YouTubePlayerView.h"

#include <QApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QWindow>

#include <csignal>
#include <functional>
#include <memory>

using namespace Qt::StringLiterals;

using ModelAction = std::function<void(PlayerModel &)>;
// What the page's video must show, given its position before the action.
using VideoCheck = std::function<bool(const QJsonObject &video, double start)>;
Q_DECLARE_METATYPE(ModelAction)
Q_DECLARE_METATYPE(VideoCheck)

namespace {

// What YouTube's iframe API offers the page, over a plain video element. Like the real script, it
// may become ready some time after it has loaded ("?ready_after=MS").
const QByteArray youTubeStandIn =
    "(function () {\n"
    "  var src = document.currentScript.src;\n"
    "  var base = src.replace(/\\/iframe_api.*$/, '');\n"
    "  var delay = Number((src.match(/ready_after=(\\d+)/) || [0, 0])[1]);\n"
    "  function Player(id, options) {\n"
    "    window.standInOptions = options;\n"
    "    var video = document.createElement('video');\n"
    "    video.src = base + '/media.mp4';\n"
    "    document.getElementById(id).appendChild(video);\n"
    "    var self = this;\n"
    "    this.getPlayerState = function () { return video.paused ? 2 : 1; };\n"
    "    this.playVideo = function () { video.play(); };\n"
    "    this.pauseVideo = function () { video.pause(); };\n"
    "    this.getCurrentTime = function () { return video.currentTime; };\n"
    "    this.seekTo = function (seconds) { video.currentTime = seconds; };\n"
    "    this.mute = function () { video.muted = true; };\n"
    "    this.unMute = function () { video.muted = false; };\n"
    "    this.setVolume = function (level) { video.volume = level / 100; };\n"
    "    video.addEventListener('loadedmetadata', function () {\n"
    "      options.events.onReady({ target: self });\n"
    "    }, { once: true });\n"
    "  }\n"
    "  setTimeout(function () {\n"
    "    window.YT = { PlayerState: { ENDED: 0, PLAYING: 1, PAUSED: 2 }, Player: Player };\n"
    "    window.onYouTubeIframeAPIReady();\n"
    "  }, delay);\n"
    "})();\n";

const QByteArray okVideoStandIn =
    "<!DOCTYPE html><html><body style='margin:0;background:#000'>"
    "<video src='/media.mp4' autoplay style='width:100%;height:100%'></video>"
    "</body></html>";

const QString videoStateScript =
    u"(function () { var v = document.querySelector('video');"
    " return v ? JSON.stringify({ paused: v.paused, time: v.currentTime, muted: v.muted,"
    " volume: v.volume }) : null; })()"_s;

// Runs a script in the page and waits for its value; invalid when the page gave none in time.
QVariant evaluate(QWebEnginePage *page, const QString &script)
{
    auto result = std::make_shared<std::optional<QVariant>>();
    page->runJavaScript(script, [result](const QVariant &value) { *result = value; });
    if (!QTest::qWaitFor([&] { return result->has_value(); }, 10000))
        return {};
    return result->value_or(QVariant());
}

QJsonObject videoState(QWebEnginePage *page)
{
    return QJsonDocument::fromJson(evaluate(page, videoStateScript).toString().toUtf8()).object();
}

bool isPlaying(QWebEnginePage *page)
{
    const QJsonObject state = videoState(page);
    return !state.isEmpty() && !state[u"paused"].toBool() && state[u"time"].toDouble() > 0.3;
}

std::optional<WebAddress> address(const QString &text)
{
    return WebAddress::fromText(text);
}

} // namespace

class tst_WebPlayers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const std::optional<QSslConfiguration> tls = testTlsConfiguration();
        QVERIFY2(tls, "openssl could not make a certificate for the local https server");
        m_server = std::make_unique<TestHttpServer>(tls);
        m_player.emplace();
        const TestHttpReply media = TestHttpReply::file(testMedia(u"long.mp4"_s), "video/mp4");
        QCOMPARE(media.status, 200);
        m_server->setHandler([media](const QByteArray &path) {
            if (path.startsWith("/iframe_api"))
                return TestHttpReply::of(200, "OK", youTubeStandIn, "text/javascript");
            if (path.startsWith("/videoembed/"))
                return TestHttpReply::of(200, "OK", okVideoStandIn, "text/html");
            if (path == "/media.mp4")
                return media;
            return TestHttpReply::of(200, "OK", "<p>another page</p>", "text/html");
        });
    }

    void youTubePageDeclaresTheContent_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("expectedVideo");    // empty: no videoId option
        QTest::addColumn<QString>("expectedPlaylist"); // empty: no list player variable

        QTest::newRow("video within playlist")
            << u"https://youtu.be/xyz?list=PL2"_s << u"xyz"_s << u"PL2"_s;
        QTest::newRow("quote and script end in the playlist")
            << u"https://www.youtube.com/playlist?list=a%22b%3C%2Fscript%3E%3Cscript%3Ewindow."
               u"injected%3D1%3C%2Fscript%3E"_s
            << QString() << u"a\"b</script><script>window.injected=1</script>"_s;
    }

    void youTubePageDeclaresTheContent()
    {
        QFETCH(QString, url);
        QFETCH(QString, expectedVideo);
        QFETCH(QString, expectedPlaylist);

        const auto view = showYouTube(youTube(url));
        QWebEnginePage *page = view->hostingView()->page();
        QTRY_VERIFY_WITH_TIMEOUT(isPlaying(page), 15000);

        const QJsonObject seen =
            QJsonDocument::fromJson(
                evaluate(page, u"JSON.stringify({ options: standInOptions, origin: location.origin,"
                               " injected: typeof window.injected })"_s)
                    .toString()
                    .toUtf8())
                .object();
        const QJsonObject options = seen[u"options"].toObject();
        const QJsonObject vars = options[u"playerVars"].toObject();
        QCOMPARE(seen[u"origin"].toString(), u"https://velmplayer.app"_s);
        QCOMPARE(vars[u"origin"].toString(), u"https://velmplayer.app"_s);
        QCOMPARE(seen[u"injected"].toString(), u"undefined"_s);
        QCOMPARE(options[u"videoId"].toString(), expectedVideo);
        QCOMPARE(options.contains(u"videoId"), !expectedVideo.isEmpty());
        QCOMPARE(vars[u"list"].toString(), expectedPlaylist);
        QCOMPARE(vars[u"listType"].toString(),
                 expectedPlaylist.isEmpty() ? QString() : u"playlist"_s);
        for (const QString &flag :
             {u"autoplay"_s, u"controls"_s, u"playsinline"_s, u"enablejsapi"_s})
            QCOMPARE(vars[flag].toInt(), 1);
        QCOMPARE(vars[u"rel"].toInt(-1), 0);
    }

    void modelCommandsChangeThePageVideo_data()
    {
        QTest::addColumn<QString>("address");
        // The model's actions, then what the page's video must show.
        QTest::addColumn<ModelAction>("act");
        QTest::addColumn<VideoCheck>("holds");
        const auto paused = [](const QJsonObject &v, double) { return v[u"paused"].toBool(); };
        const QList<std::pair<const char *, QString>> services{
            {"youtube", u"https://www.youtube.com/watch?v=abc"_s},
            {"okvideo", u"https://ok.ru/video/12345"_s}};
        for (const auto &[service, url] : services) {
            const auto row = [&](const char *name, ModelAction act, VideoCheck holds) {
                QTest::addRow("%s %s", service, name) << url << act << holds;
            };
            row(
                "toggle pauses", [](PlayerModel &m) { m.togglePlayback(); }, paused);
            row(
                "skip forward", [](PlayerModel &m) { m.skip(20); },
                [](const QJsonObject &v, double start) {
                    return v[u"time"].toDouble() >= start + 19.5;
                });
            row(
                "skip back stops at 0", [](PlayerModel &m) { m.skip(-1000); },
                [](const QJsonObject &v, double start) {
                    return v[u"time"].toDouble() >= 0 && v[u"time"].toDouble() < start;
                });
            row(
                "mute", [](PlayerModel &m) { m.toggleMute(); },
                [](const QJsonObject &v, double) { return v[u"muted"].toBool(); });
            row(
                "volume unmutes and sets the level",
                [](PlayerModel &m) {
                    m.toggleMute();
                    m.setVolume(0.35);
                },
                [](const QJsonObject &v, double) {
                    return !v[u"muted"].toBool() && qFuzzyCompare(v[u"volume"].toDouble(), 0.35);
                });
        }
    }

    void modelCommandsChangeThePageVideo()
    {
        QFETCH(QString, address);
        QFETCH(ModelAction, act);
        QFETCH(VideoCheck, holds);

        // A player of its own for each row, so no row inherits another's mute or volume.
        m_player.emplace();
        PlayerModel &model = m_player->model;
        model.openRemote(address, std::nullopt);
        QTRY_VERIFY(model.youtubeContent() || model.okVideoContent());
        std::unique_ptr<WebPlayerView> view;
        if (model.youtubeContent())
            view = showYouTube(*model.youtubeContent());
        else
            view = showOKVideo(model.okVideoContent()->videoID());
        QWebEnginePage *page = view->hostingView()->page();
        // Started 2 s in, so that a step back has room to land on 0 rather than near it.
        QTRY_VERIFY_WITH_TIMEOUT(isPlaying(page), 15000);
        evaluate(page, u"document.querySelector('video').currentTime = 2; true"_s);
        QTRY_VERIFY(videoState(page)[u"time"].toDouble() >= 2);
        const double start = videoState(page)[u"time"].toDouble();

        act(model);
        QTRY_VERIFY2_WITH_TIMEOUT(holds(videoState(page), start),
                                  QJsonDocument(videoState(page)).toJson(QJsonDocument::Compact),
                                  5000);
    }

    void toggleBeforeTheApiIsReadyDoesNothing()
    {
        const auto view =
            showYouTube(youTube(u"https://www.youtube.com/watch?v=abc"_s), u"?ready_after=1500"_s);
        QWebEnginePage *page = view->hostingView()->page();
        QTRY_COMPARE(evaluate(page, u"typeof velmToggle"_s).toString(), u"function"_s);
        QCOMPARE(evaluate(page, u"typeof YT"_s).toString(), u"undefined"_s);
        // Returns normally (a thrown error would give no value) and leaves nothing pending.
        QCOMPARE(evaluate(page, u"velmToggle(); 'returned'"_s).toString(), u"returned"_s);
        m_player->youtubePlayers.evaluate(u"velmToggle();"_s);
        QTRY_VERIFY_WITH_TIMEOUT(isPlaying(page), 15000);
    }

    void updateReloadsOnlyForNewContent()
    {
        const YouTubeContent video = youTube(u"https://www.youtube.com/watch?v=abc"_s);
        const auto youTubeView = showYouTube(video);
        const auto okView = showOKVideo(u"777"_s);
        QWebEnginePage *youTubePage = youTubeView->hostingView()->page();
        QWebEnginePage *okPage = okView->hostingView()->page();
        QTRY_VERIFY_WITH_TIMEOUT(isPlaying(youTubePage) && isPlaying(okPage), 15000);
        QSignalSpy youTubeLoads(youTubePage, &QWebEnginePage::loadStarted);
        QSignalSpy okLoads(okPage, &QWebEnginePage::loadStarted);

        youTubeView->setContent(video);
        okView->setContent(*OKVideoContent::fromUrl(*address(u"https://ok.ru/video/777"_s)));
        QTest::qWait(500);
        QCOMPARE(youTubeLoads.count(), 0);
        QCOMPARE(okLoads.count(), 0);
        QCOMPARE(m_server->requestCount("/videoembed/777?autoplay=1&nochat=1"), 1);
        // The embed is asked for with the page it is shown on as its referrer.
        const QByteArray referer =
            "\r\nReferer: https://127.0.0.1:" + QByteArray::number(m_server->port()) + "/\r\n";
        for (const QByteArray &request : m_server->requestHeads())
            if (request.startsWith("GET /videoembed/777"))
                QVERIFY2(request.contains(referer), request.constData());

        // The same video in a playlist is other content.
        youTubeView->setContent(youTube(u"https://www.youtube.com/watch?v=abc&list=PL9"_s));
        okView->setContent(*OKVideoContent::fromUrl(*address(u"https://ok.ru/video/778"_s)));
        QTRY_COMPARE(youTubeLoads.count(), 1);
        QTRY_COMPARE(okLoads.count(), 1);
        QTRY_COMPARE(evaluate(youTubePage, u"standInOptions.playerVars.list"_s).toString(),
                     u"PL9"_s);
        QTRY_COMPARE(m_server->requestCount("/videoembed/778?autoplay=1&nochat=1"), 1);
    }

    void dismantlingAnOldViewKeepsTheNewerOne_data()
    {
        QTest::addColumn<bool>("youtube");
        QTest::newRow("youtube") << true;
        QTest::newRow("okvideo") << false;
    }

    void dismantlingAnOldViewKeepsTheNewerOne()
    {
        QFETCH(bool, youtube);
        WebPlayerRegistry &registry =
            youtube ? static_cast<WebPlayerRegistry &>(m_player->youtubePlayers)
                    : m_player->okVideoPlayers;
        const auto make = [&]() -> std::unique_ptr<WebPlayerView> {
            if (youtube)
                return showYouTube(youTube(u"https://www.youtube.com/watch?v=abc"_s));
            return showOKVideo(u"12345"_s);
        };
        auto older = make();
        auto newer = make();
        QObject *newerView = newer->hostingView();
        QCOMPARE(registry.webView(), newerView);
        QCOMPARE(m_views.surfaces.view(), newerView);

        older.reset();
        QCOMPARE(registry.webView(), newerView);
        QCOMPARE(m_views.surfaces.view(), newerView);
        QCOMPARE(m_views.surfaces.surface()->recordingView(), newerView);

        newer.reset();
        QCOMPARE(registry.webView(), nullptr);
        QCOMPARE(m_views.surfaces.surface(), nullptr);
    }

    void pageStaysContained()
    {
        const auto view = showYouTube(youTube(u"https://www.youtube.com/watch?v=abc"_s));
        YouTubeHostingView *host = view->hostingView();
        QWebEnginePage *page = host->page();
        QTRY_VERIFY_WITH_TIMEOUT(isPlaying(page), 15000);
        const QUrl pageURL = page->url();
        const qsizetype windows = QApplication::topLevelWidgets().size();

        // No pop-ups, and the top frame cannot leave for another site.
        QCOMPARE(evaluate(page, u"String(window.open('%1'))"_s.arg(m_server->url(u"/popup"_s)))
                     .toString(),
                 u"null"_s);
        evaluate(page, u"location.href = '%1'; true"_s.arg(m_server->url(u"/elsewhere"_s)));
        // Local files stay out of reach, and permission requests are refused.
        QTemporaryDir dir;
        const QString secret = dir.filePath(u"secret.txt"_s);
        QFile file(secret);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("secret") == 6);
        file.close();
        evaluate(page, u"fetch('file://%1').then(function (r) { return r.text(); })"
                       ".then(function (t) { window.fileRead = t; },"
                       " function () { window.fileRead = 'refused'; }); true"_s.arg(secret));
        evaluate(page, u"Notification.requestPermission().then(function (answer) {"
                       " window.permission = answer; }); true"_s);
        QTRY_COMPARE(evaluate(page, u"window.fileRead"_s).toString(), u"refused"_s);
        QTRY_COMPARE(evaluate(page, u"window.permission"_s).toString(), u"denied"_s);
        QTest::qWait(500);
        QCOMPARE(m_server->requestCount("/popup"), 0);
        QCOMPARE(m_server->requestCount("/elsewhere"), 0);
        QCOMPARE(page->url(), pageURL);
        QCOMPARE(QApplication::topLevelWidgets().size(), windows);

        // A press is announced with the window and still reaches the page.
        evaluate(page, u"window.presses = 0; document.addEventListener('mousedown',"
                       " function () { window.presses++; }); true"_s);
        QSignalSpy clicked(&m_views.notifier, &AppNotifier::playerSurfaceClicked);
        QWidget *target = host->focusProxy() ? host->focusProxy() : host;
        QTest::mouseClick(target, Qt::LeftButton, {}, target->rect().center());
        QCOMPARE(clicked.count(), 1);
        QCOMPARE(clicked.first().first().value<QObject *>(), host->window()->windowHandle());
        QTRY_COMPARE(evaluate(page, u"window.presses"_s).toInt(), 1);
    }

    void crashedPageShowsMessageAndNextContentLoadsFresh()
    {
        const YouTubeContent content = youTube(u"https://www.youtube.com/watch?v=abc"_s);
        const auto view = showYouTube(content);
        YouTubeHostingView *host = view->hostingView();
        QWebEnginePage *crashed = host->page();
        QTRY_VERIFY_WITH_TIMEOUT(isPlaying(crashed), 15000);
        QVERIFY(host->failureMessage().isEmpty());

        QVERIFY(crashed->renderProcessPid() > 0);
        QCOMPARE(::kill(pid_t(crashed->renderProcessPid()), SIGKILL), 0);
        QTRY_COMPARE(host->failureMessage(), WebPlayerTexts::pageStopped.toString());
        QCOMPARE(view->loadedContentID(), std::nullopt);

        // Opening the same video again brings it back in a page of its own.
        view->setContent(content);
        QVERIFY(host->page() != crashed);
        QVERIFY(host->failureMessage().isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(isPlaying(host->page()), 15000);
    }

private:
    WebPlayerEndpoints endpoints(const QString &apiQuery = {}) const;
    YouTubeContent youTube(const QString &url) const;
    std::unique_ptr<YouTubePlayerView> showYouTube(const YouTubeContent &content,
                                                   const QString &apiQuery = {});
    std::unique_ptr<OKVideoPlayerView> showOKVideo(const QString &videoID);

    std::unique_ptr<TestHttpServer> m_server;
    TestViews m_views;
    std::optional<TestPlayer> m_player;
};

WebPlayerEndpoints tst_WebPlayers::endpoints(const QString &apiQuery) const
{
    return {u"https://velmplayer.app"_s, m_server->url(u"/iframe_api"_s + apiQuery),
            u"127.0.0.1:%1"_s.arg(m_server->port())};
}

YouTubeContent tst_WebPlayers::youTube(const QString &url) const
{
    return *YouTubeContent::fromUrl(*address(url));
}

std::unique_ptr<YouTubePlayerView> tst_WebPlayers::showYouTube(const YouTubeContent &content,
                                                               const QString &apiQuery)
{
    auto view = std::make_unique<YouTubePlayerView>(
        content, m_views.services(*m_player, endpoints(apiQuery)));
    view->resize(320, 180);
    view->show();
    return view;
}

std::unique_ptr<OKVideoPlayerView> tst_WebPlayers::showOKVideo(const QString &videoID)
{
    const auto content = OKVideoContent::fromUrl(*address(u"https://ok.ru/video/"_s + videoID));
    auto view =
        std::make_unique<OKVideoPlayerView>(*content, m_views.services(*m_player, endpoints()));
    view->resize(320, 180);
    view->show();
    return view;
}

int main(int argc, char **argv)
{
    // The stand-in services answer with a certificate made for this run.
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS", "--ignore-certificate-errors");
    QApplication application(argc, argv);
    tst_WebPlayers test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_WebPlayers.moc"
