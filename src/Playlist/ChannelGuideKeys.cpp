#include "Playlist/ChannelGuideKeys.h"

ChannelGuideKeys::ChannelGuideKeys(PlaylistTextDecoder::Encoding encoding, qsizetype capacity)
    : m_encoding(encoding)
{
    m_ends.reserve(capacity * 2);
}

void ChannelGuideKeys::append(std::optional<QByteArrayView> tvgID,
                              std::optional<QByteArrayView> tvgName)
{
    if (tvgID)
        m_bytes.append(*tvgID);
    m_ends.append(m_bytes.size());
    if (tvgName)
        m_bytes.append(*tvgName);
    m_ends.append(m_bytes.size());
}

void ChannelGuideKeys::append(const ChannelGuideKeys &later)
{
    const qsizetype offset = m_bytes.size();
    m_bytes.append(later.m_bytes);
    m_ends.reserve(m_ends.size() + later.m_ends.size());
    for (qsizetype end : later.m_ends)
        m_ends.append(offset + end);
}

QString ChannelGuideKeys::text(qsizetype from, qsizetype to) const
{
    if (from == to)
        return {};
    return PlaylistTextDecoder::toString(QByteArrayView(m_bytes).sliced(from, to - from),
                                         m_encoding);
}

ChannelGuideKey ChannelGuideKeys::at(qsizetype i) const
{
    if (i < 0 || i >= size())
        return {};
    const qsizetype start = i == 0 ? 0 : m_ends[2 * i - 1];
    return {text(start, m_ends[2 * i]), text(m_ends[2 * i], m_ends[2 * i + 1])};
}

QList<ChannelGuideKey> ChannelGuideKeys::toList() const
{
    QList<ChannelGuideKey> keys;
    keys.reserve(size());
    for (qsizetype i = 0; i < size(); ++i)
        keys.append(at(i));
    return keys;
}
