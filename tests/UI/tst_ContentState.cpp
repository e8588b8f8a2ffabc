// The main window's state against a real headless player and a local HTTP server: times without
// hours, the address field's cleaning and automatic opening, and where a published list goes.

#include "Player/PlayerModel.h"
#include "Playlist/ChannelListModel.h"
#include "TestHome.h"
#include "TestHttpServer.h"
#include "TestPlayer.h"
#include "UI/ContentState.h"
#include "UI/LocalM3UActions.h"
#include "UI/PlayerTimeText.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

class tst_ContentState : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void timesHaveNoHours_data();
    void timesHaveNoHours();
    void addressIsCleaned_data();
    void addressIsCleaned();
    void httpAddressOpensAfterCalm();
    void otherSchemesNeverOpenByThemselves_data();
    void otherSchemesNeverOpenByThemselves();
    void emptyingTheAddressForgetsTheNetworkSource();
    void publishedPlaylistGoesToThePanelShown_data();
    void publishedPlaylistGoesToThePanelShown();

private:
    std::unique_ptr<TestHttpServer> m_server;
    std::unique_ptr<TestPlayer> m_player;
    PlayerModel *m_model = nullptr;
    std::unique_ptr<LocalM3UStore> m_store;
    std::unique_ptr<LocalM3UActions> m_localM3U;
    std::unique_ptr<ContentState> m_state;
};

void tst_ContentState::initTestCase()
{
    useTemporaryHome();
    m_server = std::make_unique<TestHttpServer>();
    m_server->route("/list.m3u",
                    TestHttpReply::of(200, "OK", "#EXTM3U\n#EXTINF:-1,One\nhttp://a/1.m3u8\n",
                                      "audio/x-mpegurl"));
}

void tst_ContentState::init()
{
    m_player = std::make_unique<TestPlayer>();
    m_model = &m_player->model;
    m_store = std::make_unique<LocalM3UStore>();
    m_store->removeAll();
    m_localM3U = std::make_unique<LocalM3UActions>(*m_model, *m_store);
    m_state = std::make_unique<ContentState>(*m_model, *m_localM3U);
}

void tst_ContentState::cleanup()
{
    m_state.reset();
    m_localM3U.reset();
    m_store.reset();
    m_player.reset();
}

void tst_ContentState::timesHaveNoHours_data()
{
    QTest::addColumn<double>("duration");
    QTest::addColumn<double>("position");
    QTest::addColumn<QString>("current");
    QTest::addColumn<QString>("remaining");
    const double nan = std::numeric_limits<double>::quiet_NaN();
    QTest::newRow("unknown duration") << 0.0 << 0.0 << u"00:00"_qs << u"00:00"_qs;
    QTest::newRow("a fraction is cut") << 120.0 << 59.9 << u"00:59"_qs << u"01:00"_qs;
    QTest::newRow("an hour is sixty minutes") << 4503.0 << 3600.0 << u"60:00"_qs << u"15:03"_qs;
    QTest::newRow("live past its duration") << 10.0 << 25.0 << u"00:25"_qs << u"00:00"_qs;
    QTest::newRow("not a number") << nan << nan << u"00:00"_qs << u"00:00"_qs;
}

void tst_ContentState::timesHaveNoHours()
{
    QFETCH(double, duration);
    QFETCH(double, position);
    QFETCH(QString, current);
    QFETCH(QString, remaining);
    QCOMPARE(PlayerTimeText::time(position), current);
    QCOMPARE(PlayerTimeText::remaining(duration, position), remaining);
}

void tst_ContentState::addressIsCleaned_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("kept");
    QTest::newRow("trailing line break")
        << u"https://a.example/x.m3u8\r\n"_qs << u"https://a.example/x.m3u8"_qs;
    QTest::newRow("spaces and tabs around")
        << u" \thttps://a.example/x \t"_qs << u"https://a.example/x"_qs;
    QTest::newRow("a break inside joins the halves")
        << u"https://a.exam\nple/x"_qs << u"https://a.example/x"_qs;
    QTest::newRow("inner spaces stay") << u"a b"_qs << u"a b"_qs;
}

void tst_ContentState::addressIsCleaned()
{
    QFETCH(QString, typed);
    QFETCH(QString, kept);
    m_state->setAddress(typed);
    QCOMPARE(m_state->address(), kept);
}

void tst_ContentState::httpAddressOpensAfterCalm()
{
    m_state->setAddress(m_server->url(u"/list.m3"_qs));
    QTest::qWait(300);
    QElapsedTimer sinceLastKey;
    sinceLastKey.start();
    m_state->setAddress(m_server->url(u"/list.m3u"_qs));
    // The first address's wait was cancelled: it is never requested, and the second opens a
    // full 0.45 s after the last keystroke.
    QTRY_COMPARE(m_model->playlist().size(), 1);
    QVERIFY(sinceLastKey.elapsed() >= 450);
    QCOMPARE(m_server->requestCount("/list.m3u"), 1);
    QCOMPARE(m_server->requestCount("/list.m3"), 0);
}

void tst_ContentState::otherSchemesNeverOpenByThemselves_data()
{
    QTest::addColumn<QString>("address");
    QTest::newRow("rtmp") << u"rtmp://127.0.0.1/live/stream"_qs;
    QTest::newRow("file") << u"file:///tmp/list.m3u"_qs;
    QTest::newRow("not an address") << u"just words"_qs;
}

void tst_ContentState::otherSchemesNeverOpenByThemselves()
{
    QFETCH(QString, address);
    QSignalSpy loading(m_model, &PlayerModel::isLoadingChanged);
    QSignalSpy errors(m_model, &PlayerModel::errorMessageChanged);
    m_state->setAddress(address);
    QTest::qWait(900);
    QCOMPARE(loading.count(), 0);
    QCOMPARE(errors.count(), 0);
    // Play does open it, and the model explains why it cannot.
    m_state->openStream();
    QTRY_VERIFY(m_model->errorMessage().has_value());
}

void tst_ContentState::emptyingTheAddressForgetsTheNetworkSource()
{
    m_state->setAddress(m_server->url(u"/stream.m3u8"_qs));
    m_state->openStream();
    QTRY_VERIFY(m_model->lastPlayableSource().has_value());
    m_state->setAddress(QString());
    QVERIFY(!m_model->lastPlayableSource().has_value());
}

QTEST_GUILESS_MAIN(tst_ContentState)
#include "tst_ContentState.moc"

void tst_ContentState::publishedPlaylistGoesToThePanelShown_data()
{
    QTest::addColumn<std::optional<PlayerSidebarSection>>("section");
    QTest::addColumn<int>("networkRows");
    QTest::addColumn<int>("savedLinks");
    QTest::newRow("network panel") << std::optional(PlayerSidebarSection::network) << 1 << 0;
    QTest::newRow("saved links") << std::optional(PlayerSidebarSection::localM3U) << 0 << 1;
    QTest::newRow("no panel") << std::optional<PlayerSidebarSection>() << 0 << 0;
}

void tst_ContentState::publishedPlaylistGoesToThePanelShown()
{
    QFETCH(std::optional<PlayerSidebarSection>, section);
    QFETCH(int, networkRows);
    QFETCH(int, savedLinks);
    m_state->setSelectedSidebarSection(section);
    QSignalSpy published(m_model, &PlayerModel::playlistChanged);
    m_model->openRemote(m_server->url(u"/list.m3u"_qs), std::nullopt);
    QTRY_COMPARE(published.size(), 1);
    QCOMPARE(m_state->networkChannels().filteredCount(), networkRows);
    QCOMPARE(m_store->entries().size(), savedLinks);
    QCOMPARE(m_state->localLinks().filteredCount(), savedLinks);
}
