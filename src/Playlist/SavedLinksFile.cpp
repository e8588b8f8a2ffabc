#include "Playlist/SavedLinksFile.h"

#include "Playlist/PlaylistJson.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSettings>
#include <QStandardPaths>

#include <cerrno>
#include <cstdio>
#include <cstring>

#if defined(Q_OS_UNIX)
#include <csignal>
#include <sys/mman.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

// Bytes go to the file in pieces of this size, so that a million links never need their whole
// text in memory at once.
constexpr qsizetype writeChunkBytes = 1 << 20;

std::optional<QString> writeBytes(QFile &file, QByteArray &chunk)
{
    if (file.write(chunk) != chunk.size())
        return file.errorString();
    chunk.clear();
    return std::nullopt;
}

// Drops the pages of a read-only file mapping up to size from memory; reading them again would
// fetch them from the file.
void releasePages(uchar *mapped, qsizetype size)
{
#if defined(Q_OS_UNIX)
    static const qsizetype pageSize = sysconf(_SC_PAGESIZE);
    madvise(mapped, size_t(size / pageSize * pageSize), MADV_DONTNEED);
#else
    Q_UNUSED(mapped);
    Q_UNUSED(size);
#endif
}

bool isOtherRunningProcess(qint64 pid)
{
    if (pid == QCoreApplication::applicationPid())
        return false;
#if defined(Q_OS_UNIX)
    return pid > 0 && (::kill(pid_t(pid), 0) == 0 || errno == EPERM);
#else
    return true;
#endif
}

} // namespace

SavedLinksFile::SavedLinksFile(QString folder, QString key)
    : m_folder(std::move(folder)), m_key(std::move(key))
{}

QString SavedLinksFile::defaultFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
}

QString SavedLinksFile::path() const
{
    return m_folder + u'/' + m_key + u".json"_s;
}

QString SavedLinksFile::damagedCopyPath() const
{
    return path() + u".damaged"_s;
}

QList<PlaylistEntry> SavedLinksFile::read() const
{
    removeLeftoverPieces();
    if (!QFileInfo::exists(path()))
        takeOverSettingsValue();
    QFile file(path());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    std::optional<QList<PlaylistEntry>> entries;
    // Mapped rather than read: the text is looked at once, front to back, so the pages read are
    // given back while the rest is read, and a list of hundreds of megabytes never sits in
    // memory beside the entries made from it.
    if (uchar *mapped = file.size() > 0 ? file.map(0, file.size()) : nullptr) {
        const QByteArrayView text(reinterpret_cast<const char *>(mapped), file.size());
        entries = PlaylistJson::decodeList(
            text, [mapped](qsizetype doneBytes) { releasePages(mapped, doneBytes); });
        file.unmap(mapped);
    } else {
        entries = PlaylistJson::decodeList(file.readAll());
    }
    if (!entries)
        keepDamagedCopy();
    return entries.value_or(QList<PlaylistEntry>());
}

std::optional<QString> SavedLinksFile::write(const QList<PlaylistEntry> &entries) const
{
    if (!QDir().mkpath(m_folder))
        return u"Could not create the folder %1"_s.arg(QDir::toNativeSeparators(m_folder));
    QFile piece(piecePath());
    if (!piece.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return piece.errorString();
    // The list keeps the permissions the user gave its file.
    if (const QFileInfo old(path()); old.exists())
        piece.setPermissions(old.permissions());
    std::optional<QString> failure = writeList(piece, entries);
    if (!failure)
        failure = replaceWithPiece(piece);
    if (failure)
        piece.remove();
    return failure;
}

QString SavedLinksFile::piecePath() const
{
    // Named after the process, so that two players writing at once never share a piece.
    return u"%1.%2.partial"_s.arg(path()).arg(QCoreApplication::applicationPid());
}

std::optional<QString> SavedLinksFile::writeList(QFile &piece, const QList<PlaylistEntry> &entries)
{
    QByteArray chunk;
    chunk.reserve(writeChunkBytes + 4096);
    chunk.append('[');
    for (qsizetype i = 0; i < entries.size(); ++i) {
        if (i > 0)
            chunk.append(',');
        PlaylistJson::appendEncoded(chunk, entries.at(i));
        if (chunk.size() >= writeChunkBytes) {
            if (std::optional<QString> failure = writeBytes(piece, chunk))
                return failure;
        }
    }
    chunk.append(']');
    return writeBytes(piece, chunk);
}

std::optional<QString> SavedLinksFile::replaceWithPiece(QFile &piece) const
{
    // On the disk before the rename, so that after a power cut the name holds the old list or
    // the whole new one.
    if (!piece.flush())
        return piece.errorString();
#if defined(Q_OS_UNIX)
    if (::fsync(piece.handle()) != 0)
        return QString::fromLocal8Bit(std::strerror(errno));
#endif
    piece.close();
    // rename() replaces the old file in one step; QFile::rename would refuse an existing target.
    if (std::rename(QFile::encodeName(piece.fileName()).constData(),
                    QFile::encodeName(path()).constData()) != 0)
        return QString::fromLocal8Bit(std::strerror(errno));
    return std::nullopt;
}

void SavedLinksFile::takeOverSettingsValue() const
{
    const QVariant stored = QSettings().value(m_key);
    if (!stored.isValid() || !QDir().mkpath(m_folder))
        return;
    QSaveFile file(path());
    if (file.open(QIODevice::WriteOnly)) {
        file.write(stored.toByteArray());
        file.commit();
    }
}

void SavedLinksFile::removeLeftoverPieces() const
{
    // A write killed before its rename leaves its piece, named after the writing process. Pieces
    // of processes still running are theirs to finish; ours are never in progress while we read.
    const QString prefix = QFileInfo(path()).fileName() + u'.';
    const QString suffix = u".partial"_s;
    QDir folder(m_folder);
    const QStringList pieces =
        folder.entryList({prefix + u'*' + suffix}, QDir::Files | QDir::Hidden | QDir::NoSymLinks);
    for (const QString &piece : pieces) {
        bool isNumber = false;
        const qint64 pid = QStringView(piece)
                               .sliced(prefix.size(), piece.size() - prefix.size() - suffix.size())
                               .toLongLong(&isNumber);
        if (isNumber && !isOtherRunningProcess(pid))
            folder.remove(piece);
    }
}

void SavedLinksFile::forgetSettingsValue() const
{
    if (!QFileInfo::exists(path()))
        return;
    QSettings settings;
    if (!settings.contains(m_key))
        return;
    settings.remove(m_key);
    settings.sync();
}

void SavedLinksFile::keepDamagedCopy() const
{
    QFile::remove(damagedCopyPath());
    QFile::copy(path(), damagedCopyPath());
}
