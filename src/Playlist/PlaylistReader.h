#pragma once

#include "Base/WebAddress.h"
#include "Playlist/PlaylistReadResult.h"

#include <QByteArrayView>
#include <QIODevice>
#include <QString>

// Playlist bytes or files to channels: decoding, parsing and the failures the user is told about.
// Pure and re-entrant, so it runs on worker threads; the playlists people load reach hundreds of
// megabytes, which no event loop should wait for.
class PlaylistReader
{
public:
    PlaylistReader() = delete;

    // Larger playlists are refused: far beyond any real channel list (a million channels fit in
    // about 250 MB only with very long addresses), yet a bound on what a server or a mistaken file
    // choice can make the program hold.
    static constexpr qint64 maximumBytes = 64 * 1024 * 1024;
    // How much of a file is read at a time: a block ends at its last line break.
    static constexpr qsizetype blockBytes = 1024 * 1024;
    // Text from this size on is cut in two parts (at a description line) that two threads parse
    // at once: most machines have a second core, and the list is on screen that much sooner.
    static constexpr qsizetype splitBytes = 2 * 1024 * 1024;
    static QString tooLargeDescription();

    // Whether the result keeps each channel's guide keys and the header's guide addresses: a
    // player shows a guide, a tool that only lists or counts channels need not pay for them.
    enum class Guides
    {
        kept,
        dropped
    };

    // UTF-8, else Windows-1252; relative address lines resolve against base. A list whose base is
    // not a local file keeps only http and https logos. Runs a second thread for large lists.
    static PlaylistReadResult read(QByteArrayView bytes, const WebAddress &base);
    // What read() makes of the device's bytes from its position on (at most limit of them): a
    // file is read a block at a time, never whole, and a large file opened by name in two halves
    // at once. The device blocks until it has data (a file, or a pipe opened as one).
    static PlaylistReadResult readDevice(QIODevice &device, const WebAddress &base, qint64 limit,
                                         Guides guides = Guides::kept);
    // readDevice() of the file at path (at most maximumBytes) against its address.
    static PlaylistReadResult readFile(const QString &path);
};
