#include "Playlist/ChannelSearchIndex.h"

#include "Base/MemoryPrefault.h"
#include "Base/WorkBeside.h"

#include "Playlist/CountryNames.h"

#include <QStringMatcher>

#include <algorithm>

ChannelSearchIndex::ChannelSearchIndex(const QList<PlaylistEntry> &entries)
{
    const auto count = size_t(entries.size());
    m_nameStarts.reserve(count + 1);
    m_countryOf.reserve(count);
    m_groupOf.reserve(count);
    // Megabytes for a long list, filled at once: mapped in a call per block, not a fault a page.
    MemoryPrefault::prepareReservedRoom(m_nameStarts);
    MemoryPrefault::prepareReservedRoom(m_countryOf);
    MemoryPrefault::prepareReservedRoom(m_groupOf);
    qsizetype nameLength = 0;
    for (const PlaylistEntry &entry : entries) {
        m_nameStarts.push_back(nameLength);
        nameLength += entry.name.size() + 1;
    }
    m_nameStarts.push_back(nameLength);
    m_foldedNames = QString(nameLength, Qt::Uninitialized);
    MemoryPrefault::prepareReservedRoom(m_foldedNames);
    m_countryOf.resize(count);
    m_groupOf.resize(count);

    // Each half is numbered on its own, and the second half's numbers then follow the first's.
    Numbering halves[2];
    const size_t middle = count >= size_t(splitEntries) ? count / 2 : count;
    char16_t *nameChars = reinterpret_cast<char16_t *>(m_foldedNames.data());
    shareParts(middle < count ? 2 : 1, [&](qsizetype half) {
        indexEntries(entries, half == 0 ? 0 : middle, half == 0 ? middle : count, nameChars,
                     halves[half]);
    });
    m_countryNumbers = std::move(halves[0].countryNumbers);
    m_countries = std::move(halves[0].countries);
    m_groupNumbers = std::move(halves[0].groupNumbers);
    m_groups = std::move(halves[0].groups);
    renumber(m_countryOf, middle, halves[1].countries, m_countryNumbers, m_countries);
    renumber(m_groupOf, middle, halves[1].groups, m_groupNumbers, m_groups);

    for (const QString &group : std::as_const(m_groups)) {
        QString folded;
        appendFolded(folded, group);
        m_foldedGroups.append(folded);
        if (!group.isEmpty())
            m_categoryChoices.append(group);
    }
    ChannelFilter::sortLocalized(m_categoryChoices, m_categoryChoices);
    m_countryChoices = m_countries;
    QStringList names;
    for (const QString &code : std::as_const(m_countries))
        names.append(CountryNames::englishName(code));
    ChannelFilter::sortLocalized(m_countryChoices, names);
}

void ChannelSearchIndex::indexEntries(const QList<PlaylistEntry> &entries, size_t from, size_t to,
                                      char16_t *names, Numbering &numbering)
{
    for (size_t i = from; i < to; ++i) {
        const PlaylistEntry &entry = entries.at(qsizetype(i));
        char16_t *name = names + m_nameStarts[i];
        fold(name, entry.name);
        name[entry.name.size()] = u'\n';
        m_countryOf[i] = entry.countryCode ? numberOf(numbering.countryNumbers, numbering.countries,
                                                      *entry.countryCode)
                                           : -1;
        m_groupOf[i] = entry.groupTitle
                           ? numberOf(numbering.groupNumbers, numbering.groups, *entry.groupTitle)
                           : -1;
    }
}

void ChannelSearchIndex::renumber(std::vector<int> &numbers, size_t from, const QStringList &values,
                                  QHash<QString, int> &wholeNumbers, QStringList &wholeValues)
{
    std::vector<int> whole;
    whole.reserve(size_t(values.size()));
    for (const QString &value : values)
        whole.push_back(numberOf(wholeNumbers, wholeValues, value));
    for (size_t i = from; i < numbers.size(); ++i) {
        if (numbers[i] >= 0)
            numbers[i] = whole[size_t(numbers[i])];
    }
}

int ChannelSearchIndex::numberOf(QHash<QString, int> &numbers, QStringList &values,
                                 const QString &value)
{
    const auto found = numbers.constFind(value);
    if (found != numbers.cend())
        return *found;
    const int number = int(values.size());
    numbers.insert(value, number);
    values.append(value);
    return number;
}

void ChannelSearchIndex::appendFolded(QString &out, QStringView text)
{
    const qsizetype start = out.size();
    out.resize(start + text.size());
    fold(reinterpret_cast<char16_t *>(out.data()) + start, text);
}

void ChannelSearchIndex::fold(char16_t *chars, QStringView text)
{
    std::copy(text.utf16(), text.utf16() + text.size(), chars);
    const qsizetype length = text.size();
    for (qsizetype i = 0; i < length; ++i) {
        const char16_t c = chars[i];
        if (c < 0x80) {
            if (c >= u'A' && c <= u'Z')
                chars[i] = char16_t(c + 32);
        } else if (QChar::isHighSurrogate(c) && i + 1 < length &&
                   QChar::isLowSurrogate(chars[i + 1])) {
            const char32_t folded = QChar::toCaseFolded(QChar::surrogateToUcs4(c, chars[i + 1]));
            chars[i] = QChar::highSurrogate(folded);
            chars[i + 1] = QChar::lowSurrogate(folded);
            ++i;
        } else {
            chars[i] = QChar::toCaseFolded(c);
        }
    }
}

std::vector<char> ChannelSearchIndex::entriesWithNameContaining(const QString &foldedQuery) const
{
    std::vector<char> hits(m_countryOf.size(), 0);
    const QStringMatcher matcher(foldedQuery, Qt::CaseSensitive);
    const qsizetype length = foldedQuery.size();
    qsizetype from = 0;
    for (;;) {
        const qsizetype position = matcher.indexIn(m_foldedNames, from);
        if (position < 0)
            break;
        const auto next = std::upper_bound(m_nameStarts.begin(), m_nameStarts.end(), position);
        const auto entry = size_t(next - m_nameStarts.begin()) - 1;
        // A query with a line feed could span two names; such a find is no match.
        if (position + length < *next) {
            hits[entry] = 1;
            from = *next;
        } else {
            from = position + 1;
        }
    }
    return hits;
}

QList<int> ChannelSearchIndex::matchingRows(const ChannelFilterCriteria &criteria) const
{
    QList<int> rows;
    int country = -1;
    int group = -1;
    if (criteria.countryCode) {
        country = m_countryNumbers.value(*criteria.countryCode, -2);
        if (country < 0)
            return rows;
    }
    if (criteria.category) {
        group = m_groupNumbers.value(*criteria.category, -2);
        if (group < 0)
            return rows;
    }
    const auto passesChoices = [&](size_t i) {
        return (country < 0 || m_countryOf[i] == country) && (group < 0 || m_groupOf[i] == group);
    };

    const QString query = ChannelFilter::query(criteria.search);
    const size_t count = m_countryOf.size();
    if (query.isEmpty()) {
        // Without a choice every row is shown: room for all of them at once.
        if (country < 0 && group < 0)
            rows.reserve(qsizetype(count));
        for (size_t i = 0; i < count; ++i) {
            if (passesChoices(i))
                rows.append(int(i));
        }
        return rows;
    }

    QString foldedQuery;
    appendFolded(foldedQuery, query);
    std::vector<char> groupHits(size_t(m_foldedGroups.size()));
    for (qsizetype g = 0; g < m_foldedGroups.size(); ++g)
        groupHits[size_t(g)] = m_foldedGroups.at(g).contains(foldedQuery);
    const auto groupFound = [&](size_t i) {
        return m_groupOf[i] >= 0 && groupHits[size_t(m_groupOf[i])];
    };
    if (country >= 0 || group >= 0) {
        // A chosen country or category leaves few names to search: each on its own.
        const QStringView names(m_foldedNames);
        for (size_t i = 0; i < count; ++i) {
            if (!passesChoices(i))
                continue;
            const QStringView name =
                names.sliced(m_nameStarts[i], m_nameStarts[i + 1] - m_nameStarts[i] - 1);
            if (groupFound(i) || name.contains(foldedQuery))
                rows.append(int(i));
        }
        return rows;
    }
    const std::vector<char> nameHits = entriesWithNameContaining(foldedQuery);
    for (size_t i = 0; i < count; ++i) {
        if (nameHits[i] || groupFound(i))
            rows.append(int(i));
    }
    return rows;
}
