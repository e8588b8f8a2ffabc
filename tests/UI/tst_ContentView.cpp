// The main window as a user drives it, under Xvfb: its state (times, the address field's cleaning
// and automatic opening, where a published list goes) and its content, with a real player playing
// generated media, playlists and logos from a local HTTP server, the real file dialogs and alerts
// answered by the test, and saved links in a temporary home.

#include "Base/SymbolIcons.h"
#include "NumberedPlaylist.h"
#include "Player/PlayerModel.h"
#include "Player/PlayerTexts.h"
#include "Player/ProgrammeGuide.h"
#include "Playlist/ChannelListModel.h"
#include "Playlist/GuideCache.h"
#include "Playlist/PlaylistTexts.h"
#include "Playlist/SavedLinksFile.h"
#include "Surface/PlayerSurface.h"
#include "TestData.h"
#include "TestHome.h"
#include "TestHttpServer.h"
#include "TestMedia.h"
#include "TestViews.h"
#include "UI/AddressField.h"
#include "UI/ChannelFilterBar.h"
#include "UI/ChannelListView.h"
#include "UI/ChannelLogoLoader.h"
#include "UI/ChannelRowDelegate.h"
#include "UI/ContentState.h"
#include "UI/ContentView.h"
#include "UI/DialogLocalM3UPrompts.h"
#include "UI/DialogMediaFileChooser.h"
#include "UI/GuideDayDialog.h"
#include "UI/GuideNowNextView.h"
#include "UI/GuideTimeText.h"
#include "UI/LinkEditorDialog.h"
#include "UI/LocalM3UActions.h"
#include "UI/LocalM3UPanel.h"
#include "UI/NetworkPanel.h"
#include "UI/PlaybackFailureNotice.h"
#include "UI/PlayerArea.h"
#include "UI/PlayerControlBar.h"
#include "UI/PlayerTimeText.h"
#include "UI/SidebarView.h"
#include "UI/TitleBarHandler.h"
#include "UI/WindowTexts.h"

#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>
#include <QTimer>
#include <QToolButton>
#include <QWindow>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(TestHttpReply)

namespace {

QByteArray pngOf(QSize size, QColor color)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

// Answers the next file dialog the application opens (they run their own event loop).
void answerFileDialog(const QString &path)
{
    auto *poll = new QTimer;
    QObject::connect(poll, &QTimer::timeout, poll, [poll, path] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        // Typed into the name field, as a user would.
        dialog->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(path);
        // As Open or Save does once the name is typed; the dialog's own checks are not ours.
        static_cast<QDialog *>(dialog)->done(QDialog::Accepted);
        poll->deleteLater();
    });
    poll->start(50);
}

QPushButton *alertButton(QWidget *sheet, QStringView text)
{
    auto *alert = qobject_cast<QMessageBox *>(sheet);
    if (!alert)
        return nullptr;
    for (QAbstractButton *button : alert->buttons())
        if (button->text() == text)
            return qobject_cast<QPushButton *>(button);
    return nullptr;
}

QAction *actionNamed(QMenu *menu, QStringView text)
{
    for (QAction *action : menu->actions())
        if (action->text() == text)
            return action;
    return nullptr;
}

QByteArray xmltvTime(qint64 msecsSinceEpoch)
{
    return QDateTime::fromMSecsSinceEpoch(msecsSinceEpoch, QTimeZone::utc())
               .toString(u"yyyyMMddHHmmss"_s)
               .toLatin1() +
           " +0000";
}

// Two programmes on the Tagesschau channel, the first ending at the boundary.
QByteArray guideAround(qint64 boundary)
{
    const qint64 hour = 3600'000;
    const auto programme = [](qint64 start, qint64 stop, const QByteArray &inner) {
        return "<programme start=\"" + xmltvTime(start) + "\" stop=\"" + xmltvTime(stop) +
               "\" channel=\"tagesschau.de\">" + inner + "</programme>\n";
    };
    return "<?xml version=\"1.0\"?>\n<tv><channel id=\"tagesschau.de\"><display-name>Das "
           "Erste</display-name></channel>\n" +
           programme(boundary - hour, boundary, "<title>Early News</title>") +
           programme(boundary, boundary + hour,
                     "<title>Late News</title><sub-title>Weather</sub-title>") +
           "</tv>\n";
}

// Counts the times a widget is hidden.
class HideCounter : public QObject
{
public:
    explicit HideCounter(QWidget *widget) { widget->installEventFilter(this); }
    int hides = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        hides += event->type() == QEvent::Hide;
        return false;
    }
};

QToolButton *buttonWithHelp(QWidget *parent, QStringView help)
{
    for (QToolButton *button : parent->findChildren<QToolButton *>())
        if (button->toolTip() == help)
            return button;
    return nullptr;
}

} // namespace

class tst_ContentView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        useTemporaryHome();
        m_playlistURL = m_server.url(u"/list.m3u"_s);
        const QByteArray logo = m_server.url(u"/logo.png"_s).toUtf8();
        const QByteArray missing = m_server.url(u"/missing.png"_s).toUtf8();
        m_server.route(
            "/list.m3u",
            TestHttpReply::of(200, "OK",
                              "#EXTM3U\n#EXTINF:-1 tvg-logo=\"" + logo +
                                  "\" tvg-country=\"DE\" group-title=\"News\",Tagesschau\n"
                                  "http://127.0.0.1:9/tagesschau.m3u8\n"
                                  "#EXTINF:-1 tvg-logo=\"" +
                                  missing +
                                  "\" tvg-country=\"FR\" group-title=\"Sport\",Sport Plus\n"
                                  "http://127.0.0.1:9/sport.m3u8\n"
                                  "#EXTINF:-1 group-title=\"Sport\",Arena\n"
                                  "http://127.0.0.1:9/arena.m3u8\n",
                              "audio/x-mpegurl"));
        // Answers that take a moment, so that the window can be seen while they load.
        constexpr std::chrono::milliseconds answerDelay{300};
        TestHttpReply shortList =
            TestHttpReply::of(200, "OK", numberedPlaylist(3), "audio/x-mpegurl");
        shortList.delay = answerDelay;
        m_server.route("/slow-short.m3u", shortList);
        TestHttpReply longList = TestHttpReply::of(
            200, "OK", numberedPlaylist(ChannelListModel::synchronousLimit + 5'000),
            "audio/x-mpegurl");
        longList.delay = answerDelay;
        m_server.route("/slow-long.m3u", longList);
        TestHttpReply absent = TestHttpReply::of(404, "Not Found", "no such list");
        absent.delay = answerDelay;
        m_server.route("/slow-missing.m3u", absent);
        m_server.route("/logo.png",
                       TestHttpReply::of(200, "OK", pngOf({128, 64}, Qt::red), "image/png"));
    }

    void init()
    {
        m_views = std::make_unique<TestViews>();
        m_player = std::make_unique<TestPlayer>(MpvEngine::Output::render);
        m_model = &m_player->model;
        QDir(SavedLinksFile::defaultFolder()).removeRecursively();
        QDir(GuideCache::defaultFolder()).removeRecursively();
        m_store = std::make_unique<LocalM3UStore>();
        m_store->removeAll();
        m_actions = std::make_unique<LocalM3UActions>(*m_model, *m_store);
        m_view = std::make_unique<ContentView>(*m_model, *m_actions, m_views->services(*m_player));
        m_chooser = std::make_unique<DialogMediaFileChooser>(m_view.get());
        m_prompts = std::make_unique<DialogLocalM3UPrompts>(m_view.get());
        m_model->setFileChooser(m_chooser.get());
        m_actions->setPrompts(m_prompts.get());
        m_view->resize(1000, 600);
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    }

    void cleanup()
    {
        m_view.reset();
        m_actions.reset();
        m_prompts.reset();
        m_chooser.reset();
        m_store.reset();
        m_player.reset();
        m_views.reset();
    }

    void timesHaveNoHours_data()
    {
        QTest::addColumn<double>("duration");
        QTest::addColumn<double>("position");
        QTest::addColumn<QString>("current");
        QTest::addColumn<QString>("remaining");
        const double nan = std::numeric_limits<double>::quiet_NaN();
        QTest::newRow("unknown duration") << 0.0 << 0.0 << u"00:00"_s << u"00:00"_s;
        QTest::newRow("a fraction is cut") << 120.0 << 59.9 << u"00:59"_s << u"01:00"_s;
        QTest::newRow("an hour is sixty minutes") << 4503.0 << 3600.0 << u"60:00"_s << u"15:03"_s;
        QTest::newRow("live past its duration") << 10.0 << 25.0 << u"00:25"_s << u"00:00"_s;
        QTest::newRow("not a number") << nan << nan << u"00:00"_s << u"00:00"_s;
    }

    void timesHaveNoHours()
    {
        QFETCH(double, duration);
        QFETCH(double, position);
        QFETCH(QString, current);
        QFETCH(QString, remaining);
        QCOMPARE(PlayerTimeText::time(position), current);
        QCOMPARE(PlayerTimeText::remaining(duration, position), remaining);
    }

    void addressIsCleaned_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("kept");
        QTest::newRow("trailing line break")
            << u"https://a.example/x.m3u8\r\n"_s << u"https://a.example/x.m3u8"_s;
        QTest::newRow("spaces and tabs around")
            << u" \thttps://a.example/x \t"_s << u"https://a.example/x"_s;
        QTest::newRow("a break inside joins the halves")
            << u"https://a.exam\nple/x"_s << u"https://a.example/x"_s;
        QTest::newRow("inner spaces stay") << u"a b"_s << u"a b"_s;
    }

    void addressIsCleaned()
    {
        QFETCH(QString, typed);
        QFETCH(QString, kept);
        state().setAddress(typed);
        QCOMPARE(state().address(), kept);
    }

    void httpAddressOpensAfterCalm()
    {
        state().setAddress(m_server.url(u"/list.m3"_s));
        QTest::qWait(300);
        QElapsedTimer sinceLastKey;
        sinceLastKey.start();
        state().setAddress(m_server.url(u"/list.m3u"_s));
        // The first address's wait was cancelled: it is never requested, and the second opens a
        // full 0.45 s after the last keystroke.
        QTRY_COMPARE(m_model->playlist().size(), 3);
        QVERIFY(sinceLastKey.elapsed() >= 450);
        QCOMPARE(m_server.requestCount("/list.m3u"), 1);
        QCOMPARE(m_server.requestCount("/list.m3"), 0);
    }

    void otherSchemesNeverOpenByThemselves_data()
    {
        QTest::addColumn<QString>("address");
        QTest::newRow("rtmp") << u"rtmp://127.0.0.1/live/stream"_s;
        QTest::newRow("file") << u"file:///tmp/list.m3u"_s;
        QTest::newRow("not an address") << u"just words"_s;
    }

    void otherSchemesNeverOpenByThemselves()
    {
        QFETCH(QString, address);
        QSignalSpy loading(m_model, &PlayerModel::isLoadingChanged);
        QSignalSpy errors(m_model, &PlayerModel::errorMessageChanged);
        state().setAddress(address);
        QTest::qWait(900);
        QCOMPARE(loading.count(), 0);
        QCOMPARE(errors.count(), 0);
        // Play does open it, and the model explains why it cannot.
        state().openStream();
        QTRY_VERIFY(m_model->errorMessage().has_value());
    }

    void emptyingTheAddressForgetsTheNetworkSource()
    {
        state().setAddress(m_server.url(u"/stream.m3u8"_s));
        state().openStream();
        QTRY_VERIFY(m_model->lastPlayableSource().has_value());
        state().setAddress(QString());
        QVERIFY(!m_model->lastPlayableSource().has_value());
    }

    void publishedPlaylistGoesToThePanelShown_data()
    {
        QTest::addColumn<std::optional<PlayerSidebarSection>>("section");
        QTest::addColumn<int>("networkRows");
        QTest::addColumn<int>("savedLinks");
        QTest::newRow("network panel") << std::optional(PlayerSidebarSection::network) << 3 << 0;
        QTest::newRow("saved links") << std::optional(PlayerSidebarSection::localM3U) << 0 << 3;
        QTest::newRow("no panel") << std::optional<PlayerSidebarSection>() << 0 << 0;
    }

    void publishedPlaylistGoesToThePanelShown()
    {
        QFETCH(std::optional<PlayerSidebarSection>, section);
        QFETCH(int, networkRows);
        QFETCH(int, savedLinks);
        state().setSelectedSidebarSection(section);
        QSignalSpy published(m_model, &PlayerModel::playlistChanged);
        m_model->openRemote(m_server.url(u"/list.m3u"_s), std::nullopt);
        QTRY_COMPARE(published.size(), 1);
        QCOMPARE(state().networkChannels().filteredCount(), networkRows);
        QCOMPARE(m_store->entries().size(), savedLinks);
        QCOMPARE(state().localLinks().filteredCount(), savedLinks);
    }

    void channelSectionStaysWhileAPlaylistLoads_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("channels"); // listed in the end; none when the load fails
        QTest::newRow("a short list") << u"/slow-short.m3u"_s << 3;
        QTest::newRow("a list indexed beside the window")
            << u"/slow-long.m3u"_s << int(ChannelListModel::synchronousLimit + 5'000);
        QTest::newRow("a load that fails") << u"/slow-missing.m3u"_s << 0;
    }

    // The channel section shows as a playlist starts to load, and is not hidden again until the
    // list has come (a section shown again lays out its long list in the same step) or the load
    // has failed.
    void channelSectionStaysWhileAPlaylistLoads()
    {
        QFETCH(QString, path);
        QFETCH(int, channels);
        ChannelListView *list = network()->channelList();
        QVERIFY(!list->isVisible());
        HideCounter counter(list);
        m_model->openRemote(m_server.url(path), std::nullopt);
        QVERIFY(m_model->isLoading());
        QVERIFY(list->isVisible());
        const QString header = WindowTexts::channelsHeader.toString();
        QCOMPARE(network()->channelsHeader()->text(), header + u"0"_s);

        QTRY_VERIFY(!m_model->isLoading());
        if (channels == 0) {
            QVERIFY(m_model->errorMessage().has_value());
            QVERIFY(!list->isVisible());
            return;
        }
        QTRY_COMPARE(network()->channelsHeader()->text(), header + QString::number(channels));
        QVERIFY(list->isVisible());
        QCOMPARE(counter.hides, 0);
        // Every channel can be scrolled to, its row whole beside the scroll bar a long list has
        // (the list may still be laid out as it shows).
        const QModelIndex last = list->model()->index(channels - 1, 0);
        QTRY_VERIFY(
            (list->scrollTo(last), list->indexAt(list->visualRect(last).center()) == last &&
                                       list->viewport()->rect().contains(list->visualRect(last))));
    }

    void pastedAddressListsChannelsThatFiltersNarrow()
    {
        AddressField *field = network()->addressField();
        QVERIFY(!network()->channelList()->isVisible());
        field->setFocus();
        QApplication::clipboard()->setText(u"  "_s + m_playlistURL + u"\r\n"_s);
        field->paste();
        QCOMPARE(field->text(), m_playlistURL);
        QCOMPARE(state().address(), m_playlistURL);
        const QString header = WindowTexts::channelsHeader.toString();
        QTRY_COMPARE(network()->channelsHeader()->text(), header + u"3"_s);
        QVERIFY(network()->channelList()->isVisible());

        ChannelFilterBar *filters = network()->filters();
        QTest::keyClicks(filters->searchField(), u"sport"_s);
        QTRY_COMPARE(network()->channelsHeader()->text(), header + u"2"_s);
        // The country menu offers the countries of the list, by name, and narrows to one.
        QMenu *countries = filters->countryButton()->menu();
        Q_EMIT countries->aboutToShow();
        QVERIFY(actionNamed(countries, u"Germany"));
        actionNamed(countries, u"France")->trigger();
        QTRY_COMPARE(network()->channelsHeader()->text(), header + u"1"_s);
        QCOMPARE(filters->countryButton()->text(), u"France"_s);
        Q_EMIT countries->aboutToShow();
        QVERIFY(actionNamed(countries, u"France")->isChecked());
        actionNamed(countries, WindowTexts::countries)->trigger();
        QTRY_COMPARE(network()->channelsHeader()->text(), header + u"2"_s);
        QCOMPARE(filters->countryButton()->text(), WindowTexts::countries.toString());
    }

    void channelRowsPlaySaveAndShowLogos()
    {
        loadPlaylist();
        ChannelListView *list = network()->channelList();
        const PlaylistEntry tagesschau = state().networkChannels().entryAt(0);
        const PlaylistEntry sport = state().networkChannels().entryAt(1);
        QCOMPARE(list->rowDelegate()->helpText(ChannelRowAction::play, tagesschau),
                 u"Play Tagesschau"_s);
        QCOMPARE(list->rowDelegate()->helpText(ChannelRowAction::save, tagesschau),
                 WindowTexts::saveToLocal.toString());

        clickRowAction(list, 0, ChannelRowAction::save);
        QVERIFY(m_store->contains(tagesschau.url));
        QCOMPARE(list->rowDelegate()->helpText(ChannelRowAction::save, tagesschau),
                 WindowTexts::savedToLocal.toString());
        QLabel *toast = m_view->playerArea()->toastLabel();
        QTRY_VERIFY(toast->isVisible());
        QCOMPARE(toast->text(), u"Saved to Local M3U: Tagesschau"_s);

        clickRowAction(list, 1, ChannelRowAction::play);
        QCOMPARE(m_model->currentURL(), std::optional(sport.url));
        QCOMPARE(m_model->title(), u"Sport Plus"_s);

        // A logo arrives at row size, a missing one fails for good, and a loader of a later launch
        // finds the first on disk without the network.
        ChannelLogoLoader loader;
        QTRY_VERIFY(!loader.logo(*tagesschau.logoURL).isNull());
        QTRY_VERIFY((loader.logo(*sport.logoURL), loader.hasFailed(*sport.logoURL)));
        QCOMPARE(loader.logo(*tagesschau.logoURL).size(), QSize(64, 32));
        QVERIFY(m_server.requestCount("/logo.png") >= 1);
        const int fetched = m_server.requestCount("/logo.png");
        ChannelLogoLoader nextLaunch;
        QTRY_VERIFY(!nextLaunch.logo(*tagesschau.logoURL).isNull());
        QCOMPARE(nextLaunch.networkFetches(), 0);
        QCOMPARE(m_server.requestCount("/logo.png"), fetched);
    }

    void logosReadOnlyWhatTheyMay()
    {
        // A device without end, a pipe nobody writes to and a body without end all fail, soon and
        // without growing: none is a logo.
        QTemporaryDir folder;
        const QString pipe = folder.filePath(u"logo.png"_s);
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        TestHttpReply endless;
        endless.endlessLength = qint64(4) << 30;
        endless.announceLength = false;
        m_server.route("/endless.png", endless);
        const QList<WebAddress> refused{WebAddress::fromLocalFile(u"/dev/zero"_s),
                                        WebAddress::fromLocalFile(pipe),
                                        *WebAddress::fromText(m_server.url(u"/endless.png"_s))};
        ChannelLogoLoader loader;
        for (const WebAddress &each : refused)
            loader.logo(each);
        for (const WebAddress &each : refused)
            QTRY_VERIFY2_WITH_TIMEOUT(loader.hasFailed(each), qPrintable(each.text()), 20000);
    }

    void failedPlaybackShowsADismissibleNotice()
    {
        PlaybackFailureNotice *notice = m_view->playerArea()->failureNotice();
        QVERIFY(!notice->isVisible());
        m_model->play(WebAddress::fromLocalFile(testMedia(u"text.mp4"_s)), std::nullopt, false);
        QTRY_VERIFY(notice->isVisible());
        QVERIFY(notice->text().startsWith(u"Could not play \u201Ctext.mp4\u201D: "_s));
        QVERIFY(m_view->playerArea()->rect().contains(notice->geometry()));
        QTest::mouseClick(notice->dismissButton(), Qt::LeftButton);
        QVERIFY(!notice->isVisible());
        QVERIFY(!m_model->playbackFailure());
    }

    void linkEditorRefusesThenSavesAndEdits()
    {
        QTest::mouseClick(m_view->sidebar()->sectionButton(1), Qt::LeftButton);
        QCOMPARE(m_view->sidebar()->currentPanel(), local());
        QVERIFY(local()->emptyText()->isVisible());
        QCOMPARE(local()->fileButton()->text(), WindowTexts::chooseM3UFile.toString());

        QTest::mouseClick(local()->addButton(), Qt::LeftButton);
        auto *editor = qobject_cast<LinkEditorDialog *>(m_view->openSheet());
        QVERIFY(editor && editor->isVisible());
        const QString needsName = WindowTexts::nameRequired.toString();
        const QString needsURL = WindowTexts::validURLRequired.toString();
        for (const auto &[name, url, refusal] : {
                 std::tuple{u"  "_s, u"https://tv.example/a.m3u8"_s, needsName},
                 std::tuple{u"News"_s, u"ftp://tv.example/a.m3u8"_s, needsURL},
                 std::tuple{u"News"_s, u"news channel"_s, needsURL},
                 std::tuple{u"News"_s, u"https:a.m3u8"_s, needsURL}, // a scheme without a host
             }) {
            editor->nameField()->setText(name);
            editor->urlField()->setText(url);
            QTest::mouseClick(editor->saveButton(), Qt::LeftButton);
            QCOMPARE(editor->refusal(), refusal);
            QVERIFY(editor->isVisible());
        }
        QVERIFY(m_store->entries().isEmpty());

        editor->nameField()->setText(u" News "_s);
        editor->urlField()->setText(u"https://tv.example/news.m3u8"_s);
        editor->countryField()->setText(u" de "_s);
        editor->logoField()->setText(u"/srv/logos/news.png"_s);
        QTest::mouseClick(editor->removeLogoButton(), Qt::LeftButton);
        QTest::mouseClick(editor->saveButton(), Qt::LeftButton);
        QTRY_VERIFY(!m_view->openSheet());
        QCOMPARE(m_store->entries().size(), 1);
        const PlaylistEntry saved = m_store->entries().constFirst();
        QCOMPARE(saved.name, u"News"_s);
        QCOMPARE(saved.countryCode, std::optional(u"DE"_s));
        QCOMPARE(saved.groupTitle, std::nullopt);
        QCOMPARE(saved.logoURL, std::nullopt);
        QCOMPARE(local()->fileButton()->text(), WindowTexts::changeM3UFile.toString());
        QVERIFY(!local()->emptyText()->isVisible());

        QTRY_COMPARE(state().localLinks().filteredCount(), 1);
        clickRowAction(local()->linkList(), 0, ChannelRowAction::edit);
        editor = qobject_cast<LinkEditorDialog *>(m_view->openSheet());
        QVERIFY(editor);
        QCOMPARE(editor->urlField()->text(), u"https://tv.example/news.m3u8"_s);
        editor->nameField()->setText(u"News HD"_s);
        editor->categoryField()->setText(u"News"_s);
        QTest::mouseClick(editor->saveButton(), Qt::LeftButton);
        const PlaylistEntry edited = m_store->entries().constFirst();
        QCOMPARE(edited.id, saved.id);
        QCOMPARE(edited.name, u"News HD"_s);
        QCOMPARE(edited.groupTitle, std::optional(u"News"_s));
    }

    void deletingAsksFirst()
    {
        state().setSelectedSidebarSection(PlayerSidebarSection::localM3U);
        m_actions->addLink(
            {u"Arena"_s, *WebAddress::fromText(u"https://tv.example/arena.m3u8"), {}, {}, {}});
        m_actions->addLink(
            {u""_s, *WebAddress::fromText(u"https://tv.example/x.m3u8"), {}, {}, {}});
        QTRY_COMPARE(state().localLinks().filteredCount(), 2);
        // The unnamed link took the address's file name; the alert names the link as it is saved.
        clickRowAction(local()->linkList(), 1, ChannelRowAction::remove);
        QCOMPARE(m_view->openSheet()->windowTitle(), u"Delete \"Arena\"?"_s);
        QTest::mouseClick(alertButton(m_view->openSheet(), WindowTexts::cancel), Qt::LeftButton);
        QTRY_VERIFY(!m_view->openSheet());
        QCOMPARE(m_store->entries().size(), 2);

        clickRowAction(local()->linkList(), 1, ChannelRowAction::remove);
        QTest::mouseClick(alertButton(m_view->openSheet(), WindowTexts::deleteButton),
                          Qt::LeftButton);
        QTRY_COMPARE(m_store->entries().size(), 1);
        QCOMPARE(m_store->entries().constFirst().name, u"x"_s);

        QTest::mouseClick(local()->clearButton(), Qt::LeftButton);
        QTest::mouseClick(alertButton(m_view->openSheet(), WindowTexts::deletePermanently),
                          Qt::LeftButton);
        QTRY_VERIFY(m_store->entries().isEmpty());
        QVERIFY(local()->emptyText()->isVisible());
    }

    void importAndExportGoThroughTheirDialogs()
    {
        state().setSelectedSidebarSection(PlayerSidebarSection::localM3U);
        m_actions->addLink(
            {u"Mine"_s, *WebAddress::fromText(u"https://tv.example/mine.m3u8"), {}, {}, {}});
        QVERIFY(!local()->restoreButton()->isVisible());
        state().setChannelSearch(u"nothing matches this"_s);
        answerFileDialog(testData(u"m3u/iptv-org-2021-channels/ch.m3u"_s));
        QTest::mouseClick(local()->fileButton(), Qt::LeftButton);
        QTRY_VERIFY(m_store->entries().size() > 10);
        QCOMPARE(m_model->toastMessage(),
                 u"Saved links replaced by %1 channels"_s.arg(m_store->entries().size()));
        QVERIFY(local()->restoreButton()->isVisible());
        // The import started from no search: everything imported is listed.
        QCOMPARE(state().channelSearch(), QString());
        QTRY_COMPARE(state().localLinks().filteredCount(), int(m_store->entries().size()));

        QTemporaryDir folder;
        const QString target = folder.filePath(u"links.m3u"_s);
        answerFileDialog(target);
        QTest::mouseClick(local()->exportButton(), Qt::LeftButton);
        QFile written(target);
        QVERIFY(written.open(QIODevice::ReadOnly));
        QVERIFY(written.readLine().startsWith("#EXTM3U"));
        QTRY_COMPARE(m_model->toastMessage(), std::optional(u"Exported: links.m3u"_s));

        // The links the import replaced come back.
        QTest::mouseClick(local()->restoreButton(), Qt::LeftButton);
        QCOMPARE(m_store->entries().size(), 1);
        QCOMPARE(m_store->entries().constFirst().name, u"Mine"_s);
    }

    void failedSaveIsToldAndNeverConfirmed()
    {
        loadPlaylist();
        // A folder where the list's file should be: no write can put the file there.
        const QString file = SavedLinksFile(SavedLinksFile::defaultFolder(),
                                            PlaylistTexts::savedEntriesKey.toString())
                                 .path();
        bool settled = false;
        m_store->whenSaved(this, [&](const LocalM3UStore::SaveOutcome &) { settled = true; });
        QTRY_VERIFY(settled);
        QVERIFY(QFile::remove(file));
        QVERIFY(QDir().mkpath(file + u"/in-the-way"_s));
        m_actions->saveToLocalM3U(m_model->playlist().at(0));
        QMessageBox *alert = nullptr;
        QTRY_VERIFY((alert = m_view->findChild<QMessageBox *>()) && alert->isVisible());
        QCOMPARE(alert->text(), PlaylistTexts::saveFailed.toString());
        QVERIFY(alert->informativeText().contains(PlaylistTexts::saveFailedAdvice));
        QCOMPARE(alert->windowModality(), Qt::WindowModal); // the window goes on meanwhile
        // A second failure while the alert is open updates it instead of stacking another.
        m_actions->saveToLocalM3U(m_model->playlist().at(1));
        QTest::qWait(300);
        QCOMPARE(m_view->findChildren<QMessageBox *>().size(), 1);
        QVERIFY(!m_model->toastMessage().value_or(QString()).startsWith(
            PlaylistTexts::savedToLocalM3U));

        // Once the file can be written, the next save lands and is confirmed.
        alert->button(QMessageBox::Ok)->click();
        QVERIFY(QDir(file).removeRecursively());
        m_actions->saveToLocalM3U(m_model->playlist().at(2));
        QTRY_COMPARE(m_model->toastMessage(),
                     std::optional(PlaylistTexts::savedToLocalM3U.toString() + u"Arena"_s));
        QCOMPARE(m_store->entries().size(), 3);
    }

    void controlBarShowsTimesAndSeeksOnRelease()
    {
        PlayerControlBar *bar = m_view->controlBar();
        // Nothing loaded: a usable slider of one second and no remaining time.
        QCOMPARE(bar->seekSlider()->maximum(), 1000);
        QCOMPARE(bar->remainingTimeText(), u"00:00"_s);

        m_model->play(WebAddress::fromLocalFile(testMedia(u"long.mp4"_s)), std::nullopt, false);
        QTRY_VERIFY(m_model->duration() > 0);
        QSlider *seek = bar->seekSlider();
        QTRY_COMPARE(seek->maximum(), int(m_model->duration() * 1000));
        seek->setSliderDown(true);
        seek->setSliderPosition(300'500);
        // While dragging, the labels follow the slider and the player stays where it is.
        QCOMPARE(bar->currentTimeText(), u"05:00"_s);
        QCOMPARE(bar->remainingTimeText(), PlayerTimeText::remaining(m_model->duration(), 300.5));
        QVERIFY(m_model->currentTime() < 10);
        seek->setSliderDown(false);
        QTRY_VERIFY(std::abs(m_model->currentTime() - 300.5) < 1.0);
        QTRY_COMPARE(bar->currentTimeText(), PlayerTimeText::time(m_model->currentTime()));
    }

    void displayModeMenuHidesTheSidebar()
    {
        PlayerControlBar *bar = m_view->controlBar();
        QMenu *modes = bar->displayModeMenu();
        QCOMPARE(modes->actions().size(), 5);
        actionNamed(modes, u"Portrait Fill")->trigger();
        QTRY_VERIFY(!m_view->sidebar()->isVisible());
        QCOMPARE(m_view->playerArea()->surface()->portraitMode(), PortraitDisplayMode::fill);
        const QImage checkmark =
            SymbolIcons::pixmap(u"checkmark.circle.fill", 16, Qt::white).toImage();
        QCOMPARE(actionNamed(modes, u"Portrait Fill")->icon().pixmap(16, 16).toImage(), checkmark);
        QVERIFY(actionNamed(modes, u"Normal")->icon().pixmap(16, 16).toImage() != checkmark);

        actionNamed(modes, u"Normal")->trigger();
        QTest::qWait(300);
        QVERIFY(!m_view->sidebar()->isVisible());
        QTest::mouseClick(buttonWithHelp(bar, WindowTexts::sidebarHelp), Qt::LeftButton);
        QTRY_VERIFY(m_view->sidebar()->isVisible());
        QTRY_COMPARE(m_view->sidebar()->width(), SidebarView::preferredWidth);
    }

    void fullScreenControlsAndCursorHideOnTheirOwn()
    {
        m_model->play(WebAddress::fromLocalFile(testMedia(u"long.mp4"_s)), std::nullopt, false);
        QTRY_VERIFY(m_model->isPlaying());
        QWindow *window = m_view->windowHandle();
        const QPoint overPicture =
            m_view->playerArea()->mapToGlobal(m_view->playerArea()->rect().center());
        QCursor::setPos(overPicture);

        // No window manager here to grant full screen: the window's state is given directly.
        QElapsedTimer clock;
        clock.start();
        state().setFullScreen(true);
        PlayerControlBar *bar = m_view->controlBar();
        QTRY_VERIFY_WITH_TIMEOUT(!bar->isVisible(), 5000);
        QVERIFY(clock.elapsed() >= 2500);
        QVERIFY(bar->geometry().bottom() < m_view->height()); // floating over the picture

        Q_EMIT m_views->notifier.playerMouseMoved(window);
        QVERIFY(bar->isVisible());
        clock.restart();
        QTRY_VERIFY_WITH_TIMEOUT(m_view->playerArea()->isCursorHidden(), 4000);
        QVERIFY(clock.elapsed() >= 2000);
        QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::BlankCursor);
        Q_EMIT m_views->notifier.playerMouseMoved(window);
        QVERIFY(!m_view->playerArea()->isCursorHidden());
        QCOMPARE(QGuiApplication::overrideCursor(), nullptr);

        // Paused, the cursor stays.
        m_model->togglePlayback();
        QTRY_VERIFY(!m_model->isPlaying());
        Q_EMIT m_views->notifier.playerMouseMoved(window);
        QTest::qWait(2300);
        QVERIFY(!m_view->playerArea()->isCursorHidden());
    }

    void guideFollowsTheClockWithoutReloading()
    {
        // A list naming two guides, one of them missing: what the other gives is shown.
        const qint64 boundary = (QDateTime::currentMSecsSinceEpoch() / 1000 + 5) * 1000;
        m_server.route("/guided.m3u",
                       TestHttpReply::of(200, "OK",
                                         "#EXTM3U x-tvg-url=\"guide.xml,missing.xml\"\n"
                                         "#EXTINF:-1 tvg-id=\"TAGESSCHAU.DE\",Tagesschau\n"
                                         "http://127.0.0.1:9/tagesschau.m3u8\n"
                                         "#EXTINF:-1 group-title=\"Sport\",Arena\n"
                                         "http://127.0.0.1:9/arena.m3u8\n"));
        m_server.setHandler([&](const QByteArray &path) {
            if (path != "/guide.xml")
                return TestHttpReply::of(404, "Not Found", {});
            if (m_server.requestHeads().constLast().contains("\r\nIf-None-Match: \"v1\"\r\n"))
                return TestHttpReply::of(304, "Not Modified", {});
            TestHttpReply reply = TestHttpReply::of(200, "OK", guideAround(boundary), "text/xml");
            reply.extraHeaders = "ETag: \"v1\"\r\n";
            return reply;
        });
        ProgrammeGuide &guide = m_model->guide();
        m_model->openRemote(m_server.url(u"/guided.m3u"_s), std::nullopt);
        QTRY_COMPARE(guide.statusName(), u"partial"_s);
        QCOMPARE(m_model->toastMessage(), PlayerTexts::guidePartlyRead.toString());

        ChannelListView *list = network()->channelList();
        const auto secondLine = [list](int row) {
            return list->rowDelegate()->secondLine(list->model()->index(row, 0),
                                                   ProgrammeGuide::now());
        };
        QCOMPARE(secondLine(0), u"Early News"_s);
        QCOMPARE(secondLine(1), u"Sport"_s); // no guide: as before
        clickRowAction(list, 0, ChannelRowAction::play);
        GuideNowNextView *nowNext = network()->nowNext();
        QTRY_VERIFY(nowNext->isVisible());
        QVERIFY(nowNext->nowLabel()->text().contains(u"Early News"_s));
        QCOMPARE(nowNext->nextLabel()->text(), WindowTexts::guideNext.toString() + u"  "_s +
                                                   GuideTimeText::time(boundary) +
                                                   u"  Late News"_s);

        // At the boundary the rows and the playing channel's lines turn over by themselves.
        QSignalSpy repaints(list->rowDelegate(), &ChannelRowDelegate::appearanceChanged);
        QTRY_VERIFY_WITH_TIMEOUT(nowNext->nowLabel()->text().contains(u"Late News"_s), 10000);
        QVERIFY(ProgrammeGuide::now() >= boundary);
        QVERIFY(!repaints.isEmpty());
        QCOMPARE(secondLine(0), u"Late News"_s);
        QVERIFY(!nowNext->nextLabel()->isVisible());
        list->setCurrentIndex(list->model()->index(0, 0));
        QTest::mouseClick(network()->guideButton(), Qt::LeftButton);
        GuideDayDialog *day = nullptr;
        QTRY_VERIFY((day = m_view->findChild<GuideDayDialog *>()) && day->isVisible());
        QCOMPARE(day->programmeList()->count(), 1);
        QVERIFY(day->programmeList()->item(0)->text().endsWith(u"Late News\nWeather"_s));

        // The same list again reads the kept guide; a refresh asks whether it changed.
        m_model->openRemote(m_server.url(u"/guided.m3u"_s), std::nullopt);
        QTRY_COMPARE(guide.statusName(), u"partial"_s);
        QCOMPARE(m_server.requestCount("/guide.xml"), 1);
        guide.refresh();
        // While it asks, the rows go on showing what they showed.
        QCOMPARE(guide.statusName(), u"loading"_s);
        QCOMPARE(secondLine(0), u"Late News"_s);
        QTRY_COMPARE(m_server.requestCount("/guide.xml"), 2);
        QByteArray asked;
        for (const QByteArray &head : m_server.requestHeads())
            if (head.startsWith("GET /guide.xml "))
                asked = head;
        QVERIFY2(asked.contains("\r\nIf-None-Match: \"v1\"\r\n"), asked.constData());
        QTRY_COMPARE(guide.statusName(), u"partial"_s);
        QCOMPARE(secondLine(0), u"Late News"_s);
    }

    void guideFaultsNeverHoldUpTheChannels_data()
    {
        QTest::addColumn<TestHttpReply>("reply");
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("notice");
        const QByteArray whole = guideAround(QDateTime::currentMSecsSinceEpoch() + 600'000);
        const QString failed = PlayerTexts::guideFailed.toString();
        QTest::newRow("cut after a programme")
            << TestHttpReply::of(200, "OK", whole.left(whole.indexOf("</programme>") + 20))
            << u"partial"_s << PlayerTexts::guidePartlyRead.toString();
        TestHttpReply endless;
        endless.endlessLength = 64 << 20;
        QTest::newRow("an endless body")
            << endless << u"failed"_s << failed.arg(u"The guide is larger than 1 MiB."_s);
        TestHttpReply silent;
        silent.neverAnswer = true;
        QTest::newRow("never answers") << silent << u"failed"_s << failed.left(20);
        QTest::newRow("a web page") << TestHttpReply::of(200, "OK", "<html><body>Sorry</body>")
                                    << u"failed"_s << failed.left(20);
    }

    void guideFaultsNeverHoldUpTheChannels()
    {
        QFETCH(TestHttpReply, reply);
        QFETCH(QString, status);
        QFETCH(QString, notice);
        m_server.route("/faulty.xml", reply);
        m_server.route("/faulty.m3u", TestHttpReply::of(200, "OK",
                                                        "#EXTM3U url-tvg=\"faulty.xml\"\n"
                                                        "#EXTINF:-1 tvg-id=\"tagesschau.de\",A\n"
                                                        "http://127.0.0.1:9/a.m3u8\n"));
        ProgrammeGuide &guide = m_model->guide();
        guide.setDownloadLimits({std::chrono::seconds(2), 1 << 20});
        QStringList notices;
        connect(m_model, &PlayerModel::toastMessageChanged, this, [&] {
            if (m_model->toastMessage())
                notices.append(*m_model->toastMessage());
        });
        m_model->openRemote(m_server.url(u"/faulty.m3u"_s), std::nullopt);
        QTRY_COMPARE(state().networkChannels().filteredCount(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(guide.statusName(), status, 10000);
        QTest::qWait(300);
        QCOMPARE(notices.size(), 1);
        QVERIFY2(notices.constFirst().startsWith(notice), qPrintable(notices.constFirst()));
        QCOMPARE(state().networkChannels().filteredCount(), 1);
    }

    void droppedFilesPlayAndTheWindowTakesTheirShape()
    {
        const QString file = testMedia(u"columns.mp4"_s);
        auto *data = new QMimeData;
        data->setUrls({QUrl::fromLocalFile(file)});
        const QPoint center = m_view->playerArea()->geometry().center();
        QDragEnterEvent enter(center, Qt::CopyAction, data, Qt::LeftButton, {});
        QApplication::sendEvent(m_view.get(), &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop(center, Qt::CopyAction, data, Qt::LeftButton, {});
        QApplication::sendEvent(m_view.get(), &drop);
        QTRY_COMPARE(m_model->title(), u"columns.mp4"_s);
        QCOMPARE(m_view->windowTitle(), u"columns.mp4"_s);

        // The picture takes the video's 16:9 shape once the load's aspect is known, and only once.
        QTRY_VERIFY(m_view->titleBar()->lastFittedLoad() == m_model->mediaLoadID());
        const QSize picture = m_view->playerArea()->size();
        QVERIFY2(std::abs(double(picture.width()) / picture.height() - 16.0 / 9.0) < 0.02,
                 qPrintable(u"%1x%2"_s.arg(picture.width()).arg(picture.height())));
        m_view->resize(1100, 500);
        QTest::qWait(200);
        QCOMPARE(m_view->size(), QSize(1100, 500));

        // A link dropped on the address field replaces its text, cleaned.
        auto *link = new QMimeData;
        link->setText(u"https://tv.example/live.m3u8\n"_s);
        AddressField *field = network()->addressField();
        const QPoint inField = field->rect().center();
        QDragEnterEvent enterField(inField, Qt::CopyAction, link, Qt::LeftButton, {});
        QApplication::sendEvent(field, &enterField);
        QDropEvent dropField(inField, Qt::CopyAction, link, Qt::LeftButton, {});
        QApplication::sendEvent(field, &dropField);
        QCOMPARE(field->text(), u"https://tv.example/live.m3u8"_s);
        QCOMPARE(state().address(), u"https://tv.example/live.m3u8"_s);
        delete data;
        delete link;
    }

    void everythingFitsTheSmallestWindow_data()
    {
        QTest::addColumn<PlayerSidebarSection>("section");
        QTest::newRow("network") << PlayerSidebarSection::network;
        QTest::newRow("saved links") << PlayerSidebarSection::localM3U;
    }

    void everythingFitsTheSmallestWindow()
    {
        QFETCH(PlayerSidebarSection, section);
        m_actions->addLink(
            {u"Arena"_s, *WebAddress::fromText(u"https://tv.example/arena.m3u8"), {}, {}, {}});
        loadPlaylist();
        state().setSelectedSidebarSection(section);
        m_view->resize(520, 360);
        QTRY_COMPARE(m_view->size(), QSize(520, 360));
        QTest::qWait(50);
        // Every control shows whole, inside its own panel, and none covers another.
        for (QWidget *area :
             {static_cast<QWidget *>(m_view->controlBar()), m_view->sidebar()->currentPanel()}) {
            QList<QRect> taken;
            for (QAbstractButton *button : area->findChildren<QAbstractButton *>()) {
                if (!button->isVisibleTo(area) ||
                    button->parentWidget()->inherits("QStackedWidget"))
                    continue;
                const QRect place(button->mapTo(area, QPoint()), button->size());
                QVERIFY2(area->rect().contains(place),
                         qPrintable(button->toolTip() + button->text()));
                QVERIFY2(button->width() >= button->minimumSizeHint().width(),
                         qPrintable(button->toolTip() + button->text()));
                for (const QRect &other : taken)
                    QVERIFY2(!other.intersects(place),
                             qPrintable(button->toolTip() + button->text()));
                taken.append(place);
            }
        }
        QVERIFY(m_view->controlBar()->seekSlider()->width() >= 60);
        QVERIFY(m_view->playerArea()->width() >= 200);
    }

private:
    void loadPlaylist()
    {
        m_model->openRemote(m_playlistURL, std::nullopt);
        QTRY_COMPARE(state().networkChannels().filteredCount(), 3);
    }
    void clickRowAction(ChannelListView *list, int row, ChannelRowAction action);
    NetworkPanel *network() const { return m_view->networkPanel(); }
    LocalM3UPanel *local() const { return m_view->localPanel(); }
    ContentState &state() const { return m_view->state(); }

    TestHttpServer m_server;
    QString m_playlistURL;
    std::unique_ptr<TestViews> m_views;
    std::unique_ptr<TestPlayer> m_player;
    PlayerModel *m_model = nullptr;
    std::unique_ptr<LocalM3UStore> m_store;
    std::unique_ptr<DialogMediaFileChooser> m_chooser;
    std::unique_ptr<DialogLocalM3UPrompts> m_prompts;
    std::unique_ptr<LocalM3UActions> m_actions;
    std::unique_ptr<ContentView> m_view;
};

void tst_ContentView::clickRowAction(ChannelListView *list, int row, ChannelRowAction action)
{
    const QRect button = list->actionRect(row, action);
    QVERIFY(!button.isEmpty());
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, button.center());
}

int main(int argc, char **argv)
{
    // The clock's zone is set so that it is about noon here: the rest of the day is long, and
    // what the guide shows does not depend on when the test runs.
    const int utcHour = QDateTime::currentDateTimeUtc().time().hour();
    qputenv("TZ", QByteArray("VLM") + QByteArray::number(utcHour - 12));
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication application(argc, argv);
    tst_ContentView test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_ContentView.moc"
