// Saved-links benchmark, run by bench/saved-links in a home of its own (HOME and XDG_* set):
//   velm-bench-saved-links generate COUNT [settings]
//       stores COUNT links of real shape as the saved list: in its file, or with "settings" as
//       a list kept in the settings store the way older versions of the player kept it;
//   velm-bench-saved-links measure
//       loads the list, then makes the changes a user makes (save a link, edit one, delete one,
//       import a list in its place) and prints one JSON line: the load time, and for each
//       change its time on the main thread, the longest main-thread stall while its write was
//       under way (a 1 ms heartbeat timer), and the time until the write was on disk; plus the
//       peak resident memory of the process.

#include "Playlist/LocalM3UStore.h"
#include "Playlist/PlaylistJson.h"
#include "Playlist/PlaylistTexts.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSettings>
#include <QTimer>

#include <cstdio>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace {

QList<PlaylistEntry> realShapedLinks(int count)
{
    static const QString groups[] = {u"News"_s, u"Sports"_s, u"Movies"_s, u"Kids"_s, u"Music"_s};
    static const QString countries[] = {u"US"_s, u"GB"_s, u"TR"_s, u"DE"_s, u"FR"_s, u"IN"_s};
    QList<PlaylistEntry> entries;
    entries.reserve(count);
    for (int i = 0; i < count; ++i) {
        entries.append(
            {QUuid::createUuid(), u"Channel %1 HD"_s.arg(i),
             *WebAddress::fromText(u"http://iptv.example.net:8080/live/user/pass/%1.m3u8"_s.arg(i)),
             WebAddress::fromText(u"https://logos.example.org/tv/%1.png"_s.arg(i % 5000)),
             groups[i % 5], countries[i % 6]});
    }
    return entries;
}

double peakResidentMegabytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0;
}

struct ChangeFigures
{
    double mainThreadMs = 0;
    double longestStallMs = 0;
    double writtenMs = 0;
};

// Runs change, then the event loop with a 1 ms heartbeat until the store says the list is written.
ChangeFigures measureChange(LocalM3UStore &store, const std::function<void()> &change)
{
    ChangeFigures figures;
    QElapsedTimer clock;
    clock.start();
    change();
    figures.mainThreadMs = double(clock.nsecsElapsed()) / 1e6;

    qint64 lastBeat = clock.nsecsElapsed();
    QTimer heartbeat;
    heartbeat.setTimerType(Qt::PreciseTimer);
    QObject::connect(&heartbeat, &QTimer::timeout, [&] {
        const qint64 now = clock.nsecsElapsed();
        figures.longestStallMs = std::max(figures.longestStallMs, double(now - lastBeat) / 1e6);
        lastBeat = now;
    });
    heartbeat.start(1);
    bool written = false;
    store.whenSaved(&store, [&](const LocalM3UStore::SaveOutcome &outcome) {
        if (outcome)
            std::fprintf(stderr, "write failed: %s\n", qPrintable(*outcome));
        figures.writtenMs = double(clock.nsecsElapsed()) / 1e6;
        written = true;
    });
    while (!written)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return figures;
}

QString figuresJson(const char *name, const ChangeFigures &f)
{
    return u"\"%1\":{\"main_ms\":%2,\"stall_ms\":%3,\"written_ms\":%4}"_s
        .arg(QLatin1StringView(name))
        .arg(f.mainThreadMs, 0, 'f', 2)
        .arg(f.longestStallMs, 0, 'f', 2)
        .arg(f.writtenMs, 0, 'f', 1);
}

int generate(int count, bool inSettings)
{
    const QList<PlaylistEntry> entries = realShapedLinks(count);
    if (inSettings) {
        QSettings settings;
        settings.setValue(PlaylistTexts::savedEntriesKey.toString(), PlaylistJson::encode(entries));
        settings.sync();
        return settings.status() == QSettings::NoError ? 0 : 1;
    }
    LocalM3UStore store;
    store.replaceAll(entries);
    return measureChange(store, [] {}).writtenMs >= 0 ? 0 : 1;
}

int measure()
{
    QElapsedTimer clock;
    clock.start();
    LocalM3UStore store;
    store.waitForLoad();
    const double loadMs = double(clock.nsecsElapsed()) / 1e6;
    const qsizetype count = store.entries().size();
    const double loadedMegabytes = peakResidentMegabytes();

    const ChangeFigures save = measureChange(store, [&] {
        store.saveOrMoveToFront(
            {u"Added"_s, *WebAddress::fromText(u"http://added.example/"_s), {}, {}, {}});
    });
    const QUuid middle = store.entries().at(store.entries().size() / 2).id;
    const ChangeFigures edit = measureChange(store, [&] {
        store.updateInPlace(middle,
                            {u"Edited"_s, *WebAddress::fromText(u"http://edited/"_s), {}, {}, {}});
    });
    const ChangeFigures remove = measureChange(store, [&] { store.remove(middle); });
    const QList<PlaylistEntry> imported = realShapedLinks(int(count));
    const ChangeFigures replace = measureChange(store, [&] { store.replaceAll(imported); });

    std::printf("%s\n",
                qPrintable(u"{\"links\":%1,\"load_ms\":%2,\"loaded_rss_mb\":%3,"_s.arg(count)
                               .arg(loadMs, 0, 'f', 1)
                               .arg(loadedMegabytes, 0, 'f', 0) +
                           figuresJson("save", save) + u","_s + figuresJson("edit", edit) + u","_s +
                           figuresJson("delete", remove) + u","_s +
                           figuresJson("replace", replace) +
                           u",\"peak_rss_mb\":%1}"_s.arg(peakResidentMegabytes(), 0, 'f', 0)));
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName(u"VelmPlayerPro"_s);
    QCoreApplication::setApplicationName(u"VelmPlayerPro"_s);
    const QStringList arguments = app.arguments();
    if (arguments.size() >= 3 && arguments.at(1) == u"generate")
        return generate(arguments.at(2).toInt(), arguments.value(3) == u"settings");
    if (arguments.size() == 2 && arguments.at(1) == u"measure")
        return measure();
    std::fprintf(stderr, "usage: velm-bench-saved-links generate COUNT [settings] | measure\n");
    return 2;
}
