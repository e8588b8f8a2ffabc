#include "Playlist/PlaylistReader.h"

#include "Base/HeapRoom.h"
#include "Base/WorkBeside.h"
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
#include <vector>

#if defined(Q_OS_UNIX)
#include <cerrno>

#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

// A list from the network may name logos and guides on the network only. Anything else would let
// a web page make the player read the user's files, or a device that never ends
// ("file:///dev/zero").
bool webAddressesOnly(const WebAddress &base)
{
    return !base.isLocalFile();
}

PlaylistParserRun::Options runOptions(const WebAddress &base, PlaylistReader::Guides guides)
{
    return {.keepGuideKeys = guides == PlaylistReader::Guides::kept,
            .webLogosOnly = webAddressesOnly(base)};
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

// The line break and prefix that start a channel's description line.
constexpr QByteArrayView descriptionStart("\n#EXTINF:");

// The offset of the first description line in bytes, which start at offset in the text.
std::optional<qint64> descriptionIn(QByteArrayView bytes, qint64 offset)
{
    const qsizetype at = bytes.indexOf(descriptionStart);
    return at < 0 ? std::nullopt : std::optional<qint64>(offset + at);
}

// Where text of size bytes can be cut into parts that parse on their own: the offsets at which
// parts start, the first being 0, the second (for text of PlaylistReader::splitBytes or more) at
// a description line at or after the middle. That line replaces whatever description the part
// before leaves pending, so each part is parsed as it would be in one pass. The line is looked for
// only a short way past the middle (a real list starts a description every few hundred bytes);
// where there is none, the text stays whole. descriptionAt(offset, window) finds "\n#EXTINF:" in
// the window bytes from offset on, giving its offset or nothing.
//
// Two parts, not more: a part's channels are copied into the first part's list in the end, and
// with five parts of about 4 MB (each thread taking the next when done) a 100,000-channel list
// was listed in the window some 20 ms later than with two, for the memory those copies touch.
template <typename DescriptionAt>
QList<qint64> partStarts(qint64 size, DescriptionAt &&descriptionAt)
{
    constexpr qsizetype searchBytes = 64 * 1024;
    QList<qint64> starts{0};
    if (size < PlaylistReader::splitBytes)
        return starts;
    if (const std::optional<qint64> at = descriptionAt(size / 2, searchBytes))
        starts.append(*at + 1);
    return starts;
}

// What a part of a text needs room for.
struct PartSize
{
    // Channels its run makes room for (a list grows if that is short).
    qsizetype channels = 0;
    // Its bytes. The channels' strings take about as many bytes of the heap (a little less for
    // lists of long names and addresses, up to twice for lists of short ones): so much is mapped
    // before the part is parsed. Less would leave the rest to fault in as before, more is mapped
    // for nothing and given back when the part is done.
    qint64 bytes = 0;
};

// Parses the parts of a text at once (see shareParts), each into a run of its own, made by the
// thread that takes the part, and joins the runs in order into the first one. readPart(part, run)
// reads a part into its run; sizeOf(part) is what its run makes room for: the first run's room for
// channels is for every channel, as it takes the others'.
template <typename SizeOf, typename ReadPart>
std::vector<std::optional<PlaylistParserRun>>
parseParts(qsizetype parts, const WebAddress &base, PlaylistTextDecoder::Encoding encoding,
           PlaylistParserRun::Options options, SizeOf &&sizeOf, ReadPart &&readPart)
{
    std::vector<std::optional<PlaylistParserRun>> runs(static_cast<size_t>(parts));
    shareParts(parts, [&](qsizetype part) {
        const PartSize size = sizeOf(part);
        PlaylistParserRun &run = runs[size_t(part)].emplace(base, encoding, size.channels, options);
        // After the run's list of channels, which glibc may cut from the room when it is larger
        // than the room's blocks, as it is once glibc has raised the size it maps blocks from.
        const HeapRoom room{size_t(size.bytes)};
        readPart(part, run);
    });
    for (qsizetype part = 1; part < parts; ++part)
        runs.front()->append(std::move(*runs[size_t(part)]));
    return runs;
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
    if (webAddressesOnly(base))
        guideAddresses.removeIf([](const WebAddress &guide) { return !guide.isWebAddress(); });
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
                          runOptions(base, guides));
    const HeapRoom room{size_t(size)}; // as for a part of a text (see parseParts)
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

// The offset of the first description line within window bytes of the file from offset on.
std::optional<qint64> fileDescriptionAt(int handle, qint64 offset, qsizetype window)
{
    QByteArray bytes(window, Qt::Uninitialized);
    int error = 0;
    const qint64 got = readingAt(handle, offset, error)(bytes.data(), window);
    return descriptionIn(QByteArrayView(bytes.constData(), std::max<qint64>(got, 0)), offset);
}

// One of the parts of a file read at once.
struct FilePart
{
    FilePart(qint64 from, qint64 most) : begin(from), limit(most) {}

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

std::optional<PlaylistReadResult> readFailure(const std::vector<FilePart> &parts)
{
    for (const FilePart &part : parts) {
        if (part.size < 0)
            return PlaylistReadResult::failed(
                QString::fromStdString(std::generic_category().message(part.error)));
    }
    return std::nullopt;
}

// The parts of the file of size bytes from start, where it can be cut; nothing when it cannot.
// The last part reads to the end, one byte past the limit, to tell a file that grew.
std::vector<FilePart> fileParts(int handle, qint64 start, qint64 size, qint64 limit)
{
    const QList<qint64> starts = partStarts(size, [&](qint64 offset, qsizetype window) {
        const std::optional<qint64> at = fileDescriptionAt(handle, start + offset, window);
        return at ? std::optional(*at - start) : std::nullopt;
    });
    std::vector<FilePart> parts;
    if (starts.size() < 2)
        return parts;
    for (qsizetype part = 0; part < starts.size(); ++part) {
        const qint64 end = part + 1 < starts.size() ? starts[part + 1] : limit + 1;
        parts.emplace_back(start + starts[part], end - starts[part]);
    }
    return parts;
}

// What readInOnePass() makes of a large file, cut into parts that are surveyed, and then parsed,
// on two threads at once: a machine with a second core lists the channels that much sooner, and
// the bytes are still never held whole. Nothing when the file cannot be cut at description lines,
// or shrank while it was read; it is then read in one pass.
std::optional<PlaylistReadResult> readInParts(int handle, qint64 start, qint64 size, qint64 limit,
                                              const WebAddress &base, PlaylistReader::Guides guides)
{
    std::vector<FilePart> parts = fileParts(handle, start, size, limit);
    if (parts.empty())
        return std::nullopt;
    shareParts(qsizetype(parts.size()), [&](qsizetype index) {
        FilePart &part = parts[size_t(index)];
        part.read(handle, [&part](QByteArrayView block) { part.survey.add(block); });
    });
    if (auto failure = readFailure(parts))
        return failure;
    PlaylistTextSurvey whole;
    qint64 total = 0;
    for (const FilePart &part : parts) {
        if (&part != &parts.back() && part.size != part.limit)
            return std::nullopt;
        whole.append(part.survey);
        total += part.size;
    }
    if (total > limit)
        return PlaylistReadResult::failed(PlaylistReader::tooLargeDescription());
    if (!whole.isText())
        return PlaylistReadResult::failed(PlaylistTexts::notAPlaylist.toString());

    const PlaylistTextDecoder::Encoding encoding = whole.encoding();
    QList<WebAddress> guideAddresses;
    parts.back().limit = parts.back().size;
    auto runs = parseParts(
        qsizetype(parts.size()), base, encoding, runOptions(base, guides),
        [&](qsizetype part) {
            return PartSize{part == 0 ? whole.channelCapacity()
                                      : parts[size_t(part)].survey.channelCapacity(),
                            parts[size_t(part)].limit};
        },
        [&](qsizetype part, PlaylistParserRun &run) {
            if (part == 0)
                return parts.front().read(
                    handle, parsingBlocks(run, encoding, base, guides, guideAddresses));
            parts[size_t(part)].read(handle,
                                     [&run](QByteArrayView block) { run.readBlock(block); });
        });
    if (auto failure = readFailure(parts))
        return failure;
    return finished(*runs.front(), base, std::move(guideAddresses));
}

#endif

} // namespace

QString PlaylistReader::tooLargeDescription()
{
    return u"The playlist is larger than %1 MiB."_s.arg(maximumBytes / (1024 * 1024));
}

PlaylistReadResult PlaylistReader::read(QByteArrayView bytes, const WebAddress &base)
{
    const QList<qint64> starts = partStarts(bytes.size(), [bytes](qint64 offset, qsizetype window) {
        return descriptionIn(bytes.sliced(offset, std::min<qint64>(window, bytes.size() - offset)),
                             offset);
    });
    const auto partBytes = [&](qsizetype part) {
        const qint64 end = part + 1 < starts.size() ? starts[part + 1] : bytes.size();
        return bytes.sliced(starts[part], end - starts[part]);
    };
    // Each part surveyed on the thread that parses it next, as a file's parts are.
    std::vector<PlaylistTextSurvey> surveys(size_t(starts.size()));
    shareParts(starts.size(), [&](qsizetype part) { surveys[size_t(part)].add(partBytes(part)); });
    PlaylistTextSurvey whole;
    for (const PlaylistTextSurvey &survey : surveys)
        whole.append(survey);
    if (!whole.isText())
        return PlaylistReadResult::failed(PlaylistTexts::notAPlaylist.toString());

    const PlaylistTextDecoder::Encoding encoding = whole.encoding();
    auto runs = parseParts(
        starts.size(), base, encoding, runOptions(base, Guides::kept),
        [&](qsizetype part) {
            return PartSize{part == 0 ? whole.channelCapacity()
                                      : surveys[size_t(part)].channelCapacity(),
                            partBytes(part).size()};
        },
        [&](qsizetype part, PlaylistParserRun &run) {
            run.readBlock(part == 0 ? PlaylistTextDecoder::textBytes(partBytes(0), encoding)
                                    : partBytes(part));
        });
    return finished(*runs.front(), base, GuideAddresses::fromPlaylist(bytes, base));
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
        if (auto result = readInParts(handle, start, size, limit, base, guides))
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
