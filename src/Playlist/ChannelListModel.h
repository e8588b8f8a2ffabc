#pragma once

#include "Playlist/ChannelFilter.h"
#include "Playlist/ChannelSearchIndex.h"
#include "Playlist/PlaylistEntry.h"

#include <QAbstractListModel>
#include <QList>
#include <QStringList>

#include <memory>
#include <optional>

// One channel list as the sidebar shows it: the whole list, the search text and the two menu
// choices, and the rows those keep, in list order. Views show the rows (a list view draws only
// the visible ones, so a million rows cost nothing to show) and read the menus' choices here.
//
// Long lists are indexed and filtered on a worker thread, so typing in the search field never
// waits for them: the rows shown stay those of the previous filter until the newest result
// arrives, and results of superseded filters are dropped.
class ChannelListModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(
        QString channelSearch READ channelSearch WRITE setChannelSearch NOTIFY channelSearchChanged)
    Q_PROPERTY(std::optional<QString> selectedCountryCode READ selectedCountryCode WRITE
                   setSelectedCountryCode NOTIFY selectedCountryCodeChanged)
    Q_PROPERTY(std::optional<QString> selectedCategory READ selectedCategory WRITE
                   setSelectedCategory NOTIFY selectedCategoryChanged)
    Q_PROPERTY(QStringList countryCodes READ countryCodes NOTIFY choicesChanged)
    Q_PROPERTY(QStringList categories READ categories NOTIFY choicesChanged)
    Q_PROPERTY(int filteredCount READ filteredCount NOTIFY rowsSettled)
    Q_PROPERTY(bool isFiltering READ isFiltering NOTIFY isFilteringChanged)

public:
    // Which metadata rule the rows follow.
    enum class Rows
    {
        networkChannels,
        savedLinks
    };
    enum Role
    {
        EntryRole = Qt::UserRole + 1, // the PlaylistEntry
        AddressRole,                  // its address text
        LogoRole,                     // its logo address text, or nothing
        CountryNameRole,              // "Germany"; "Other" for a network row without a code
        MetadataRole,                 // the row's metadata line, or nothing
    };
    // Lists up to this length are indexed and filtered at once on the calling thread.
    static constexpr qsizetype synchronousLimit = 20'000;

    explicit ChannelListModel(Rows rows, QObject *parent = nullptr);
    ~ChannelListModel() override;

    void setEntries(const QList<PlaylistEntry> &entries);
    const QList<PlaylistEntry> &entries() const { return m_entries; }
    // The entry shown at a row of the filtered list.
    const PlaylistEntry &entryAt(int row) const { return m_entries.at(m_rows.at(row)); }
    // The entries shown, in order.
    QList<PlaylistEntry> filteredEntries() const;

    const QString &channelSearch() const { return m_criteria.search; }
    const std::optional<QString> &selectedCountryCode() const { return m_criteria.countryCode; }
    const std::optional<QString> &selectedCategory() const { return m_criteria.category; }
    void setChannelSearch(const QString &search);
    void setSelectedCountryCode(const std::optional<QString> &code);
    void setSelectedCategory(const std::optional<QString> &category);
    // Empties the search and clears both menu choices.
    void clearFilters();

    QStringList countryCodes() const { return m_index->countryCodes(); }
    QStringList categories() const { return m_index->categories(); }
    int filteredCount() const { return int(m_rows.size()); }
    bool isFiltering() const { return m_pendingGeneration != 0; }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void channelSearchChanged();
    void selectedCountryCodeChanged();
    void selectedCategoryChanged();
    void choicesChanged();
    void isFilteringChanged();
    // The rows now match the current list and criteria.
    void rowsSettled();

private:
    struct Filtered
    {
        QList<PlaylistEntry> entries;
        std::shared_ptr<const ChannelSearchIndex> index;
        QList<int> rows;
    };

    void refilter(bool listChanged);
    void show(Filtered filtered, bool listChanged);
    void setPendingGeneration(quint64 generation);

    Rows m_rowsKind;
    ChannelFilterCriteria m_criteria;
    // What is shown: the list, its index and the kept rows always belong together.
    QList<PlaylistEntry> m_entries;
    std::shared_ptr<const ChannelSearchIndex> m_index;
    QList<int> m_rows;
    // The list waiting to be indexed, when it is not the one shown yet.
    std::optional<QList<PlaylistEntry>> m_incomingEntries;
    quint64 m_generation = 0;
    quint64 m_pendingGeneration = 0; // 0: nothing under way
};
