#include "Playlist/ChannelFilter.h"

#include "Playlist/CountryNames.h"
#include "Playlist/PlaylistTexts.h"

#include <QCollator>
#include <QLocale>
#include <QSet>

#include <algorithm>
#include <numeric>

namespace {

bool hasText(const std::optional<QString> &value)
{
    return value && !value->isEmpty();
}

QString joined(const QString &country, const QString &group)
{
    return country + PlaylistTexts::metadataSeparator.toString() + group;
}

} // namespace

QString ChannelFilter::query(const QString &search)
{
    return search.trimmed();
}

bool ChannelFilter::matches(const PlaylistEntry &entry, const ChannelFilterCriteria &criteria)
{
    if (criteria.countryCode && entry.countryCode != criteria.countryCode)
        return false;
    if (criteria.category && entry.groupTitle != criteria.category)
        return false;
    const QString text = query(criteria.search);
    if (text.isEmpty())
        return true;
    return entry.name.contains(text, Qt::CaseInsensitive) ||
           (entry.groupTitle && entry.groupTitle->contains(text, Qt::CaseInsensitive));
}

QList<PlaylistEntry> ChannelFilter::filtered(const QList<PlaylistEntry> &entries,
                                             const ChannelFilterCriteria &criteria)
{
    QList<PlaylistEntry> kept;
    for (const PlaylistEntry &entry : entries) {
        if (matches(entry, criteria))
            kept.append(entry);
    }
    return kept;
}

QStringList ChannelFilter::countryCodes(const QList<PlaylistEntry> &entries)
{
    QStringList codes;
    QSet<QString> seen;
    for (const PlaylistEntry &entry : entries) {
        if (entry.countryCode && !seen.contains(*entry.countryCode)) {
            seen.insert(*entry.countryCode);
            codes.append(*entry.countryCode);
        }
    }
    QStringList names;
    names.reserve(codes.size());
    for (const QString &code : std::as_const(codes))
        names.append(CountryNames::englishName(code));
    sortLocalized(codes, names);
    return codes;
}

QStringList ChannelFilter::categories(const QList<PlaylistEntry> &entries)
{
    QStringList groups;
    QSet<QString> seen;
    for (const PlaylistEntry &entry : entries) {
        if (hasText(entry.groupTitle) && !seen.contains(*entry.groupTitle)) {
            seen.insert(*entry.groupTitle);
            groups.append(*entry.groupTitle);
        }
    }
    sortLocalized(groups, groups);
    return groups;
}

void ChannelFilter::sortLocalized(QStringList &texts, const QStringList &keys)
{
    // The C locale has no collation of its own (and Qt's ignores letter case settings there):
    // English rules stand in for it.
    const QLocale locale = QLocale().language() == QLocale::C
                               ? QLocale(QLocale::English, QLocale::UnitedStates)
                               : QLocale();
    QCollator collator(locale);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    // Sort keys make each comparison a byte compare, which matters for lists with many
    // distinct groups.
    std::vector<QCollatorSortKey> sortKeys;
    sortKeys.reserve(keys.size());
    for (const QString &key : keys)
        sortKeys.push_back(collator.sortKey(key));
    std::vector<qsizetype> order(texts.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](qsizetype a, qsizetype b) {
        return sortKeys[a].compare(sortKeys[b]) < 0;
    });
    QStringList sorted;
    sorted.reserve(texts.size());
    for (qsizetype index : order)
        sorted.append(texts.at(index));
    texts = std::move(sorted);
}

QString ChannelFilter::networkRowMetadata(const PlaylistEntry &entry)
{
    const QString country = entry.countryCode ? CountryNames::englishName(*entry.countryCode)
                                              : PlaylistTexts::otherCountry.toString();
    if (!hasText(entry.groupTitle))
        return country;
    if (country == PlaylistTexts::otherCountry)
        return *entry.groupTitle;
    return joined(country, *entry.groupTitle);
}

std::optional<QString> ChannelFilter::savedLinkMetadata(const PlaylistEntry &entry)
{
    if (entry.countryCode) {
        const QString country = CountryNames::englishName(*entry.countryCode);
        return hasText(entry.groupTitle) ? joined(country, *entry.groupTitle) : country;
    }
    if (hasText(entry.groupTitle))
        return *entry.groupTitle;
    return std::nullopt;
}
