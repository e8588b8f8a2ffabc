#pragma once

#include "Playlist/ChannelGuideKey.h"
#include "Playlist/PlaylistTextDecoder.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <optional>

// The guide keys of every channel of a playlist, in the channels' order, kept as the playlist's
// own bytes in a block per part of the list read: a list of 100,000 channels costs a few
// allocations rather than 200,000 strings made, and later freed, while the channels load, and
// the parts of a list read at once are joined without copying their keys. A key is decoded when a
// guide is read. Pure; copies share their bytes.
class ChannelGuideKeys
{
public:
    ChannelGuideKeys() = default;
    ChannelGuideKeys(PlaylistTextDecoder::Encoding encoding, qsizetype capacity);

    // The next channel's tvg-id and tvg-name attribute values, in the playlist's encoding.
    void append(std::optional<QByteArrayView> tvgID, std::optional<QByteArrayView> tvgName);

    // The keys of later channels, in the same encoding.
    void append(ChannelGuideKeys &&later);

    qsizetype size() const;
    // The keys of channel i, decoded; empty ones past the end.
    ChannelGuideKey at(qsizetype i) const;
    QList<ChannelGuideKey> toList() const;

private:
    struct Block
    {
        qsizetype firstChannel = 0;
        QByteArray bytes;
        QList<qsizetype> ends; // per channel: where its id ends, then where its name ends
    };

    Block &lastBlock();
    QString text(const Block &block, qsizetype from, qsizetype to) const;

    PlaylistTextDecoder::Encoding m_encoding = PlaylistTextDecoder::Encoding::utf8;
    QList<Block> m_blocks;
};
