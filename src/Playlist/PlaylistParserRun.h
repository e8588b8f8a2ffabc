#pragma once

#include "Base/WebAddress.h"
#include "Playlist/ChannelGuideKeys.h"
#include "Playlist/EncodedText.h"
#include "Playlist/PlaylistEntry.h"
#include "Playlist/RandomUuidSource.h"
#include "Playlist/StringPool.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <optional>

// One pass of PlaylistParser over a playlist given in blocks, so that a file can be read a piece
// at a time: the state that lives from one line to the next.
class PlaylistParserRun
{
public:
    // What a run does besides what the parser's rule makes of the text.
    struct Options
    {
        // Each channel's tvg-id and tvg-name are kept too (takeGuideKeys() is empty otherwise).
        bool keepGuideKeys = false;
        // A logo on anything but the web is left out, as each channel is made, while its text
        // is still at hand.
        bool webLogosOnly = false;
    };

    // capacity: how many channels to make room for at once.
    PlaylistParserRun(const WebAddress &base, PlaylistTextDecoder::Encoding encoding,
                      qsizetype capacity, Options options);
    PlaylistParserRun(const WebAddress &base, PlaylistTextDecoder::Encoding encoding,
                      qsizetype capacity);

    // The next block of text bytes (the byte-order mark left out). A block ends after a line break
    // byte (LF, VT, FF or CR), except the last one; it need not outlive the call.
    void readBlock(QByteArrayView block);
    // Adds what a run over the text right after this run's found, as if this run had read it.
    void append(PlaylistParserRun &&later);
    QList<PlaylistEntry> takeEntries() { return std::move(m_entries); }
    // For each channel, in the same order, its tvg-id and tvg-name.
    ChannelGuideKeys takeGuideKeys() { return std::move(m_guideKeys); }

private:
    void readLine(QByteArrayView line);
    void addEntry(const WebAddress &address);
    QString entryName(const WebAddress &address, std::optional<QByteArrayView> tvgName) const;

    const WebAddress &m_base;
    const EncodedText m_text;
    // The last description line since the previous address line; it applies to the next one.
    // It points into the block being read, or into m_heldDescription once that block is gone.
    std::optional<QByteArrayView> m_description;
    QByteArray m_heldDescription;
    QList<PlaylistEntry> m_entries;
    const Options m_options;
    ChannelGuideKeys m_guideKeys;
    StringPool m_groups;
    StringPool m_countries;
    RandomUuidSource m_uuids;
};
