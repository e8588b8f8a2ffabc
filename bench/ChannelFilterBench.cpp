// Channel filter benchmark: "velm-bench-filter FILE" reads a playlist and prints Markdown table
// rows: the time to index the list with its menu choices, and the latency of typical filters
// through the index and through two peers on the same entries (the plain rule applied entry by
// entry, and Qt's QSortFilterProxyModel with a case-insensitive pattern on one role). Each time
// is the median of seven runs; peers carry their ratio to ours.

#include "Playlist/ChannelFilter.h"
#include "Playlist/ChannelSearchIndex.h"
#include "Playlist/PlaylistParser.h"

#include <QAbstractListModel>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QSortFilterProxyModel>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr int runs = 7;
constexpr qsizetype proxyLimit = 100'000;

// prepare runs before each timed run, outside the time.
double medianMilliseconds(const std::function<qsizetype()> &work, qsizetype &kept,
                          const std::function<void()> &prepare = {})
{
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        if (prepare)
            prepare();
        QElapsedTimer timer;
        timer.start();
        kept = work();
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times[runs / 2];
}

struct Measure
{
    double ms = -1; // -1: not measured
    qsizetype kept = 0;
};

Measure measure(const std::function<qsizetype()> &work, const std::function<void()> &prepare = {})
{
    Measure result;
    result.ms = medianMilliseconds(work, result.kept, prepare);
    return result;
}

QString cell(const Measure &measure, const Measure &ours)
{
    if (measure.ms < 0)
        return u"–"_s;
    if (&measure == &ours)
        return QString::number(measure.ms, 'f', 2);
    return u"%1 (%2×)"_s.arg(QString::number(measure.ms, 'f', 2))
        .arg(QString::number(measure.ms / std::max(ours.ms, 0.001), 'f', 1));
}

// One Markdown row: the work, our time, the peers' times with their ratio to ours, rows kept.
void printRow(qsizetype entries, const QString &what, const Measure &ours, const Measure &plain,
              const Measure &proxy)
{
    std::printf("| %s | %s | %s | %s | %s | %lld |\n",
                qPrintable(QLocale(QLocale::English).toString(qlonglong(entries))),
                qPrintable(what), qPrintable(cell(ours, ours)), qPrintable(cell(plain, ours)),
                qPrintable(cell(proxy, ours)), qlonglong(ours.kept));
    std::fflush(stdout);
}

// The entries as a plain list model: one name per row, group and country as extra roles.
class EntryListModel : public QAbstractListModel
{
public:
    enum
    {
        GroupRole = Qt::UserRole + 1,
        CountryRole
    };
    explicit EntryListModel(const QList<PlaylistEntry> &entries) : m_entries(entries) {}
    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : int(m_entries.size());
    }
    QVariant data(const QModelIndex &index, int role) const override
    {
        const PlaylistEntry &entry = m_entries.at(index.row());
        if (role == GroupRole)
            return entry.groupTitle.value_or(QString());
        if (role == CountryRole)
            return entry.countryCode.value_or(QString());
        return entry.name;
    }

private:
    QList<PlaylistEntry> m_entries;
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: velm-bench-filter PLAYLIST\n");
        return 2;
    }
    const QString path = QString::fromLocal8Bit(argv[1]);
    const QString file = QFileInfo(path).fileName();
    // Read past the size limit of imports: the biggest lists here are larger.
    QFile input(path);
    if (!input.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", argv[1]);
        return 1;
    }
    const QList<PlaylistEntry> entries = PlaylistParser::parse(
        input.readAll(), WebAddress::fromLocalFile(QFileInfo(path).absoluteFilePath()));
    const qsizetype count = entries.size();

    ChannelSearchIndex index;
    const Measure built = measure([&] {
        index = ChannelSearchIndex(entries);
        return index.size();
    });
    const Measure choices = measure([&] {
        return ChannelFilter::countryCodes(entries).size() +
               ChannelFilter::categories(entries).size();
    });
    printRow(count, u"index with menu choices (once per list) / menu choices"_s, built, choices,
             {});

    const QString country = index.countryCodes().value(index.countryCodes().size() / 2);
    const struct
    {
        QString what;
        ChannelFilterCriteria criteria;
    } filters[] = {
        {u"search \"news\""_s, {u"news"_s, std::nullopt, std::nullopt}},
        {u"search \"e\""_s, {u"e"_s, std::nullopt, std::nullopt}},
        {u"search \"zzq\" (no match)"_s, {u"zzq"_s, std::nullopt, std::nullopt}},
        {u"country"_s, {QString(), country, std::nullopt}},
        {u"category"_s, {QString(), std::nullopt, u"News"_s}},
        {u"search, country and category"_s, {u"tv"_s, country, u"News"_s}},
    };
    EntryListModel source(entries);
    QSortFilterProxyModel proxy;
    proxy.setSourceModel(&source);
    proxy.setFilterCaseSensitivity(Qt::CaseInsensitive);
    for (const auto &filter : filters) {
        const Measure ours = measure([&] { return index.matchingRows(filter.criteria).size(); });
        const Measure plain =
            measure([&] { return ChannelFilter::filtered(entries, filter.criteria).size(); });
        // The proxy filters one role at a time: names for a search, or an exact choice.
        Measure byProxy;
        const bool bySearch = !filter.criteria.search.isEmpty();
        // Beyond 100k rows the proxy's updates take minutes (its row mapping grows worse than
        // linearly), so it is left out there.
        if (count <= proxyLimit &&
            (!bySearch || (!filter.criteria.countryCode && !filter.criteria.category))) {
            proxy.setFilterRole(bySearch                      ? int(Qt::DisplayRole)
                                : filter.criteria.countryCode ? int(EntryListModel::CountryRole)
                                                              : int(EntryListModel::GroupRole));
            const QString pattern =
                bySearch ? QRegularExpression::escape(filter.criteria.search)
                         : u"^"_s +
                               QRegularExpression::escape(filter.criteria.countryCode.value_or(
                                   filter.criteria.category.value_or(QString()))) +
                               u"$"_s;
            byProxy = measure(
                [&] {
                    proxy.setFilterRegularExpression(
                        QRegularExpression(pattern, QRegularExpression::CaseInsensitiveOption));
                    return qsizetype(proxy.rowCount());
                },
                [&] { proxy.setFilterRegularExpression(QRegularExpression()); });
        }
        printRow(count, filter.what, ours, plain, byProxy);
    }
    return 0;
}
