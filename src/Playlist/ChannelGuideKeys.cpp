#include "Playlist/ChannelGuideKeys.h"

#include <algorithm>

ChannelGuideKeys::ChannelGuideKeys(PlaylistTextDecoder::Encoding encoding, qsizetype capacity)
    : m_encoding(encoding)
{
    lastBlock().ends.reserve(capacity * 2);
}

ChannelGuideKeys::Block &ChannelGuideKeys::lastBlock()
{
    if (m_blocks.isEmpty())
        m_blocks.append(Block{});
    return m_blocks.last();
}

void ChannelGuideKeys::append(std::optional<QByteArrayView> tvgID,
                              std::optional<QByteArrayView> tvgName)
{
    Block &block = lastBlock();
    if (tvgID)
        block.bytes.append(*tvgID);
    block.ends.append(block.bytes.size());
    if (tvgName)
        block.bytes.append(*tvgName);
    block.ends.append(block.bytes.size());
}

void ChannelGuideKeys::append(ChannelGuideKeys &&later)
{
    const qsizetype offset = size();
    for (Block &block : later.m_blocks) {
        block.firstChannel += offset;
        m_blocks.append(std::move(block));
    }
    later.m_blocks.clear();
}

qsizetype ChannelGuideKeys::size() const
{
    return m_blocks.isEmpty() ? 0 : m_blocks.last().firstChannel + m_blocks.last().ends.size() / 2;
}

QString ChannelGuideKeys::text(const Block &block, qsizetype from, qsizetype to) const
{
    if (from == to)
        return {};
    return PlaylistTextDecoder::toString(QByteArrayView(block.bytes).sliced(from, to - from),
                                         m_encoding);
}

ChannelGuideKey ChannelGuideKeys::at(qsizetype i) const
{
    if (i < 0 || i >= size())
        return {};
    // The last block that starts at or before channel i; a list has one block per part read.
    const auto next = std::upper_bound(
        m_blocks.begin(), m_blocks.end(), i,
        [](qsizetype channel, const Block &block) { return channel < block.firstChannel; });
    const Block &block = *(next - 1);
    const qsizetype k = i - block.firstChannel;
    const qsizetype start = k == 0 ? 0 : block.ends[2 * k - 1];
    return {text(block, start, block.ends[2 * k]),
            text(block, block.ends[2 * k], block.ends[2 * k + 1])};
}

QList<ChannelGuideKey> ChannelGuideKeys::toList() const
{
    QList<ChannelGuideKey> keys;
    keys.reserve(size());
    for (qsizetype i = 0; i < size(); ++i)
        keys.append(at(i));
    return keys;
}
