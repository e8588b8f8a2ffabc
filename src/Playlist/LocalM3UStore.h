#pragma once

#include "Playlist/PlaylistEntry.h"
#include "Playlist/SavedLinksFile.h"
#include "Playlist/SavedLinksWorker.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUuid>

#include <functional>
#include <future>
#include <optional>
#include <vector>

// What the link editor hands over for a new or changed saved link.
struct LocalLinkFields
{
    QString name;
    WebAddress url;
    std::optional<WebAddress> logoURL;
    std::optional<QString> countryCode;
    std::optional<QString> category;
};

// The user's saved links ("Local M3U"), newest first, one store for the life of the application,
// kept as the compact JSON text of the whole list in a file of its own (SavedLinksFile).
//
// The list is read once, on the store's own thread, when the store is made; until it has arrived
// the store is empty and not loaded, and a change asked for meanwhile first waits for it, so a
// change never writes over links that were not read yet. Stored data that does not decode as a
// whole (damaged text, one record without its id, name or address) is ignored: the store starts
// empty and the stored bytes stay as they are until the next change writes the list.
//
// Every change hands the whole list to the store's thread at once; the window never waits for a
// write. Writes that pile up while the disk is busy collapse into one of the newest list. A write
// that fails is announced (saveFailed) and tried again with the next change and at the end.
//
// Main thread only.
class LocalM3UStore : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QList<PlaylistEntry> entries READ entries WRITE setEntries NOTIFY entriesChanged)
    Q_PROPERTY(bool hasPrevious READ hasPrevious NOTIFY previousChanged)
    Q_PROPERTY(bool isLoaded READ isLoaded NOTIFY loadedChanged)

public:
    // The description of a failed write; nothing when the list was written.
    using SaveOutcome = SavedLinksWorker::WriteOutcome;

    // Keeps its files in the per-user data folder of the application.
    explicit LocalM3UStore(QObject *parent = nullptr);
    explicit LocalM3UStore(const QString &folder, QObject *parent = nullptr);
    // Writes what is still to be written, and once more what failed to be, before it goes.
    ~LocalM3UStore() override;

    const QList<PlaylistEntry> &entries() const { return m_entries; }
    // Replaces the list without writing it; observers hear of every assignment.
    void setEntries(const QList<PlaylistEntry> &entries);
    // Whether a saved link has exactly this address text.
    bool contains(const WebAddress &url) const;
    // Hands the whole list to the store's thread to be written.
    void persist();
    // Calls done on context's thread once the list as it is now has been written, or its write
    // has failed; not at all when context is gone by then.
    void whenSaved(QObject *context, std::function<void(const SaveOutcome &)> done);

    bool isLoaded() const { return m_isLoaded; }
    // Blocks until the stored list is in. Changes do this themselves.
    void waitForLoad();

    // Saves a link as a new entry at the front, dropping the first saved one with the same
    // address, and writes the list. A blank name becomes the address's file name without its
    // extension. Returns the entry saved.
    PlaylistEntry saveOrMoveToFront(const LocalLinkFields &fields);
    // Replaces the entry with this id where it stands, keeping the id; nothing when it is gone.
    bool updateInPlace(const QUuid &id, const LocalLinkFields &fields);
    // Removes every entry with this id; the rest keep their order.
    void remove(const QUuid &id);
    void removeAll();
    // Replaces the whole list (an imported playlist, a published channel list) and writes it.
    // The list it replaces, when there was one, is kept and written too, so that no single
    // action loses the user's links.
    void replaceAll(const QList<PlaylistEntry> &entries);
    // Whether a replaced list is kept.
    bool hasPrevious() const { return !m_previous.isEmpty(); }
    // Brings the replaced list back; the list it replaces is kept in its place, so restoring
    // again undoes the restore.
    void restorePrevious();

Q_SIGNALS:
    void entriesChanged();
    void previousChanged();
    void loadedChanged();
    // A write of the saved or the kept list failed; the description says why.
    void saveFailed(const QString &description);

private:
    struct StoredLists
    {
        QList<PlaylistEntry> saved;
        QList<PlaylistEntry> previous;
    };
    struct SaveWaiter
    {
        quint64 generation;
        QPointer<QObject> context;
        std::function<void(const SaveOutcome &)> done;
    };

    static QString savedName(const LocalLinkFields &fields);
    void startLoading();
    void keepAsPrevious(const QList<PlaylistEntry> &entries);
    void settle(quint64 generation, const SaveOutcome &outcome);
    void reportFailure(const SaveOutcome &outcome);

    SavedLinksFile m_savedFile;
    SavedLinksFile m_previousFile;
    QList<PlaylistEntry> m_entries;
    QList<PlaylistEntry> m_previous;
    std::shared_future<StoredLists> m_stored;
    bool m_isLoaded = false;
    // Each persist() asks for the next generation; settled is the newest whose write ended.
    quint64 m_requestedGeneration = 0;
    quint64 m_settledGeneration = 0;
    SaveOutcome m_lastOutcome;
    std::vector<SaveWaiter> m_saveWaiters;
    // Last: its destructor finishes the writes, which still reach this object.
    SavedLinksWorker m_worker;
};
