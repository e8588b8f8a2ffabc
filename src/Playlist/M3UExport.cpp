#include "Playlist/M3UExport.h"

#include "Playlist/PlaylistTexts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QSaveFile>

namespace {

void appendAttribute(QString &line, QStringView name, const QString &value)
{
    line.append(u' ').append(name).append(u"=\"").append(M3UExport::cleaned(value)).append(u'"');
}

QString descriptionLine(const PlaylistEntry &entry)
{
    QString line = QStringLiteral("#EXTINF:-1");
    appendAttribute(line, u"tvg-name", entry.name);
    if (entry.logoURL)
        appendAttribute(line, u"tvg-logo", entry.logoURL->text());
    if (entry.countryCode)
        appendAttribute(line, u"tvg-country", *entry.countryCode);
    if (entry.groupTitle)
        appendAttribute(line, u"group-title", *entry.groupTitle);
    return line.append(u',').append(M3UExport::cleaned(entry.name));
}

QString addressLine(const WebAddress &url)
{
    return url.isLocalFile() ? url.toLocalFile() : url.text();
}

// Why the list cannot go to path when not even the temporary file beside it could be made; that
// file's own failure alone misleads (a folder of special files refuses new ones with "No such file
// or directory"). The target is opened to append nothing, so it stays as it is, and only when it
// is a regular file, which never blocks.
QString openFailure(const QString &path, const QString &temporaryFailure)
{
    const QFileInfo target(path);
    if (target.isDir())
        return QStringLiteral("Is a directory");
    if (target.exists() && !target.isFile())
        return QStringLiteral("Not a regular file");
    if (target.isFile()) {
        QFile probe(path);
        if (!probe.open(QIODevice::WriteOnly | QIODevice::Append))
            return probe.errorString();
    }
    // The list goes to a new file beside the target first, so that a failure leaves the old
    // file whole: that folder must take new files.
    return QStringLiteral("%1 (no new file can be made in %2)")
        .arg(temporaryFailure, QDir::toNativeSeparators(target.absolutePath()));
}

} // namespace

QString M3UExport::cleaned(const QString &value)
{
    QString text = value;
    return text.replace(u'"', u'\'').replace(u'\r', u' ').replace(u'\n', u' ');
}

QByteArray M3UExport::text(const QList<PlaylistEntry> &entries)
{
    QString text = QStringLiteral("#EXTM3U\n");
    for (const PlaylistEntry &entry : entries) {
        text.append(descriptionLine(entry)).append(u'\n');
        text.append(addressLine(entry.url)).append(u'\n');
    }
    return text.toUtf8();
}

QString M3UExport::defaultFileName(QDate day)
{
    return PlaylistTexts::exportFileNamePrefix.toString() +
           QLocale().toString(day, PlaylistTexts::exportFileNameDatePattern) + u'.' +
           PlaylistTexts::exportFileExtension.toString();
}

std::optional<QString> M3UExport::write(const QString &path, const QList<PlaylistEntry> &entries)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return openFailure(path, file.errorString());
    const QByteArray bytes = text(entries);
    if (file.write(bytes) != bytes.size()) {
        const QString reason = file.errorString();
        file.cancelWriting();
        return reason;
    }
    if (!file.commit())
        return file.errorString();
    return std::nullopt;
}
