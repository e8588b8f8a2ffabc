#include "Playlist/PlaylistReader.h"

#include "Playlist/PlaylistError.h"
#include "Playlist/PlaylistParser.h"
#include "Playlist/PlaylistTextDecoder.h"
#include "Playlist/PlaylistTexts.h"

#include <QFile>
#include <QFileInfo>

#include <string_view>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// The first bytes of media and archive files that are sometimes chosen or served in place of a
// playlist. Text never starts so.
constexpr std::pair<qsizetype, std::string_view> binarySignatures[] = {
    {4, "ftyp"},             // MP4, MOV, M4A, 3GP
    {0, "\x1A\x45\xDF\xA3"}, // Matroska, WebM
    {0, "ID3"},              // MP3
    {0, "RIFF"},             // AVI, WAV, WebP
    {0, "OggS"},             // Ogg
    {0, "fLaC"},             // FLAC
    {0, "FLV\x01"},          // Flash video
    {0, "\x30\x26\xB2\x75"}, // Windows Media
    {0, "PK\x03\x04"},       // ZIP and everything made of it
    {0, "\x1F\x8B"},         // gzip
    {0, "7z\xBC\xAF"},       // 7-Zip
    {0, "Rar!"},             // RAR
    {0, "BZh"},              // bzip2
    {0, "\xFD"
        "7zXZ"},         // xz
    {0, "%PDF"},         // PDF
    {0, "\x89PNG"},      // PNG
    {0, "\xFF\xD8\xFF"}, // JPEG
    {0, "GIF8"},         // GIF
    {0, "\x7F"
        "ELF"}, // programs
};

// Whether the bytes can be a playlist at all: text has no NUL, does not start like a media or
// archive file, and uses control characters other than tab, line breaks and form feed hardly
// ever (random bytes and binary files are full of them).
bool isText(QByteArrayView bytes)
{
    for (const auto &[offset, signature] : binarySignatures) {
        if (bytes.size() >= offset + qsizetype(signature.size()) &&
            bytes.sliced(offset, qsizetype(signature.size())) ==
                QByteArrayView(signature.data(), qsizetype(signature.size())))
            return false;
    }
    if (bytes.contains('\0'))
        return false;
    qsizetype controls = 0;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        controls +=
            (value < 0x20 && value != '\t' && value != '\n' && value != '\r' && value != '\f') ||
            value == 0x7F;
    }
    return controls * 100 <= bytes.size();
}

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
    if (!isText(bytes))
        return PlaylistReadResult::failed(PlaylistTexts::notAPlaylist.toString());
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
