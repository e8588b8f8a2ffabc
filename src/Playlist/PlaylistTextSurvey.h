#pragma once

#include "Playlist/PlaylistTextDecoder.h"

#include <QByteArray>
#include <QByteArrayView>

#include <algorithm>

// The first look at a playlist's bytes, taken block by block so that a file need not be held
// whole: whether they can be text at all, the encoding of the text, and how many channels it can
// hold at most (so that the list of channels is made once, at its size).
class PlaylistTextSurvey
{
public:
    // The bytes in order, in blocks that end after a line break byte (LF, VT, FF or CR), except
    // the last one.
    void add(QByteArrayView block);
    // Adds what a survey of the bytes right after these found, as if they had been added here.
    // The two parts meet at the start of a line.
    void append(const PlaylistTextSurvey &later);

    // Whether the bytes can be a playlist at all: text has no NUL, does not start like a media or
    // archive file, and uses control characters other than tab, line breaks and form feed hardly
    // ever (random bytes and binary files are full of them).
    bool isText() const;
    PlaylistTextDecoder::Encoding encoding() const;
    // How many channels to make room for at once: the lines that can be addresses (neither blank
    // nor starting with "#" after spaces and tabs), but no more than one per minimumChannelBytes.
    // Lists denser than that grow as they go, and a file of junk lines reserves no gigabytes.
    qsizetype channelCapacity() const
    {
        return qsizetype(std::min<qint64>(m_addressLineBound, m_size / minimumChannelBytes));
    }

private:
    static constexpr qsizetype startLength = 8;
    // Less than any real list spends on a channel with its description (150 to 250 bytes).
    static constexpr qint64 minimumChannelBytes = 128;

    QByteArray m_start; // the first bytes, where media and archive files show what they are
    qint64 m_size = 0;
    qint64 m_controls = 0;
    bool m_hasNul = false;
    bool m_validUtf8 = true;
    qsizetype m_addressLineBound = 0;
};
