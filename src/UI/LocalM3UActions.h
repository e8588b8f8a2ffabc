#pragma once

#include "Player/PlayerModel.h"
#include "Playlist/LocalM3UStore.h"
#include "Playlist/PlaylistEntry.h"

#include <QFuture>
#include <QObject>
#include <QString>

#include <optional>

class LocalM3UPrompts;

// The main window's actions on the saved links: saving a channel, adding, editing and deleting
// links, importing a playlist file in place of the list, and exporting the list as an M3U file.
// Every change is handed to the store to be written at once; a write that fails is shown in an
// alert. Main thread only.
class LocalM3UActions : public QObject
{
    Q_OBJECT

public:
    LocalM3UActions(PlayerModel &model, LocalM3UStore &store, QObject *parent = nullptr);

    void setPrompts(LocalM3UPrompts *prompts) { m_prompts = prompts; }
    LocalM3UStore &store() { return m_store; }

    // The save button of a network channel: saves it at the front and, once the list is
    // written, confirms with a toast that names the channel as the row shows it.
    void saveToLocalM3U(const PlaylistEntry &entry);
    // A new link from the link editor: saved at the front, without a toast.
    void addLink(const LocalLinkFields &fields);
    // A saved link changed in the link editor; nothing when it was deleted meanwhile.
    void editLink(const QUuid &id, const LocalLinkFields &fields);
    // Both after the user confirmed.
    void deleteLink(const QUuid &id);
    void deleteAll();

    // Asks for a playlist file and imports it (see importLocalPlaylistFile).
    QFuture<bool> importLocalPlaylist(const std::optional<QString> &displayName);
    // Imports the file through the player model; when it yields channels they replace the whole
    // saved list. The future tells whether they did. The caller clears its search and filters
    // first.
    QFuture<bool> importLocalPlaylistFile(const QString &path,
                                          const std::optional<QString> &displayName);
    // A channel list the player model published while the saved links are shown replaces them,
    // unless it is empty.
    void adoptPublishedPlaylist(const QList<PlaylistEntry> &entries);
    // Brings back the links the last replacement took the place of.
    void restorePreviousLinks();

    // Asks where to write the list (nothing happens for an empty list or a cancelled dialog),
    // writes it, and shows the failure in an alert.
    void exportLocalPlaylistAsM3U();
    // Writes the list to path and confirms with a toast. Returns the failure's description;
    // an empty list writes nothing and is no failure.
    std::optional<QString> exportLocalPlaylist(const QString &path);
    // "VelmPlayerPro 2026-11-16.m3u" for today in the user's time zone.
    static QString defaultExportM3UFilename();

private:
    // The saved links become the imported entries when the import yields any.
    QFuture<bool> replaceWhenImported(PlayerModel::PlaylistImport import);
    // In place of the saved links, telling the user when links were there before.
    void replaceSavedLinks(const QList<PlaylistEntry> &entries);

    PlayerModel &m_model;
    LocalM3UStore &m_store;
    LocalM3UPrompts *m_prompts = nullptr;
};
