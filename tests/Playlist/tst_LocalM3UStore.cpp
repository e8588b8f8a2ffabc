#include "Playlist/LocalM3UStore.h"
#include "Playlist/M3UExport.h"
#include "Playlist/PlaylistJson.h"
#include "Playlist/PlaylistParser.h"
#include "Playlist/PlaylistTexts.h"
#include "Playlist/SavedLinksFile.h"

#include "TestHome.h"

#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QThreadPool>

#include <csignal>
#include <cstdio>
#include <functional>
#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QString key = PlaylistTexts::savedEntriesKey.toString();
const QString previousKey = PlaylistTexts::previousEntriesKey.toString();

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

SavedLinksFile savedFile()
{
    return {SavedLinksFile::defaultFolder(), key};
}

SavedLinksFile previousFile()
{
    return {SavedLinksFile::defaultFolder(), previousKey};
}

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

void storeInSettings(const QString &settingsKey, const QByteArray &bytes)
{
    QSettings settings;
    settings.setValue(settingsKey, bytes);
    settings.sync();
}

QList<PlaylistEntry> manyEntries(int count)
{
    QList<PlaylistEntry> entries;
    for (int i = 0; i < count; ++i)
        entries.append(
            entry(u"Channel %1 \u00E9"_s.arg(i), u"https://tv.example/%1.m3u8"_s.arg(i)));
    return entries;
}

// Waits until the list as the store holds it now has been written; the failure, if any.
LocalM3UStore::SaveOutcome waitUntilSaved(LocalM3UStore &store)
{
    std::optional<LocalM3UStore::SaveOutcome> outcome;
    store.whenSaved(&store, [&](const LocalM3UStore::SaveOutcome &o) { outcome = o; });
    if (!QTest::qWaitFor([&] { return outcome.has_value(); }, 30'000))
        return u"(no outcome)"_s;
    return *outcome;
}

// What a store made after this one has written its list reads.
QList<PlaylistEntry> reopened(LocalM3UStore &store)
{
    waitUntilSaved(store);
    LocalM3UStore later;
    later.waitForLoad();
    return later.entries();
}

// Runs work while files of this process may not grow beyond 4 KiB: writes fail as on a full disk.
void onAFullDisk(const std::function<void()> &work)
{
    rlimit previous{};
    getrlimit(RLIMIT_FSIZE, &previous);
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = previous;
    small.rlim_cur = 4096;
    setrlimit(RLIMIT_FSIZE, &small);
    work();
    setrlimit(RLIMIT_FSIZE, &previous);
    std::signal(SIGXFSZ, previousHandler);
}

QList<PlaylistEntry> freshlyLoaded()
{
    LocalM3UStore store;
    store.waitForLoad();
    return store.entries();
}

} // namespace

class tst_LocalM3UStore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        // A store of the last test may still be clearing the settings it moved out of.
        QThreadPool::globalInstance()->waitForDone();
        QSettings settings;
        settings.remove(key);
        settings.remove(previousKey);
        settings.sync();
        QDir(SavedLinksFile::defaultFolder()).removeRecursively();
    }

    void storesTheListInAFileOfItsOwn()
    {
        LocalM3UStore store;
        store.replaceAll(manyEntries(3));
        QCOMPARE(waitUntilSaved(store), std::nullopt);
        QCOMPARE(fileBytes(savedFile().path()), PlaylistJson::encode(store.entries()));
        QCOMPARE(freshlyLoaded(), store.entries());
        // The settings store is left alone.
        QVERIFY(!QSettings().contains(key));

        // A file the user made private stays private through the next write.
        const QFile::Permissions owner = QFile::ReadOwner | QFile::WriteOwner;
        QVERIFY(QFile::setPermissions(savedFile().path(), owner));
        store.replaceAll(manyEntries(4));
        QCOMPARE(waitUntilSaved(store), std::nullopt);
        QCOMPARE(freshlyLoaded(), store.entries());
        const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                          QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
        QCOMPARE(QFileInfo(savedFile().path()).permissions() & (owner | others), owner);
    }

    void ignoresBadStoredDataUntilTheNextChange_data()
    {
        QTest::addColumn<QByteArray>("stored");
        QTest::newRow("not JSON") << json("\x89PNG\r\n\x1a\n not json");
        QTest::newRow("cut short")
            << json("[{'id':'E621E1F8-C36C-495A-93FC-0C247A3E6E5F','name':'A'");
        QTest::newRow("one record without url") << json(
            "[{'id':'E621E1F8-C36C-495A-93FC-0C247A3E6E5F','name':'A','url':'http:\\/\\/a'},"
            "{'id':'0F8FAD5B-D9CB-469F-A165-70867728950E','name':'B'}]");
    }

    void ignoresBadStoredDataUntilTheNextChange()
    {
        QFETCH(QByteArray, stored);
        writeFile(savedFile().path(), stored);
        LocalM3UStore localStore;
        localStore.waitForLoad();
        QVERIFY(localStore.entries().isEmpty());
        QCOMPARE(fileBytes(savedFile().path()), stored); // untouched by loading
        QCOMPARE(fileBytes(savedFile().damagedCopyPath()), stored);

        const PlaylistEntry saved =
            localStore.saveOrMoveToFront({u"A"_s, address(u"http://a/"_s), {}, {}, {}});
        QCOMPARE(reopened(localStore), QList<PlaylistEntry>{saved});
        QCOMPARE(fileBytes(savedFile().damagedCopyPath()), stored); // kept for the user
    }

    void movesTheSettingsValueIntoTheFileOnce_data()
    {
        QTest::addColumn<bool>("damaged");
        QTest::newRow("a list") << false;
        QTest::newRow("damaged bytes") << true;
    }

    void movesTheSettingsValueIntoTheFileOnce()
    {
        QFETCH(bool, damaged);
        const QList<PlaylistEntry> saved = manyEntries(1000);
        const QList<PlaylistEntry> previous = manyEntries(2);
        const QByteArray savedBytes =
            damaged ? PlaylistJson::encode(saved).chopped(1) : PlaylistJson::encode(saved);
        storeInSettings(key, savedBytes);
        storeInSettings(previousKey, PlaylistJson::encode(previous));

        LocalM3UStore store;
        store.waitForLoad();
        QCOMPARE(store.entries(), damaged ? QList<PlaylistEntry>() : saved);
        QCOMPARE(store.hasPrevious(), true);
        // The very bytes move; damaged ones stay as they were, now in the file.
        QCOMPARE(fileBytes(savedFile().path()), savedBytes);
        QCOMPARE(fileBytes(previousFile().path()), PlaylistJson::encode(previous));
        QTRY_VERIFY(!QSettings().contains(key) && !QSettings().contains(previousKey));

        // Once moved, the file is the list: a value that turns up in the settings again is no list.
        store.removeAll();
        waitUntilSaved(store);
        storeInSettings(key, PlaylistJson::encode(saved));
        QVERIFY(freshlyLoaded().isEmpty());
    }

    void changesWaitForTheListToBeRead()
    {
        const QList<PlaylistEntry> saved = manyEntries(100'000);
        writeFile(savedFile().path(), PlaylistJson::encode(saved));

        // A change at once, before the list can have been read, goes on top of it.
        LocalM3UStore store;
        const PlaylistEntry added =
            store.saveOrMoveToFront({u"New"_s, address(u"http://new/"_s), {}, {}, {}});
        QVERIFY(store.isLoaded());
        QCOMPARE(store.entries().size(), saved.size() + 1);
        QCOMPARE(store.entries().constFirst(), added);
        QCOMPARE(reopened(store).size(), saved.size() + 1);
    }

    void collapsesWritesThatPileUp()
    {
        LocalM3UStore store;
        store.replaceAll(manyEntries(100'000));
        // Every change is confirmed, by the write of its own list or of a newer one.
        int confirmed = 0;
        for (int i = 0; i < 50; ++i) {
            store.saveOrMoveToFront(
                {u"Link %1"_s.arg(i), address(u"http://a/%1"_s.arg(i)), {}, {}, {}});
            store.whenSaved(&store, [&](const LocalM3UStore::SaveOutcome &outcome) {
                confirmed += outcome ? 0 : 1;
            });
        }
        const QList<PlaylistEntry> last = store.entries();
        QTRY_COMPARE_WITH_TIMEOUT(confirmed, 50, 30'000);
        QCOMPARE(fileBytes(savedFile().path()), PlaylistJson::encode(last));
    }

    void reportsAFailedWriteAndWritesAgain()
    {
        const QList<PlaylistEntry> before = manyEntries(3);
        {
            LocalM3UStore store;
            store.replaceAll(before);
            QCOMPARE(waitUntilSaved(store), std::nullopt);
        }
        const QByteArray beforeBytes = fileBytes(savedFile().path());

        auto store = std::make_unique<LocalM3UStore>();
        QSignalSpy failures(store.get(), &LocalM3UStore::saveFailed);
        LocalM3UStore::SaveOutcome outcome;
        onAFullDisk([&] {
            store->replaceAll(manyEntries(2000));
            outcome = waitUntilSaved(*store);
        });

        QVERIFY(outcome.has_value());
        QCOMPARE(failures.size(), 1);
        QCOMPARE(failures.at(0).at(0).toString(), *outcome);
        QCOMPARE(fileBytes(savedFile().path()), beforeBytes); // the old list, whole
        QCOMPARE(QDir(SavedLinksFile::defaultFolder()).entryList(QDir::Files).size(), 2);

        // Nothing changed since, and the disk has room again: the end writes what failed.
        const QList<PlaylistEntry> unsaved = store->entries();
        store.reset();
        QCOMPARE(freshlyLoaded(), unsaved);
    }

    void killedWriterLeavesAWholeList()
    {
        // A child process writes two lists in turn as fast as it can and is killed at random
        // moments; the file must always read as one of them, whole.
        const QList<PlaylistEntry> small = manyEntries(5'000);
        const QList<PlaylistEntry> large = manyEntries(20'000);
        const QString smallPath = QDir::temp().filePath(u"velm-small.json"_s);
        const QString largePath = QDir::temp().filePath(u"velm-large.json"_s);
        writeFile(smallPath, PlaylistJson::encode(small));
        writeFile(largePath, PlaylistJson::encode(large));
        writeFile(savedFile().path(), PlaylistJson::encode(small));

        QRandomGenerator random(20261123);
        for (int round = 0; round < 12; ++round) {
            QProcess writer;
            QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
            environment.insert(u"VELM_ALTERNATE_WRITER"_s, smallPath + u'|' + largePath);
            writer.setProcessEnvironment(environment);
            writer.setProcessChannelMode(QProcess::ForwardedErrorChannel);
            writer.start(QCoreApplication::applicationFilePath(), {});
            QVERIFY(writer.waitForStarted());
            QVERIFY(writer.waitForReadyRead(30'000)); // it has begun writing
            QThread::msleep(random.bounded(5, 400));
            ::kill(pid_t(writer.processId()), SIGKILL);
            QVERIFY(writer.waitForFinished());
            const std::optional<QList<PlaylistEntry>> read =
                PlaylistJson::decodeList(fileBytes(savedFile().path()));
            QVERIFY2(read && (*read == small || *read == large),
                     qPrintable(u"round %1"_s.arg(round)));
        }
        // Killed writes leave their pieces; the next start removes them and nothing else: not a
        // file the user put there, nor the piece of a player still running.
        const QString name = QFileInfo(savedFile().path()).fileName();
        const QString folder = SavedLinksFile::defaultFolder();
        const auto pieceOf = [&](const QProcess &process) {
            return u"%1.%2.partial"_s.arg(name).arg(process.processId());
        };
        QProcess ended;
        ended.start(u"sleep"_s, {u"60"_s});
        QVERIFY(ended.waitForStarted());
        writeFile(folder + u'/' + pieceOf(ended), "killed while writing");
        ended.kill();
        QVERIFY(ended.waitForFinished());
        QProcess running;
        running.start(u"sleep"_s, {u"60"_s});
        QVERIFY(running.waitForStarted());
        const QString runningPiece = pieceOf(running);
        writeFile(folder + u'/' + runningPiece, "in progress");
        writeFile(folder + u'/' + name + u".backup"_s, "kept");
        LocalM3UStore restarted;
        restarted.waitForLoad();
        QVERIFY(restarted.entries() == small || restarted.entries() == large);
        QStringList expected{name, name + u".backup"_s, runningPiece};
        expected.sort();
        QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name), expected);
        running.kill();
        running.waitForFinished();
        QFile::remove(folder + u'/' + runningPiece);
        QFile::remove(folder + u'/' + name + u".backup"_s);
        QFile::remove(smallPath);
        QFile::remove(largePath);
    }

    void savesAtTheFront()
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
        QCOMPARE(reopened(store), store.entries());
    }

    void editsAndDeletes()
    {
        LocalM3UStore store;
        const PlaylistEntry first = entry(u"First"_s, u"http://a/1"_s);
        const PlaylistEntry second = entry(u"Second"_s, u"http://a/2"_s);
        store.replaceAll({first, second, first});

        QVERIFY(
            store.updateInPlace(second.id, {u" Renamed "_s, address(u"http://a/3"_s),
                                            address(u"http://a/logo.png"_s), u"us"_s, u"Kids"_s}));
        const PlaylistEntry edited{
            second.id, u"Renamed"_s, address(u"http://a/3"_s), address(u"http://a/logo.png"_s),
            u"Kids"_s, u"us"_s};
        QCOMPARE(store.entries(), (QList<PlaylistEntry>{first, edited, first}));
        QVERIFY(!store.updateInPlace(QUuid::createUuid(),
                                     {u"Gone"_s, address(u"http://gone/"_s), {}, {}, {}}));

        store.remove(first.id);
        QCOMPARE(reopened(store), QList<PlaylistEntry>{edited});
        store.removeAll();
        QVERIFY(reopened(store).isEmpty());
        QCOMPARE(fileBytes(savedFile().path()), QByteArray("[]"));
    }

    void keepsWhatAReplacementTookThePlaceOf()
    {
        const QList<PlaylistEntry> mine = manyEntries(3);
        const QList<PlaylistEntry> imported = manyEntries(5);
        LocalM3UStore store;
        store.replaceAll(mine); // nothing was there: nothing to keep
        QVERIFY(!store.hasPrevious());
        store.replaceAll(imported);
        QVERIFY(store.hasPrevious());
        QCOMPARE(reopened(store), imported);
        {
            LocalM3UStore again;
            again.waitForLoad();
            QVERIFY(again.hasPrevious()); // kept across launches
        }

        LocalM3UStore later;
        later.restorePrevious();
        QCOMPARE(later.entries(), mine);
        QCOMPARE(reopened(later), mine);
        // What the restore replaced is kept in turn: restoring again undoes it.
        later.restorePrevious();
        QCOMPARE(reopened(later), imported);
        // The same list again replaces nothing.
        later.replaceAll(imported);
        later.restorePrevious();
        QCOMPARE(later.entries(), mine);
    }

    void exportsCleanedLines()
    {
        const QList<PlaylistEntry> entries = {
            {QUuid::createUuid(), u"News, 24"_s, address(u"https://tv.example/news.m3u8"_s),
             address(u"https://tv.example/l.png"_s), u"News"_s, u"GB"_s},
            {QUuid::createUuid(), u"Say \"Hi\""_s, address(u"http://tv.example/hi"_s), std::nullopt,
             u"Talk\r\nShows"_s, std::nullopt},
            {QUuid::createUuid(), u"Film"_s, WebAddress::fromLocalFile(u"/media/My Film.mkv"_s),
             std::nullopt, std::nullopt, std::nullopt}};
        QCOMPARE(
            M3UExport::text(entries),
            QByteArray("#EXTM3U\n"
                       "#EXTINF:-1 tvg-name=\"News, 24\" tvg-logo=\"https://tv.example/l.png\" "
                       "tvg-country=\"GB\" group-title=\"News\",News, 24\n"
                       "https://tv.example/news.m3u8\n"
                       "#EXTINF:-1 tvg-name=\"Say 'Hi'\" group-title=\"Talk  Shows\",Say 'Hi'\n"
                       "http://tv.example/hi\n"
                       "#EXTINF:-1 tvg-name=\"Film\",Film\n"
                       "/media/My Film.mkv\n"));
    }

    void exportReadsBackAsTheSameChannels()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(u"list.m3u"_s);
        const QList<PlaylistEntry> entries = {
            {QUuid::createUuid(), u"Ünïcode \u6F22\u5B57"_s,
             address(u"https://tv.example/a.m3u8"_s), address(u"https://tv.example/a.png"_s),
             u"Music"_s, u"JP"_s},
            {QUuid::createUuid(), u"Local"_s,
             WebAddress::fromLocalFile(folder.filePath(u"clip.mp4"_s)), std::nullopt, std::nullopt,
             std::nullopt}};
        QCOMPARE(M3UExport::write(path, entries), std::nullopt);

        const auto read = PlaylistParser::parse(fileBytes(path), WebAddress::fromLocalFile(path));
        QCOMPARE(read.size(), entries.size());
        for (qsizetype i = 0; i < read.size(); ++i) {
            QCOMPARE(read[i].name, entries[i].name);
            QCOMPARE(read[i].url, entries[i].url);
            QCOMPARE(read[i].logoURL, entries[i].logoURL);
            QCOMPARE(read[i].groupTitle, entries[i].groupTitle);
            QCOMPARE(read[i].countryCode, entries[i].countryCode);
        }
    }

    void failedExportKeepsTheOldFile_data()
    {
        QTest::addColumn<bool>("fullDisk");
        QTest::newRow("folder without write permission") << false;
        QTest::newRow("disk full") << true;
    }

    void failedExportKeepsTheOldFile()
    {
        QFETCH(bool, fullDisk);
        QTemporaryDir folder;
        QFile::setPermissions(folder.path(), QFile::ReadOwner | QFile::WriteOwner |
                                                 QFile::ExeOwner | QFile::ReadOther |
                                                 QFile::ExeOther);
        const QString path = folder.filePath(u"list.m3u"_s);
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("#EXTM3U\nold\n");
        old.close();

        LocalM3UStore store;
        store.replaceAll(manyEntries(2000));
        QCOMPARE(waitUntilSaved(store), std::nullopt);
        std::optional<QString> failure;
        if (fullDisk) {
            onAFullDisk([&] { failure = M3UExport::write(path, store.entries()); });
        } else {
            QFile::setPermissions(folder.path(), QFile::ReadOwner | QFile::ExeOwner |
                                                     QFile::ReadOther | QFile::ExeOther);
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
        QCOMPARE(reopened(store).size(), 2000);
    }
};

// Run with VELM_ALTERNATE_WRITER="SMALL|LARGE", the test program is the writer that
// killedWriterLeavesAWholeList kills: it saves the two lists in turn until it is stopped.
int alternateWriter(const QString &paths)
{
    const QStringList files = paths.split(u'|');
    const QList<PlaylistEntry> lists[] = {*PlaylistJson::decodeList(fileBytes(files.at(0))),
                                          *PlaylistJson::decodeList(fileBytes(files.at(1)))};
    LocalM3UStore store;
    store.waitForLoad();
    for (int i = 0;; ++i) {
        store.setEntries(lists[i % 2]);
        store.persist();
        waitUntilSaved(store);
        if (i == 0)
            std::fputs("writing\n", stdout), std::fflush(stdout);
    }
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (const QString writer = qEnvironmentVariable("VELM_ALTERNATE_WRITER"); !writer.isEmpty()) {
        // In the home of the test that started it.
        QCoreApplication::setOrganizationName(u"VelmPlayerPro"_s);
        QCoreApplication::setApplicationName(u"VelmPlayerPro"_s);
        return alternateWriter(writer);
    }
    useTemporaryHome();
    tst_LocalM3UStore test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_LocalM3UStore.moc"
