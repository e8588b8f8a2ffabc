#include "Playlist/ChannelListModel.h"

#include "Base/BackgroundRelease.h"
#include "Base/BackgroundTask.h"

#include "Playlist/CountryNames.h"
#include "Playlist/PlaylistTexts.h"

#include <QFuture>

ChannelListModel::ChannelListModel(Rows rows, QObject *parent)
    : QAbstractListModel(parent), m_rowsKind(rows),
      m_index(std::make_shared<const ChannelSearchIndex>())
{}

ChannelListModel::~ChannelListModel() = default;

void ChannelListModel::setEntries(const QList<PlaylistEntry> &entries)
{
    m_incomingEntries = entries;
    refilter(true);
}

QList<PlaylistEntry> ChannelListModel::filteredEntries() const
{
    QList<PlaylistEntry> shown;
    shown.reserve(m_rows.size());
    for (int row : m_rows)
        shown.append(m_entries.at(row));
    return shown;
}

void ChannelListModel::setChannelSearch(const QString &search)
{
    if (search == m_criteria.search)
        return;
    const bool sameQuery = ChannelFilter::query(search) == ChannelFilter::query(m_criteria.search);
    m_criteria.search = search;
    Q_EMIT channelSearchChanged();
    if (!sameQuery)
        refilter(false);
}

void ChannelListModel::setSelectedCountryCode(const std::optional<QString> &code)
{
    if (code == m_criteria.countryCode)
        return;
    m_criteria.countryCode = code;
    Q_EMIT selectedCountryCodeChanged();
    refilter(false);
}

void ChannelListModel::setSelectedCategory(const std::optional<QString> &category)
{
    if (category == m_criteria.category)
        return;
    m_criteria.category = category;
    Q_EMIT selectedCategoryChanged();
    refilter(false);
}

void ChannelListModel::clearFilters()
{
    setChannelSearch({});
    setSelectedCountryCode(std::nullopt);
    setSelectedCategory(std::nullopt);
}

void ChannelListModel::refilter(bool listChanged)
{
    const quint64 generation = ++m_generation;
    const bool newList = m_incomingEntries.has_value();
    QList<PlaylistEntry> entries = newList ? *m_incomingEntries : m_entries;
    std::shared_ptr<const ChannelSearchIndex> index = newList ? nullptr : m_index;
    const ChannelFilterCriteria criteria = m_criteria;

    auto work = [entries, index, criteria]() mutable {
        if (!index)
            index = std::make_shared<const ChannelSearchIndex>(entries);
        QList<int> rows = index->matchingRows(criteria);
        return Filtered{std::move(entries), std::move(index), std::move(rows)};
    };
    if (entries.size() <= synchronousLimit) {
        m_incomingEntries.reset();
        show(work(), listChanged || newList);
        return;
    }

    setPendingGeneration(generation);
    runInBackground(this, std::move(work), [this, generation, newList](const Filtered &filtered) {
        // A newer list or filter was asked for meanwhile: its own result will come.
        if (generation != m_generation)
            return;
        if (newList)
            m_incomingEntries.reset();
        show(filtered, newList);
    });
}

void ChannelListModel::show(Filtered filtered, bool listChanged)
{
    beginResetModel();
    releaseInBackground(std::exchange(m_entries, std::move(filtered.entries)));
    releaseInBackground(std::exchange(m_index, std::move(filtered.index)));
    releaseInBackground(std::exchange(m_rows, std::move(filtered.rows)));
    endResetModel();
    // Filtering ends with the new rows in place: whoever looks as it ends sees them.
    setPendingGeneration(0);
    if (listChanged)
        Q_EMIT choicesChanged();
    Q_EMIT rowsSettled();
}

void ChannelListModel::setPendingGeneration(quint64 generation)
{
    const bool wasFiltering = isFiltering();
    m_pendingGeneration = generation;
    if (wasFiltering != isFiltering())
        Q_EMIT isFilteringChanged();
}

int ChannelListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant ChannelListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const PlaylistEntry &entry = entryAt(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return entry.name;
    case EntryRole:
        return QVariant::fromValue(entry);
    case AddressRole:
        return entry.url.text();
    case LogoRole:
        return entry.logoURL ? QVariant(entry.logoURL->text()) : QVariant();
    case CountryNameRole:
        if (entry.countryCode)
            return CountryNames::englishName(*entry.countryCode);
        return m_rowsKind == Rows::networkChannels
                   ? QVariant(PlaylistTexts::otherCountry.toString())
                   : QVariant();
    case MetadataRole:
        if (m_rowsKind == Rows::networkChannels)
            return ChannelFilter::networkRowMetadata(entry);
        if (const std::optional<QString> line = ChannelFilter::savedLinkMetadata(entry))
            return *line;
        return {};
    default:
        return {};
    }
}

QHash<int, QByteArray> ChannelListModel::roleNames() const
{
    QHash<int, QByteArray> names = QAbstractListModel::roleNames();
    names.insert(EntryRole, "entry");
    names.insert(AddressRole, "address");
    names.insert(LogoRole, "logo");
    names.insert(CountryNameRole, "countryName");
    names.insert(MetadataRole, "metadata");
    return names;
}
