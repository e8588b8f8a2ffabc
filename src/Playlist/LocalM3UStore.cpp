#include "Playlist/LocalM3UStore.h"

#include "Playlist/PlaylistTexts.h"

#include <QThreadPool>

LocalM3UStore::LocalM3UStore(QObject *parent)
    : LocalM3UStore(SavedLinksFile::defaultFolder(), parent)
{}

LocalM3UStore::LocalM3UStore(const QString &folder, QObject *parent)
    : QObject(parent), m_savedFile(folder, PlaylistTexts::savedEntriesKey.toString()),
      m_previousFile(folder, PlaylistTexts::previousEntriesKey.toString())
{
    startLoading();
}

LocalM3UStore::~LocalM3UStore()
{
    if (m_isLoaded && m_lastOutcome && m_settledGeneration == m_requestedGeneration)
        persist();
}

void LocalM3UStore::startLoading()
{
    auto stored = std::make_shared<std::promise<StoredLists>>();
    m_stored = stored->get_future().share();
    m_worker.run([this, stored, saved = m_savedFile, previous = m_previousFile] {
        stored->set_value({saved.read(), previous.read()});
        QMetaObject::invokeMethod(this, &LocalM3UStore::waitForLoad, Qt::QueuedConnection);
        // The settings file is only touched once the list has moved out of it, and off this
        // thread: a lock that a crashed process left on it can hold a writer for half a minute.
        QThreadPool::globalInstance()->start([saved, previous] {
            saved.forgetSettingsValue();
            previous.forgetSettingsValue();
        });
    });
}

void LocalM3UStore::waitForLoad()
{
    if (m_isLoaded)
        return;
    const StoredLists &stored = m_stored.get();
    m_isLoaded = true;
    m_previous = stored.previous;
    m_entries = stored.saved;
    m_stored = {};
    if (!m_previous.isEmpty())
        Q_EMIT previousChanged();
    Q_EMIT entriesChanged();
    Q_EMIT loadedChanged();
}

void LocalM3UStore::setEntries(const QList<PlaylistEntry> &entries)
{
    waitForLoad();
    m_entries = entries;
    Q_EMIT entriesChanged();
}

bool LocalM3UStore::contains(const WebAddress &url) const
{
    return std::any_of(m_entries.cbegin(), m_entries.cend(),
                       [&](const PlaylistEntry &entry) { return entry.url == url; });
}

void LocalM3UStore::persist()
{
    waitForLoad();
    const quint64 generation = ++m_requestedGeneration;
    m_worker.write(m_savedFile, m_entries, [this, generation](const SaveOutcome &outcome) {
        QMetaObject::invokeMethod(
            this, [this, generation, outcome] { settle(generation, outcome); },
            Qt::QueuedConnection);
    });
}

void LocalM3UStore::whenSaved(QObject *context, std::function<void(const SaveOutcome &)> done)
{
    if (m_settledGeneration < m_requestedGeneration) {
        m_saveWaiters.push_back({m_requestedGeneration, context, std::move(done)});
        return;
    }
    QMetaObject::invokeMethod(
        context, [done = std::move(done), outcome = m_lastOutcome] { done(outcome); },
        Qt::QueuedConnection);
}

void LocalM3UStore::settle(quint64 generation, const SaveOutcome &outcome)
{
    m_settledGeneration = std::max(m_settledGeneration, generation);
    m_lastOutcome = outcome;
    reportFailure(outcome);
    std::vector<SaveWaiter> waiting;
    std::swap(waiting, m_saveWaiters);
    for (SaveWaiter &waiter : waiting) {
        if (waiter.generation > generation)
            m_saveWaiters.push_back(std::move(waiter));
        else if (waiter.context)
            waiter.done(outcome);
    }
}

void LocalM3UStore::reportFailure(const SaveOutcome &outcome)
{
    if (outcome)
        Q_EMIT saveFailed(*outcome);
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
    waitForLoad();
    const PlaylistEntry entry{QUuid::createUuid(), savedName(fields), fields.url,
                              fields.logoURL,      fields.category,   fields.countryCode};
    const auto same =
        std::find_if(m_entries.cbegin(), m_entries.cend(),
                     [&](const PlaylistEntry &saved) { return saved.url == entry.url; });
    // Made in one pass: a list of a million links is copied once, not copied, moved up and
    // moved again.
    QList<PlaylistEntry> entries;
    entries.reserve(m_entries.size() + 1);
    entries.append(entry);
    for (auto saved = m_entries.cbegin(); saved != m_entries.cend(); ++saved) {
        if (saved != same)
            entries.append(*saved);
    }
    setEntries(entries);
    persist();
    return entry;
}

bool LocalM3UStore::updateInPlace(const QUuid &id, const LocalLinkFields &fields)
{
    waitForLoad();
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
    waitForLoad();
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
    waitForLoad();
    if (!m_entries.isEmpty() && m_entries != entries)
        keepAsPrevious(m_entries);
    setEntries(entries);
    persist();
}

void LocalM3UStore::restorePrevious()
{
    waitForLoad();
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
    m_worker.write(m_previousFile, m_previous, [this](const SaveOutcome &outcome) {
        QMetaObject::invokeMethod(
            this, [this, outcome] { reportFailure(outcome); }, Qt::QueuedConnection);
    });
    Q_EMIT previousChanged();
}
