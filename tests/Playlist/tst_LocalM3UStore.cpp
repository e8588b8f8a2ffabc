#include "Playlist/LocalM3UStore.h"
#include "Playlist/M3UExport.h"
#include "Playlist/PlaylistJson.h"
#include "Playlist/PlaylistParser.h"
#include "Playlist/PlaylistTexts.h"

#include "TestHome.h"

#include <QDir>
#include <QSettings>
#include <QTest>

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QString key = PlaylistTexts::savedEntriesKey.toString();

WebAddress address(const QString &text)
{
    return *WebAddress::fromText(text);
}

PlaylistEntry entry(const QString &name, const QString &url)
{
    return {QUuid::createUuid(), name, address(url), std::nullopt, std::nullopt, std::nullopt};
}

// JSON written with ' for " so that it reads as it is stored.
QByteArray json(const char *text)
{
    return QByteArray(text).replace('\'', '"');
}

QByteArray storedBytes()
{
    return QSettings().value(key).toByteArray();
}

void store(const QByteArray &bytes)
{
    QSettings settings;
    settings.setValue(key, bytes);
    settings.sync();
}

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
}

QList<PlaylistEntry> manyEntries(int count)
{
    QList<PlaylistEntry> entries;
    for (int i = 0; i < count; ++i)
        entries.append(
            entry(u"Channel %1 \u00E9"_s.arg(i), u"https://tv.example/%1.m3u8"_s.arg(i)));
    return entries;
}

} // namespace

class tst_LocalM3UStore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { useTemporaryHome(); }
    void init()
    {
        QSettings().remove(key);
        QSettings().remove(PlaylistTexts::previousEntriesKey.toString());
    }

    void storesTheListUnderItsKey();
    void ignoresBadStoredDataUntilTheNextChange_data();
    void ignoresBadStoredDataUntilTheNextChange();
    void keepsAHugeList();
    void savesAtTheFront();
    void editsAndDeletes();
    void keepsWhatAReplacementTookThePlaceOf();

    void exportsCleanedLines();
    void exportReadsBackAsTheSameChannels();
    void failedExportKeepsTheOldFile_data();
    void failedExportKeepsTheOldFile();
    void namesTheExportAfterTheDay();
};

void tst_LocalM3UStore::storesTheListUnderItsKey()
{
    LocalM3UStore store;
    store.setEntries(manyEntries(3));
    QVERIFY(store.persist());
    QCOMPARE(storedBytes(), PlaylistJson::encode(store.entries()));
    QCOMPARE(LocalM3UStore().entries(), store.entries());
}

void tst_LocalM3UStore::ignoresBadStoredDataUntilTheNextChange_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::newRow("not JSON") << json("\x89PNG\r\n\x1a\n not json");
    QTest::newRow("one record without url")
        << json("[{'id':'E621E1F8-C36C-495A-93FC-0C247A3E6E5F','name':'A','url':'http:\\/\\/a'},"
                "{'id':'0F8FAD5B-D9CB-469F-A165-70867728950E','name':'B'}]");
}

void tst_LocalM3UStore::ignoresBadStoredDataUntilTheNextChange()
{
    QFETCH(QByteArray, stored);
    store(stored);
    LocalM3UStore localStore;
    QVERIFY(localStore.entries().isEmpty());
    QCOMPARE(storedBytes(), stored); // untouched by loading

    const PlaylistEntry saved =
        localStore.saveOrMoveToFront({u"A"_s, address(u"http://a/"_s), {}, {}, {}});
    QCOMPARE(LocalM3UStore().entries(), QList<PlaylistEntry>{saved});
}

void tst_LocalM3UStore::keepsAHugeList()
{
    const QList<PlaylistEntry> entries = manyEntries(200'000);
    LocalM3UStore store;
    store.replaceAll(entries);
    QCOMPARE(LocalM3UStore().entries(), entries);
}

void tst_LocalM3UStore::savesAtTheFront()
{
    LocalM3UStore store;
    const PlaylistEntry twin = entry(u"Twin"_s, u"http://twin/a"_s);
    store.replaceAll({twin, entry(u"Other"_s, u"http://other/"_s), twin});

    // The same address moves to the front with a new id; only its first copy goes.
    const PlaylistEntry again =
        store.saveOrMoveToFront({u"  Twin again \n"_s, twin.url, {}, {}, {}});
    QCOMPARE(again.name, u"Twin again"_s);
    QVERIFY(again.id != twin.id);
    QCOMPARE(store.entries(), (QList<PlaylistEntry>{again, store.entries().at(1), twin}));
    QCOMPARE(store.entries().at(1).name, u"Other"_s);

    // Addresses compare as exact text: another letter case of the host is another link.
    store.saveOrMoveToFront({u"Upper"_s, address(u"http://TWIN/a"_s), {}, {}, {}});
    QCOMPARE(store.entries().size(), 4);
    QVERIFY(store.contains(address(u"http://TWIN/a"_s)));
    QVERIFY(!store.contains(address(u"HTTP://twin/a"_s)));

    // A blank name falls back to the file name without its extension.
    const PlaylistEntry blank =
        store.saveOrMoveToFront({u" \t"_s,
                                 address(u"https://tv.example/live/sport.m3u8?token=1"_s),
                                 {},
                                 u"TR"_s,
                                 u"Sport"_s});
    QCOMPARE(blank.name, u"sport"_s);
    QCOMPARE(blank.countryCode, u"TR"_s);
    QCOMPARE(blank.groupTitle, u"Sport"_s);
    QCOMPARE(LocalM3UStore().entries(), store.entries());
}

void tst_LocalM3UStore::editsAndDeletes()
{
    LocalM3UStore store;
    const PlaylistEntry first = entry(u"First"_s, u"http://a/1"_s);
    const PlaylistEntry second = entry(u"Second"_s, u"http://a/2"_s);
    store.replaceAll({first, second, first});

    QVERIFY(store.updateInPlace(second.id, {u" Renamed "_s, address(u"http://a/3"_s),
                                            address(u"http://a/logo.png"_s), u"us"_s, u"Kids"_s}));
    const PlaylistEntry edited{
        second.id, u"Renamed"_s, address(u"http://a/3"_s), address(u"http://a/logo.png"_s),
        u"Kids"_s, u"us"_s};
    QCOMPARE(store.entries(), (QList<PlaylistEntry>{first, edited, first}));
    QVERIFY(!store.updateInPlace(QUuid::createUuid(),
                                 {u"Gone"_s, address(u"http://gone/"_s), {}, {}, {}}));

    store.remove(first.id);
    QCOMPARE(LocalM3UStore().entries(), QList<PlaylistEntry>{edited});
    store.removeAll();
    QVERIFY(LocalM3UStore().entries().isEmpty());
    QCOMPARE(storedBytes(), QByteArray("[]"));
}

void tst_LocalM3UStore::keepsWhatAReplacementTookThePlaceOf()
{
    const QList<PlaylistEntry> mine = manyEntries(3);
    const QList<PlaylistEntry> imported = manyEntries(5);
    LocalM3UStore store;
    store.replaceAll(mine); // nothing was there: nothing to keep
    QVERIFY(!store.hasPrevious());
    store.replaceAll(imported);
    QVERIFY(store.hasPrevious());
    QCOMPARE(LocalM3UStore().entries(), imported);
    QVERIFY(LocalM3UStore().hasPrevious()); // kept across launches

    LocalM3UStore later;
    later.restorePrevious();
    QCOMPARE(later.entries(), mine);
    QCOMPARE(LocalM3UStore().entries(), mine);
    // What the restore replaced is kept in turn: restoring again undoes it.
    later.restorePrevious();
    QCOMPARE(LocalM3UStore().entries(), imported);
    // The same list again replaces nothing.
    later.replaceAll(imported);
    later.restorePrevious();
    QCOMPARE(later.entries(), mine);
}

void tst_LocalM3UStore::exportsCleanedLines()
{
    const QList<PlaylistEntry> entries = {
        {QUuid::createUuid(), u"News, 24"_s, address(u"https://tv.example/news.m3u8"_s),
         address(u"https://tv.example/l.png"_s), u"News"_s, u"GB"_s},
        {QUuid::createUuid(), u"Say \"Hi\""_s, address(u"http://tv.example/hi"_s), std::nullopt,
         u"Talk\r\nShows"_s, std::nullopt},
        {QUuid::createUuid(), u"Film"_s, WebAddress::fromLocalFile(u"/media/My Film.mkv"_s),
         std::nullopt, std::nullopt, std::nullopt}};
    QCOMPARE(M3UExport::text(entries),
             QByteArray("#EXTM3U\n"
                        "#EXTINF:-1 tvg-name=\"News, 24\" tvg-logo=\"https://tv.example/l.png\" "
                        "tvg-country=\"GB\" group-title=\"News\",News, 24\n"
                        "https://tv.example/news.m3u8\n"
                        "#EXTINF:-1 tvg-name=\"Say 'Hi'\" group-title=\"Talk  Shows\",Say 'Hi'\n"
                        "http://tv.example/hi\n"
                        "#EXTINF:-1 tvg-name=\"Film\",Film\n"
                        "/media/My Film.mkv\n"));
}

void tst_LocalM3UStore::exportReadsBackAsTheSameChannels()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(u"list.m3u"_s);
    const QList<PlaylistEntry> entries = {
        {QUuid::createUuid(), u"Ünïcode \u6F22\u5B57"_s, address(u"https://tv.example/a.m3u8"_s),
         address(u"https://tv.example/a.png"_s), u"Music"_s, u"JP"_s},
        {QUuid::createUuid(), u"Local"_s, WebAddress::fromLocalFile(folder.filePath(u"clip.mp4"_s)),
         std::nullopt, std::nullopt, std::nullopt}};
    QCOMPARE(M3UExport::write(path, entries), std::nullopt);

    const auto read =
        PlaylistParser::parse(QString::fromUtf8(fileBytes(path)), WebAddress::fromLocalFile(path));
    QCOMPARE(read.size(), entries.size());
    for (qsizetype i = 0; i < read.size(); ++i) {
        QCOMPARE(read[i].name, entries[i].name);
        QCOMPARE(read[i].url, entries[i].url);
        QCOMPARE(read[i].logoURL, entries[i].logoURL);
        QCOMPARE(read[i].groupTitle, entries[i].groupTitle);
        QCOMPARE(read[i].countryCode, entries[i].countryCode);
    }
}

void tst_LocalM3UStore::failedExportKeepsTheOldFile_data()
{
    QTest::addColumn<bool>("fullDisk");
    QTest::newRow("folder without write permission") << false;
    QTest::newRow("disk full") << true;
}

void tst_LocalM3UStore::failedExportKeepsTheOldFile()
{
    QFETCH(bool, fullDisk);
    QTemporaryDir folder;
    QFile::setPermissions(folder.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                             QFile::ReadOther | QFile::ExeOther);
    const QString path = folder.filePath(u"list.m3u"_s);
    QFile old(path);
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.write("#EXTM3U\nold\n");
    old.close();

    LocalM3UStore store;
    store.replaceAll(manyEntries(2000));
    std::optional<QString> failure;
    if (fullDisk) {
        // Files may not grow beyond 4 KiB: writes fail as on a full disk.
        rlimit previous{};
        getrlimit(RLIMIT_FSIZE, &previous);
        const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
        rlimit small = previous;
        small.rlim_cur = 4096;
        setrlimit(RLIMIT_FSIZE, &small);
        failure = M3UExport::write(path, store.entries());
        setrlimit(RLIMIT_FSIZE, &previous);
        std::signal(SIGXFSZ, previousHandler);
    } else {
        QFile::setPermissions(folder.path(), QFile::ReadOwner | QFile::ExeOwner | QFile::ReadOther |
                                                 QFile::ExeOther);
        // The superuser writes anywhere; the attempt is made as an ordinary user.
        const bool asRoot = geteuid() == 0;
        if (asRoot)
            QVERIFY(seteuid(65534) == 0);
        failure = M3UExport::write(path, store.entries());
        if (asRoot)
            QVERIFY(seteuid(0) == 0);
        QFile::setPermissions(folder.path(),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    QVERIFY(failure.has_value());
    QVERIFY(!failure->isEmpty());
    QCOMPARE(fileBytes(path), QByteArray("#EXTM3U\nold\n"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList{u"list.m3u"_s});
    QCOMPARE(LocalM3UStore().entries().size(), 2000);
}

void tst_LocalM3UStore::namesTheExportAfterTheDay()
{
    QCOMPARE(M3UExport::defaultFileName(QDate(2026, 11, 6)), u"VelmPlayerPro 2026-11-06.m3u"_s);
}

QTEST_GUILESS_MAIN(tst_LocalM3UStore)
#include "tst_LocalM3UStore.moc"
