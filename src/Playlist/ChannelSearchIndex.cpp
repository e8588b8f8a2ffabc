#include "Playlist/ChannelSearchIndex.h"

#include "Playlist/CountryNames.h"

#include <QStringMatcher>

#include <algorithm>

ChannelSearchIndex::ChannelSearchIndex(const QList<PlaylistEntry> &entries)
{
    const auto count = size_t(entries.size());
    m_nameStarts.reserve(count + 1);
    m_countryOf.reserve(count);
    m_groupOf.reserve(count);
    qsizetype nameLength = 0;
    for (const PlaylistEntry &entry : entries)
        nameLength += entry.name.size() + 1;
    m_foldedNames.reserve(nameLength);

    for (const PlaylistEntry &entry : entries) {
        m_nameStarts.push_back(m_foldedNames.size());
        appendFolded(m_foldedNames, entry.name);
        m_foldedNames.append(u'\n');
        m_countryOf.push_back(
            entry.countryCode ? numberOf(m_countryNumbers, m_countries, *entry.countryCode) : -1);
        m_groupOf.push_back(entry.groupTitle ? numberOf(m_groupNumbers, m_groups, *entry.groupTitle)
                                             : -1);
    }
    m_nameStarts.push_back(m_foldedNames.size());

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
    out.append(text);
    char16_t *chars = reinterpret_cast<char16_t *>(out.data()) + start;
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
