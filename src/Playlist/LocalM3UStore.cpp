#include "Playlist/LocalM3UStore.h"

#include "Playlist/PlaylistJson.h"
#include "Playlist/PlaylistTexts.h"

#include <QSettings>

LocalM3UStore::LocalM3UStore(QObject *parent) : QObject(parent)
{
    load();
}

namespace {

// The list stored under key; nothing when there is none or it does not decode as a whole.
QList<PlaylistEntry> storedList(const QSettings &settings, QStringView key)
{
    const QVariant stored = settings.value(key.toString());
    if (!stored.isValid())
        return {};
    return PlaylistJson::decodeList(stored.toByteArray()).value_or(QList<PlaylistEntry>());
}

} // namespace

void LocalM3UStore::load()
{
    const QSettings settings;
    m_entries = storedList(settings, PlaylistTexts::savedEntriesKey);
    m_previous = storedList(settings, PlaylistTexts::previousEntriesKey);
}

void LocalM3UStore::setEntries(const QList<PlaylistEntry> &entries)
{
    m_entries = entries;
    Q_EMIT entriesChanged();
}

bool LocalM3UStore::contains(const WebAddress &url) const
{
    return std::any_of(m_entries.cbegin(), m_entries.cend(),
                       [&](const PlaylistEntry &entry) { return entry.url == url; });
}

bool LocalM3UStore::persist()
{
    QSettings settings;
    settings.setValue(PlaylistTexts::savedEntriesKey.toString(), PlaylistJson::encode(m_entries));
    // Written now rather than at some later point, so that a crash cannot take a change with it;
    // the settings file is replaced whole, never left half-written.
    settings.sync();
    return settings.status() == QSettings::NoError;
}

QString LocalM3UStore::savedName(const LocalLinkFields &fields)
{
    const QString trimmed = fields.name.trimmed();
    if (!trimmed.isEmpty())
        return trimmed;
    QString fileName = fields.url.lastPathComponent().value_or(QString());
    if (const QString extension = fields.url.pathExtension(); !extension.isEmpty())
        fileName.chop(extension.size() + 1);
    return fileName;
}

PlaylistEntry LocalM3UStore::saveOrMoveToFront(const LocalLinkFields &fields)
{
    const PlaylistEntry entry{QUuid::createUuid(), savedName(fields), fields.url,
                              fields.logoURL,      fields.category,   fields.countryCode};
    QList<PlaylistEntry> entries = m_entries;
    const auto same = std::find_if(entries.begin(), entries.end(), [&](const PlaylistEntry &saved) {
        return saved.url == entry.url;
    });
    if (same != entries.end())
        entries.erase(same);
    entries.prepend(entry);
    setEntries(entries);
    persist();
    return entry;
}

bool LocalM3UStore::updateInPlace(const QUuid &id, const LocalLinkFields &fields)
{
    QList<PlaylistEntry> entries = m_entries;
    const auto edited = std::find_if(entries.begin(), entries.end(),
                                     [&](const PlaylistEntry &saved) { return saved.id == id; });
    if (edited == entries.end())
        return false;
    *edited = PlaylistEntry{
        id, fields.name.trimmed(), fields.url, fields.logoURL, fields.category, fields.countryCode};
    setEntries(entries);
    persist();
    return true;
}

void LocalM3UStore::remove(const QUuid &id)
{
    QList<PlaylistEntry> entries = m_entries;
    entries.removeIf([&](const PlaylistEntry &saved) { return saved.id == id; });
    setEntries(entries);
    persist();
}

void LocalM3UStore::removeAll()
{
    setEntries({});
    persist();
}

void LocalM3UStore::replaceAll(const QList<PlaylistEntry> &entries)
{
    if (!m_entries.isEmpty() && m_entries != entries)
        keepAsPrevious(m_entries);
    setEntries(entries);
    persist();
}

void LocalM3UStore::restorePrevious()
{
    if (m_previous.isEmpty())
        return;
    const QList<PlaylistEntry> restored = m_previous;
    keepAsPrevious(m_entries);
    setEntries(restored);
    persist();
}

void LocalM3UStore::keepAsPrevious(const QList<PlaylistEntry> &entries)
{
    m_previous = entries;
    QSettings().setValue(PlaylistTexts::previousEntriesKey.toString(),
                         PlaylistJson::encode(m_previous));
    Q_EMIT previousChanged();
}
