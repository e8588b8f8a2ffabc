#include "Playlist/RandomUuidSource.h"

#include <array>

namespace {

QRandomGenerator64 seededFromSystem()
{
    std::array<quint32, 8> seed;
    QRandomGenerator::system()->fillRange(seed.data(), seed.size());
    return QRandomGenerator64(seed.data(), qsizetype(seed.size()));
}

} // namespace

RandomUuidSource::RandomUuidSource() : m_generator(seededFromSystem()) {}

QUuid RandomUuidSource::next()
{
    std::array<quint64, 2> words{m_generator.generate64(), m_generator.generate64()};
    std::array<uchar, 16> bytes;
    for (int i = 0; i < 8; ++i) {
        bytes[i] = uchar(words[0] >> (8 * i));
        bytes[8 + i] = uchar(words[1] >> (8 * i));
    }
    bytes[6] = (bytes[6] & 0x0F) | 0x40; // version 4: random
    bytes[8] = (bytes[8] & 0x3F) | 0x80; // RFC 4122 variant
    return QUuid::fromRfc4122(QByteArrayView(reinterpret_cast<const char *>(bytes.data()), 16));
}
