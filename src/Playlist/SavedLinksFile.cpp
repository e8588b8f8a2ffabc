#include "Playlist/SavedLinksFile.h"

#include "Playlist/PlaylistJson.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSettings>
#include <QStandardPaths>

#if defined(Q_OS_UNIX)
#include <sys/mman.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

// Bytes go to the file in pieces of this size, so that a million links never need their whole
// text in memory at once.
constexpr qsizetype writeChunkBytes = 1 << 20;

std::optional<QString> writeBytes(QSaveFile &file, QByteArray &chunk)
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
    QSaveFile file(path());
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    QByteArray chunk;
    chunk.reserve(writeChunkBytes + 4096);
    chunk.append('[');
    for (qsizetype i = 0; i < entries.size(); ++i) {
        if (i > 0)
            chunk.append(',');
        PlaylistJson::appendEncoded(chunk, entries.at(i));
        if (chunk.size() >= writeChunkBytes) {
            if (std::optional<QString> failure = writeBytes(file, chunk))
                return failure;
        }
    }
    chunk.append(']');
    if (std::optional<QString> failure = writeBytes(file, chunk))
        return failure;
    if (!file.commit())
        return file.errorString();
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
