#pragma once

#include "Playlist/ChannelFilter.h"
#include "Playlist/PlaylistEntry.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <vector>

// A channel list prepared for filtering: every name case-folded into one text that a single
// search pass runs over, each entry's country and group as a number, and the menu choices.
// Its answers are those of ChannelFilter for the same list; it only gets them faster, so that a
// list of a million channels filters within a frame or two.
//
// Immutable once built, so a finished index may be read from any thread.
class ChannelSearchIndex
{
public:
    // From this many entries on, the two halves of a list are indexed at once.
    static constexpr qsizetype splitEntries = 20'000;

    ChannelSearchIndex() = default;
    explicit ChannelSearchIndex(const QList<PlaylistEntry> &entries);

    qsizetype size() const { return qsizetype(m_countryOf.size()); }
    // The positions in the list of the entries that the criteria keep, in list order.
    QList<int> matchingRows(const ChannelFilterCriteria &criteria) const;
    const QStringList &countryCodes() const { return m_countryChoices; }
    const QStringList &categories() const { return m_categoryChoices; }

private:
    // Countries and groups numbered in the order they first appear.
    struct Numbering
    {
        QHash<QString, int> countryNumbers;
        QStringList countries;
        QHash<QString, int> groupNumbers;
        QStringList groups;
    };

    // Folds the names of entries [from, to) into names, at their starts, and numbers their
    // countries and groups.
    void indexEntries(const QList<PlaylistEntry> &entries, size_t from, size_t to, char16_t *names,
                      Numbering &numbering);
    // Turns numbers from on, made by a numbering of their own that holds values, into numbers of
    // the whole list's numbering, which takes the values it did not have yet.
    static void renumber(std::vector<int> &numbers, size_t from, const QStringList &values,
                         QHash<QString, int> &wholeNumbers, QStringList &wholeValues);
    // Case-folds text one code point at a time, as QString's case-insensitive search compares.
    static void appendFolded(QString &out, QStringView text);
    // The same into chars, which has room for text.
    static void fold(char16_t *chars, QStringView text);
    static int numberOf(QHash<QString, int> &numbers, QStringList &values, const QString &value);
    std::vector<char> entriesWithNameContaining(const QString &foldedQuery) const;

    QString m_foldedNames;               // each name folded and followed by a line feed
    std::vector<qsizetype> m_nameStarts; // one per entry, then the end
    std::vector<int> m_countryOf;        // into m_countries; -1 without a code
    std::vector<int> m_groupOf;          // into m_groups; -1 without a group
    QHash<QString, int> m_countryNumbers;
    QHash<QString, int> m_groupNumbers;
    QStringList m_countries;
    QStringList m_groups;
    QStringList m_foldedGroups;
    QStringList m_countryChoices;
    QStringList m_categoryChoices;
};
