#include "Playlist/PlaylistReader.h"

#include "Playlist/PlaylistError.h"
#include "Playlist/PlaylistParser.h"
#include "Playlist/PlaylistTextDecoder.h"

#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

// A list from the network may name logos on the network only. Anything else would let a web page
// make the player read the user's files, or a device that never ends ("file:///dev/zero").
void keepWebLogosOnly(QList<PlaylistEntry> &entries)
{
    for (PlaylistEntry &entry : entries) {
        if (!entry.logoURL)
            continue;
        const QString scheme = entry.logoURL->scheme().toLower();
        if (scheme != u"http" && scheme != u"https")
            entry.logoURL.reset();
    }
}

} // namespace

QString PlaylistReader::tooLargeDescription()
{
    return u"The playlist is larger than %1 MiB."_s.arg(maximumBytes / (1024 * 1024));
}

PlaylistReadResult PlaylistReader::read(QByteArrayView bytes, const WebAddress &base)
{
    const std::optional<QString> text = PlaylistTextDecoder::decode(bytes);
    if (!text)
        return PlaylistReadResult::failed(localizedDescription(PlaylistError::invalidEncoding));
    QList<PlaylistEntry> entries = PlaylistParser::parse(*text, base);
    if (entries.isEmpty())
        return PlaylistReadResult::failed(localizedDescription(PlaylistError::empty));
    if (!base.isLocalFile())
        keepWebLogosOnly(entries);
    return {std::move(entries), {}};
}

PlaylistReadResult PlaylistReader::readFile(const QString &path)
{
    const QFileInfo info(path);
    if (info.isDir())
        return PlaylistReadResult::failed(u"“%1” is a folder."_s.arg(info.fileName()));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return PlaylistReadResult::failed(file.errorString());
    // One byte more than allowed tells an oversized file from one of exactly the limit, also for
    // files whose size is not known in advance (pipes, special files).
    const QByteArray bytes = file.read(maximumBytes + 1);
    if (file.error() != QFileDevice::NoError)
        return PlaylistReadResult::failed(file.errorString());
    if (bytes.size() > maximumBytes)
        return PlaylistReadResult::failed(tooLargeDescription());
    return read(bytes, WebAddress::fromLocalFile(info.absoluteFilePath()));
}
