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

#if defined(Q_OS_UNIX)
#include <cerrno>

#include <unistd.h>
#endif

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

// The bytes that readSome gives (it reads at most the size asked for into the memory given and
// returns how many, 0 at the end, -1 on a failure), at most limit of them, handed to readBlock in
// blocks of about PlaylistReader::blockBytes that end after a line break byte (a longer line makes
// a longer block). Returns the bytes read, or -1 on a read error.
template <typename ReadSome, typename ReadBlock>
qint64 readBlocks(ReadSome &&readSome, qint64 limit, ReadBlock &&readBlock)
{
    constexpr qsizetype blockSize = PlaylistReader::blockBytes;
    const auto isLineBreak = [](char c) { return c >= '\n' && c <= '\r'; };
    QByteArray buffer;
    qint64 total = 0;
    qsizetype kept = 0; // bytes of an unfinished line at the start of the buffer
    while (total < limit) {
        buffer.resize(kept + qsizetype(std::min<qint64>(blockSize, limit - total)));
        const qint64 got = readSome(buffer.data() + kept, qint64(buffer.size() - kept));
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

// Reads a device from its current position on.
auto readingFrom(QIODevice &device)
{
    return [&device](char *data, qint64 size) { return device.read(data, size); };
}

// Runs besideWork on a thread of its own (below this one) and ownWork on this thread at the same
// time, and returns when both are done. Without a thread to be had (a process limit), the two
// run one after the other.
template <typename BesideWork, typename OwnWork>
void runBeside(BesideWork &&besideWork, OwnWork &&ownWork)
{
    std::thread helper;
    try {
        helper = std::thread([&besideWork] {
            BackgroundPriority::lowerCurrentThread();
            besideWork();
        });
    } catch (const std::system_error &) {
        besideWork();
    }
    ownWork();
    if (helper.joinable())
        helper.join();
}

// The line break and prefix that start a channel's description line.
constexpr QByteArrayView descriptionStart("\n#EXTINF:");

// Where a second parser can take over the text: the start of a description line at or after the
// middle. That line replaces whatever description the first half leaves pending, so each half is
// parsed as it would be in one pass; text without such a line stays whole (its size is returned).
qsizetype handOverPoint(QByteArrayView text)
{
    if (text.size() < PlaylistReader::splitBytes)
        return text.size();
    const qsizetype at = text.indexOf(descriptionStart, text.size() / 2);
    return at < 0 ? text.size() : at + 1;
}

// Hands the text's blocks to run, the first one without its byte-order mark; with the guides
// kept, the header line (which lies in the first block) gives the guide addresses.
auto parsingBlocks(PlaylistParserRun &run, PlaylistTextDecoder::Encoding encoding,
                   const WebAddress &base, PlaylistReader::Guides guides,
                   QList<WebAddress> &guideAddresses)
{
    return [&run, encoding, &base, guides, &guideAddresses,
            first = true](QByteArrayView block) mutable {
        if (first && guides == PlaylistReader::Guides::kept)
            guideAddresses = GuideAddresses::fromPlaylist(block, base);
        run.readBlock(first ? PlaylistTextDecoder::textBytes(block, encoding) : block);
        first = false;
    };
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

// A file, or what else the device is, from start on in one pass: surveyed a block at a time, then
// read again and parsed, so that its bytes are never held whole (nor touched as fresh memory,
// which costs more than reading them). At most limit bytes; one more tells that it is larger.
PlaylistReadResult readInOnePass(QIODevice &device, qint64 start, qint64 limit,
                                 const WebAddress &base, PlaylistReader::Guides guides)
{
    PlaylistTextSurvey survey;
    const qint64 size = readBlocks(readingFrom(device), limit + 1,
                                   [&survey](QByteArrayView block) { survey.add(block); });
    if (size < 0)
        return PlaylistReadResult::failed(device.errorString());
    if (size > limit)
        return PlaylistReadResult::failed(PlaylistReader::tooLargeDescription());
    if (!survey.isText())
        return PlaylistReadResult::failed(PlaylistTexts::notAPlaylist.toString());
    if (!device.seek(start))
        return PlaylistReadResult::failed(device.errorString());
    PlaylistParserRun run(base, survey.encoding(), survey.channelCapacity(),
                          guides == PlaylistReader::Guides::kept);
    QList<WebAddress> guideAddresses;
    if (readBlocks(readingFrom(device), size,
                   parsingBlocks(run, survey.encoding(), base, guides, guideAddresses)) < 0)
        return PlaylistReadResult::failed(device.errorString());
    return finished(run, base, std::move(guideAddresses));
}

#if defined(Q_OS_UNIX)

// A file opened by name can be read at two places at once through its descriptor, each reader at
// an offset of its own. Other devices cannot: a pipe has no places, and for a descriptor handed
// in from outside Qt does not know where the file's own position stands.
int positionalHandle(QIODevice &device)
{
    auto *const file = qobject_cast<QFile *>(&device);
    return file && !file->fileName().isEmpty() ? file->handle() : -1;
}

// Reads the file from offset on, as readBlocks wants; a failure leaves its errno in error.
auto readingAt(int handle, qint64 offset, int &error)
{
    return [handle, offset, &error](char *data, qint64 size) mutable -> qint64 {
        ssize_t got = 0;
        do
            got = ::pread(handle, data, size_t(size), off_t(offset));
        while (got < 0 && errno == EINTR);
        if (got < 0)
            error = errno;
        else
            offset += got;
        return got;
    };
}

// Where a second reader can take over a file of size bytes from start: as handOverPoint(), but
// searched only a short way past the middle, where a real list starts a description within a few
// hundred bytes. Nothing when the file is too small to split or no description starts there.
std::optional<qint64> fileHandOverPoint(int handle, qint64 start, qint64 size)
{
    constexpr qsizetype searchBytes = 64 * 1024;
    if (size < PlaylistReader::splitBytes)
        return std::nullopt;
    const qint64 middle = start + size / 2;
    QByteArray window(searchBytes, Qt::Uninitialized);
    int error = 0;
    const qint64 got = readingAt(handle, middle, error)(window.data(), searchBytes);
    const qsizetype at =
        got > 0 ? QByteArrayView(window.constData(), got).indexOf(descriptionStart) : -1;
    return at < 0 ? std::nullopt : std::optional(middle + at + 1);
}

// One of the two halves of a file read at once.
struct FileHalf
{
    FileHalf(qint64 from, qint64 most) : begin(from), limit(most) {}

    qint64 begin;
    qint64 limit;    // how many bytes to read at most
    qint64 size = 0; // how many were read, -1 after a read error
    int error = 0;
    PlaylistTextSurvey survey;

    template <typename ReadBlock>
    void read(int handle, ReadBlock &&readBlock)
    {
        size = readBlocks(readingAt(handle, begin, error), limit, readBlock);
    }
};

std::optional<PlaylistReadResult> readFailure(const FileHalf &first, const FileHalf &second)
{
    for (const FileHalf *half : {&first, &second}) {
        if (half->size < 0)
            return PlaylistReadResult::failed(
                QString::fromStdString(std::generic_category().message(half->error)));
    }
    return std::nullopt;
}

// What readInOnePass() makes of a large file, read in two halves at once, each surveyed and then
// parsed on a thread of its own: a machine with a second core lists the channels that much
// sooner, and the bytes are still never held whole. Nothing when the file cannot be split at a
// description line near its middle, or shrank while it was read; it is then read in one pass.
std::optional<PlaylistReadResult> readInHalves(int handle, qint64 start, qint64 size, qint64 limit,
                                               const WebAddress &base,
                                               PlaylistReader::Guides guides)
{
    const std::optional<qint64> split = fileHandOverPoint(handle, start, size);
    if (!split)
        return std::nullopt;
    FileHalf first{start, *split - start};
    // The second half reads to the end, one byte past the limit, to tell a file that grew.
    FileHalf second{*split, limit + 1 - first.limit};
    const auto survey = [handle](FileHalf &half) {
        half.read(handle, [&half](QByteArrayView block) { half.survey.add(block); });
    };
    runBeside([&] { survey(second); }, [&] { survey(first); });
    if (auto failure = readFailure(first, second))
        return failure;
    if (first.size != first.limit)
        return std::nullopt;
    if (first.size + second.size > limit)
        return PlaylistReadResult::failed(PlaylistReader::tooLargeDescription());
    PlaylistTextSurvey whole = first.survey;
    whole.append(second.survey);
    if (!whole.isText())
        return PlaylistReadResult::failed(PlaylistTexts::notAPlaylist.toString());

    const PlaylistTextDecoder::Encoding encoding = whole.encoding();
    const bool keepGuideKeys = guides == PlaylistReader::Guides::kept;
    // Room for every channel in the first run, which takes the second's in the end.
    PlaylistParserRun run(base, encoding, whole.channelCapacity(), keepGuideKeys);
    std::optional<PlaylistParserRun> later;
    QList<WebAddress> guideAddresses;
    second.limit = second.size;
    runBeside(
        [&] {
            later.emplace(base, encoding, second.survey.channelCapacity(), keepGuideKeys);
            second.read(handle, [&later](QByteArrayView block) { later->readBlock(block); });
        },
        [&] { first.read(handle, parsingBlocks(run, encoding, base, guides, guideAddresses)); });
    if (auto failure = readFailure(first, second))
        return failure;
    run.append(std::move(*later));
    return finished(run, base, std::move(guideAddresses));
}

#endif

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
        runBeside(
            [&] {
                // Room for its share of the channels, by bytes; the list grows if that is short.
                second.emplace(base, survey.encoding(),
                               capacity * (text.size() - split) / text.size(), true);
                second->readBlock(text.sliced(split));
            },
            [&] { run.readBlock(text.first(split)); });
        run.append(std::move(*second));
    }
    return finished(run, base, GuideAddresses::fromPlaylist(bytes, base));
}

PlaylistReadResult PlaylistReader::readDevice(QIODevice &device, const WebAddress &base,
                                              qint64 limit, Guides guides)
{
    if (device.isSequential()) {
        // One byte more than allowed tells an oversized stream from one of exactly the limit.
        const qint64 readLimit = limit < std::numeric_limits<qint64>::max() ? limit + 1 : limit;
        QByteArray bytes;
        if (readBlocks(readingFrom(device), readLimit,
                       [&bytes](QByteArrayView block) { bytes += block; }) < 0)
            return PlaylistReadResult::failed(device.errorString());
        if (bytes.size() > limit)
            return PlaylistReadResult::failed(tooLargeDescription());
        return read(bytes, base);
    }
    const qint64 start = device.pos();
    const qint64 size = device.size() - start;
    if (size > limit)
        return PlaylistReadResult::failed(tooLargeDescription());
    // Room for the one byte past the limit that tells a file that grew while it was read.
    limit = std::min(limit, std::numeric_limits<qint64>::max() - 1);
#if defined(Q_OS_UNIX)
    if (const int handle = positionalHandle(device); handle >= 0) {
        if (auto result = readInHalves(handle, start, size, limit, base, guides))
            return std::move(*result);
    }
#endif
    return readInOnePass(device, start, limit, base, guides);
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
