// Parser benchmark. "generate N FILE" writes a realistic playlist of N channels; "measure FILE"
// reads it and prints one JSON line with the time of decoding and parsing its bytes and the
// growth of the process's peak resident memory meanwhile. "reader FILE RUNS" times the whole
// in-memory reader (survey, parse, guide keys) as the player runs it on a downloaded list.

#include "Playlist/PlaylistParser.h"
#include "Playlist/PlaylistReader.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <cstdio>
#include <fstream>
#include <string>

namespace {

constexpr const char *groups[] = {
    "News",      "Sports",  "Movies",    "Kids",    "Music",     "Documentary", "Entertainment",
    "Religious", "General", "Lifestyle", "Comedy",  "Business",  "Cooking",     "Travel",
    "Weather",   "Auto",    "Classic",   "Culture", "Education", "Family",      "Legislative",
    "Outdoor",   "Science", "Series",    "Shop"};
constexpr const char *countries[] = {"us", "uk", "de", "fr", "es", "it", "br", "in", "ru", "tr",
                                     "mx", "ar", "ca", "cn", "jp", "kr", "ng", "ae", "pl", "nl"};
constexpr const char *words[] = {"Channel", "TV",    "Plus", "News",  "Live", "One",  "Sport",
                                 "Cinema",  "Radio", "Kids", "World", "Hits", "Gold", "Max"};

template <typename T, size_t N>
const T &pick(QRandomGenerator &random, const T (&items)[N])
{
    return items[random.bounded(quint32(N))];
}

long kilobytesOf(const char *field)
{
    std::ifstream status("/proc/self/status");
    std::string line;
    const std::string prefix = std::string(field) + ":";
    while (std::getline(status, line)) {
        if (line.rfind(prefix, 0) == 0)
            return std::stol(line.substr(prefix.size()));
    }
    return -1;
}

// Starts a new peak: from here on VmHWM counts from the current resident size.
void resetPeakMemory()
{
    std::ofstream("/proc/self/clear_refs") << "5";
}

int generate(long count, const char *path)
{
    QRandomGenerator random(20261122); // the same files on every machine
    std::ofstream out(path, std::ios::binary);
    out << "#EXTM3U url-tvg=\"https://epg.example.org/guide.xml.gz\"\n";
    for (long i = 0; i < count; ++i) {
        const std::string country = pick(random, countries);
        std::string name =
            std::string(pick(random, words)) + " " + pick(random, words) + " " + std::to_string(i);
        std::string id = name;
        for (char &c : id)
            c = c == ' ' ? '.' : c;
        out << "#EXTINF:-1 tvg-id=\"" << id << "." << country << "@HD\" tvg-name=\"" << name
            << "\"";
        if (random.bounded(10) < 8)
            out << " tvg-logo=\"https://i.imgur.com/" << random.generate() << "x"
                << random.bounded(1000) << ".png\"";
        if (random.bounded(10) < 6)
            out << " tvg-country=\"" << country << "\"";
        out << " tvg-language=\"English\" group-title=\"" << pick(random, groups) << "\"," << name
            << " (" << (random.bounded(2) ? "1080p" : "720p") << ")\n";
        if (random.bounded(100) < 3)
            out << "#EXTVLCOPT:http-user-agent=Mozilla/5.0 (X11; Linux x86_64)\n";
        if (random.bounded(100) < 5)
            out << "chunks/ch" << i << ".m3u8\n";
        else
            out << "https://cdn" << random.bounded(40) << ".stream-example.net/live/ch" << i
                << "/index.m3u8\n";
    }
    return out.good() ? 0 : 1;
}

int measure(const char *path)
{
    QFile file(QString::fromLocal8Bit(path));
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", path);
        return 1;
    }
    const qint64 bytes = file.size();
    const QByteArray text = file.readAll();
    file.close();
    const WebAddress base = WebAddress::fromLocalFile(QFileInfo(file).absoluteFilePath());

    resetPeakMemory();
    const long before = kilobytesOf("VmRSS");
    QElapsedTimer timer;
    timer.start();
    const QList<PlaylistEntry> entries = PlaylistParser::parse(text, base);
    const double seconds = double(timer.nsecsElapsed()) / 1e9;
    const long peak = kilobytesOf("VmHWM");

    std::printf("{\"parser\":\"velm\",\"bytes\":%lld,\"entries\":%lld,\"seconds\":%.6f,"
                "\"peakBytesPerEntry\":%.1f}\n",
                static_cast<long long>(bytes), static_cast<long long>(entries.size()), seconds,
                entries.isEmpty() ? 0.0 : double(peak - before) * 1024.0 / double(entries.size()));
    return 0;
}

// What the player runs on a downloaded list, RUNS times in one process: the first run meets fresh
// memory, the later ones reuse what the runs before freed.
int timeReader(const char *path, int runs)
{
    QFile file(QString::fromLocal8Bit(path));
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", path);
        return 1;
    }
    const QByteArray text = file.readAll();
    const WebAddress base = *WebAddress::fromText(QStringLiteral("http://127.0.0.1/list.m3u"));
    for (int run = 1; run <= runs; ++run) {
        QElapsedTimer timer;
        timer.start();
        const PlaylistReadResult result = PlaylistReader::read(text, base);
        std::printf("{\"run\":%d,\"entries\":%lld,\"ms\":%.1f}\n", run,
                    static_cast<long long>(result.entries.size()),
                    double(timer.nsecsElapsed()) / 1e6);
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "generate" && argc == 4)
        return generate(std::stol(argv[2]), argv[3]);
    if (command == "measure" && argc == 3)
        return measure(argv[2]);
    if (command == "reader" && argc == 4)
        return timeReader(argv[2], std::stoi(argv[3]));
    std::fprintf(stderr,
                 "usage: velm-bench-parse generate COUNT FILE | measure FILE | reader FILE RUNS\n");
    return 2;
}
