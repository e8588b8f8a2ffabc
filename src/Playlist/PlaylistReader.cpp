#include "Playlist/PlaylistReader.h"

#include "Base/BackgroundPriority.h"
#include "Playlist/GuideAddresses.h"
#include "Playlist/PlaylistError.h"
#include "Playlist/PlaylistParser.h"
#include "Playlist/PlaylistParserRun.h"
#include "Playlist/PlaylistTextSurvey.h"
#include "Playlist/PlaylistTexts.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <limits>
#include <optional>
#include <system_error>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

// A list from the network may name logos and guides on the network only. Anything else would let
// a web page make the player read the user's files, or a device that never ends
// ("file:///dev/zero").
void keepWebAddressesOnly(QList<PlaylistEntry> &entries, QList<WebAddress> &guides)
{
    for (PlaylistEntry &entry : entries) {
        if (entry.logoURL && !entry.logoURL->isWebAddress())
            entry.logoURL.reset();
    }
    guides.removeIf([](const WebAddress &guide) { return !guide.isWebAddress(); });
}

// The bytes from the device's current position, at most limit of them, handed to readBlock in
// blocks of about PlaylistReader::blockBytes that end after a line break byte (a longer line makes
// a longer block). Returns the bytes read, or -1 on a read error.
template <typename ReadBlock>
qint64 readBlocks(QIODevice &device, qint64 limit, ReadBlock &&readBlock)
{
    constexpr qsizetype blockSize = PlaylistReader::blockBytes;
    const auto isLineBreak = [](char c) { return c >= '\n' && c <= '\r'; };
    QByteArray buffer;
    qint64 total = 0;
    qsizetype kept = 0; // bytes of an unfinished line at the start of the buffer
    while (total < limit) {
        buffer.resize(kept + qsizetype(std::min<qint64>(blockSize, limit - total)));
        const qint64 got = device.read(buffer.data() + kept, buffer.size() - kept);
        if (got < 0)
            return -1;
        if (got == 0)
            break;
        total += got;
        const QByteArrayView filled(buffer.constData(), kept + qsizetype(got));
        // The kept bytes hold no line break: only the new ones are searched.
        const QByteArrayView fresh = filled.sliced(kept);
        const auto lastBreak = std::find_if(fresh.rbegin(), fresh.rend(), isLineBreak);
        const qsizetype blockEnd =
            lastBreak == fresh.rend() ? 0 : filled.size() - (lastBreak - fresh.rbegin());
        kept = filled.size() - blockEnd;
        // A line longer than a block stays where it is and grows, instead of being moved again.
        if (blockEnd > 0) {
            readBlock(filled.first(blockEnd));
            std::copy(filled.begin() + blockEnd, filled.end(), buffer.begin());
        }
    }
    readBlock(QByteArrayView(buffer.constData(), kept));
    return total;
}

// Where a second parser can take over the text: the start of a description line at or after the
// middle. That line replaces whatever description the first half leaves pending, so each half is
// parsed as it would be in one pass; text without such a line stays whole (its size is returned).
qsizetype handOverPoint(QByteArrayView text)
{
    constexpr QByteArrayView description("\n#EXTINF:");
    if (text.size() < PlaylistReader::splitBytes)
        return text.size();
    const qsizetype at = text.indexOf(description, text.size() / 2);
    return at < 0 ? text.size() : at + 1;
}

// The channels found, or why there are none.
PlaylistReadResult finished(PlaylistParserRun &run, const WebAddress &base,
                            QList<WebAddress> guideAddresses)
{
    QList<PlaylistEntry> entries = run.takeEntries();
    if (entries.isEmpty())
        return PlaylistReadResult::failed(localizedDescription(PlaylistError::empty));
    if (!base.isLocalFile())
        keepWebAddressesOnly(entries, guideAddresses);
    return {std::move(entries), {}, run.takeGuideKeys(), std::move(guideAddresses)};
}

} // namespace

QString PlaylistReader::tooLargeDescription()
{
    return u"The playlist is larger than %1 MiB."_s.arg(maximumBytes / (1024 * 1024));
}

PlaylistReadResult PlaylistReader::read(QByteArrayView bytes, const WebAddress &base)
{
    PlaylistTextSurvey survey;
    survey.add(bytes);
    if (!survey.isText())
        return PlaylistReadResult::failed(PlaylistTexts::notAPlaylist.toString());
    const QByteArrayView text = PlaylistTextDecoder::textBytes(bytes, survey.encoding());
    const qsizetype split = handOverPoint(text);
    const qsizetype capacity = survey.channelCapacity();
    PlaylistParserRun run(base, survey.encoding(), capacity, true);
    if (split == text.size()) {
        run.readBlock(text);
    } else {
        std::optional<PlaylistParserRun> second;
        const auto readSecondHalf = [&] {
            // Room for its share of the channels, by bytes; the list grows if that is short.
            second.emplace(base, survey.encoding(), capacity * (text.size() - split) / text.size(),
                           true);
            second->readBlock(text.sliced(split));
        };
        std::thread helper;
        try {
            helper = std::thread([&] {
                BackgroundPriority::lowerCurrentThread();
                readSecondHalf();
            });
        } catch (const std::system_error &) {
            // No thread to be had (a process limit): the halves are read one after the other.
            readSecondHalf();
        }
        run.readBlock(text.first(split));
        if (helper.joinable())
            helper.join();
        run.append(std::move(*second));
    }
    return finished(run, base, GuideAddresses::fromPlaylist(bytes, base));
}

PlaylistReadResult PlaylistReader::readDevice(QIODevice &device, const WebAddress &base,
                                              qint64 limit, Guides guides)
{
    // One byte more than allowed tells an oversized file from one of exactly the limit, also for
    // devices whose size is not known in advance (pipes, special files).
    const qint64 readLimit = limit < std::numeric_limits<qint64>::max() ? limit + 1 : limit;
    if (device.isSequential()) {
        QByteArray bytes;
        if (readBlocks(device, readLimit, [&bytes](QByteArrayView block) { bytes += block; }) < 0)
            return PlaylistReadResult::failed(device.errorString());
        if (bytes.size() > limit)
            return PlaylistReadResult::failed(tooLargeDescription());
        return read(bytes, base);
    }
    // A file is read twice, a block at a time, so that its bytes are never held whole (nor
    // touched as fresh memory, which costs more than reading them): surveyed, then parsed.
    const qint64 start = device.pos();
    if (device.size() - start > limit)
        return PlaylistReadResult::failed(tooLargeDescription());
    PlaylistTextSurvey survey;
    const qint64 size =
        readBlocks(device, readLimit, [&survey](QByteArrayView block) { survey.add(block); });
    if (size < 0)
        return PlaylistReadResult::failed(device.errorString());
    if (size > limit)
        return PlaylistReadResult::failed(tooLargeDescription());
    if (!survey.isText())
        return PlaylistReadResult::failed(PlaylistTexts::notAPlaylist.toString());
    if (!device.seek(start))
        return PlaylistReadResult::failed(device.errorString());
    const PlaylistTextDecoder::Encoding encoding = survey.encoding();
    PlaylistParserRun run(base, encoding, survey.channelCapacity(), guides == Guides::kept);
    bool first = true;
    QList<WebAddress> guideAddresses;
    const auto readBlock = [&](QByteArrayView block) {
        // The header, which names the guides, is the first line: it lies in the first block.
        if (first && guides == Guides::kept)
            guideAddresses = GuideAddresses::fromPlaylist(block, base);
        run.readBlock(first ? PlaylistTextDecoder::textBytes(block, encoding) : block);
        first = false;
    };
    if (readBlocks(device, size, readBlock) < 0)
        return PlaylistReadResult::failed(device.errorString());
    return finished(run, base, std::move(guideAddresses));
}

PlaylistReadResult PlaylistReader::readFile(const QString &path)
{
    const QFileInfo info(path);
    if (info.isDir())
        return PlaylistReadResult::failed(u"“%1” is a folder."_s.arg(info.fileName()));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return PlaylistReadResult::failed(file.errorString());
    return readDevice(file, WebAddress::fromLocalFile(info.absoluteFilePath()), maximumBytes);
}
