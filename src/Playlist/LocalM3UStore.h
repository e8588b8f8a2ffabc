#pragma once

#include "Playlist/PlaylistEntry.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QUuid>

#include <optional>

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
// kept in the settings store under one key as the compact JSON text of the whole list.
//
// The list is read once when the store is made. Stored data that does not decode as a whole
// (damaged text, one record without its id, name or address) is ignored: the store starts empty
// and the stored bytes stay as they are until the next change writes the list. Every change
// rewrites the whole list at once.
//
// Main thread only.
class LocalM3UStore : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QList<PlaylistEntry> entries READ entries WRITE setEntries NOTIFY entriesChanged)
    Q_PROPERTY(bool hasPrevious READ hasPrevious NOTIFY previousChanged)

public:
    explicit LocalM3UStore(QObject *parent = nullptr);

    const QList<PlaylistEntry> &entries() const { return m_entries; }
    // Replaces the list without writing it; observers hear of every assignment.
    void setEntries(const QList<PlaylistEntry> &entries);
    // Whether a saved link has exactly this address text.
    bool contains(const WebAddress &url) const;
    // Writes the whole list; false when the settings store could not be written.
    bool persist();

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

private:
    static QString savedName(const LocalLinkFields &fields);
    // Written with the next persist().
    void keepAsPrevious(const QList<PlaylistEntry> &entries);
    void load();

    QList<PlaylistEntry> m_entries;
    QList<PlaylistEntry> m_previous;
};
