#pragma once

#include "Playlist/PlaylistEntry.h"

#include <QList>
#include <QString>

#include <optional>

class QFile;

// One file of saved links in their stored JSON form, named after the settings key that held the
// list before the list had a file of its own.
//
// Writing replaces the file whole and atomically: a new file is written beside it and renamed
// over it only when complete, so a crash or a kill at any moment leaves the old list or the new
// one, never a mix or a part. Reading never changes the file; bytes that do not decode read as an
// empty list, and a copy of them is kept beside the file (".damaged") before anything can write
// over them. Reading removes the pieces of writes that were killed before their rename. Any
// thread; one thread per file at a time, and one process.
class SavedLinksFile
{
public:
    SavedLinksFile(QString folder, QString key);

    // The per-user data folder of the application.
    static QString defaultFolder();

    QString path() const;
    QString damagedCopyPath() const;

    // The stored list. When there is no file yet but the settings store still holds a list under
    // the key, its bytes become the file first, unchanged.
    QList<PlaylistEntry> read() const;
    // Writes the whole list; the failure's description, nothing when written.
    std::optional<QString> write(const QList<PlaylistEntry> &entries) const;
    // Removes the list the settings store held once the file has taken its place. May wait on a
    // lock of the settings file that a crashed process left behind; run it where waiting is fine.
    void forgetSettingsValue() const;

private:
    void takeOverSettingsValue() const;
    void removeLeftoverPieces() const;
    // Where a new list is written before it takes the file's place.
    QString piecePath() const;
    static std::optional<QString> writeList(QFile &piece, const QList<PlaylistEntry> &entries);
    std::optional<QString> replaceWithPiece(QFile &piece) const;
    void keepDamagedCopy() const;

    QString m_folder;
    QString m_key;
};
