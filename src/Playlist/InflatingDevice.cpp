#include "Playlist/InflatingDevice.h"

#include <QByteArray>

#include <algorithm>
#include <limits>

#include <zlib.h>

namespace {

constexpr qint64 inputBlock = 256 * 1024;
// zlib's window bits for "gzip header and trailer".
constexpr int gzipWindowBits = 15 + 16;

} // namespace

struct InflatingDevice::Inflater
{
    Inflater() { inflateInit2(&stream, gzipWindowBits); }
    ~Inflater() { inflateEnd(&stream); }

    z_stream stream{};
    QByteArray input;
};

InflatingDevice::InflatingDevice(QIODevice &source, qint64 maxOutput)
    : m_source(source), m_maxOutput(maxOutput)
{}

InflatingDevice::~InflatingDevice() = default;

bool InflatingDevice::atEnd() const
{
    return m_finished && QIODevice::bytesAvailable() == 0;
}

void InflatingDevice::fail(const QString &reason)
{
    m_finished = true;
    setErrorString(reason);
}

qint64 InflatingDevice::readData(char *data, qint64 maxSize)
{
    if (m_finished)
        return -1;
    if (maxSize <= 0)
        return 0;
    if (!m_decided) {
        m_decided = true;
        m_compressed = m_source.peek(2) == QByteArrayView("\x1f\x8b");
        if (m_compressed)
            m_inflater = std::make_unique<Inflater>();
    }
    maxSize = std::min(maxSize, m_maxOutput - m_produced + 1);
    qint64 count = m_compressed ? inflateInto(data, maxSize) : m_source.read(data, maxSize);
    if (count < 0 && !m_compressed) {
        fail(m_source.errorString());
        return -1;
    }
    if (count == 0 && !m_compressed)
        m_finished = true;
    m_produced += std::max<qint64>(count, 0);
    if (m_produced > m_maxOutput) {
        fail(tr("the data is larger than %1 MB").arg(m_maxOutput / (1024 * 1024)));
        return -1;
    }
    return m_finished && count <= 0 ? -1 : count;
}

qint64 InflatingDevice::inflateInto(char *data, qint64 maxSize)
{
    // zlib counts in unsigned ints: a larger request is served in part, as reads may be.
    maxSize = std::min<qint64>(maxSize, std::numeric_limits<uInt>::max());
    z_stream &stream = m_inflater->stream;
    stream.next_out = reinterpret_cast<Bytef *>(data);
    stream.avail_out = uInt(maxSize);
    while (stream.avail_out == uInt(maxSize) && !m_finished) {
        if (stream.avail_in == 0) {
            m_inflater->input = m_source.read(inputBlock);
            if (m_inflater->input.isEmpty()) {
                // The source ended inside a member: what came out is kept, and the cut is told.
                if (stream.total_in > 0)
                    fail(tr("the compressed data is cut short"));
                else
                    m_finished = true;
                break;
            }
            stream.next_in = reinterpret_cast<Bytef *>(m_inflater->input.data());
            stream.avail_in = uInt(m_inflater->input.size());
        }
        const int result = inflate(&stream, Z_NO_FLUSH);
        if (result == Z_STREAM_END) {
            // Another member may follow; only bytes of nothing but zeros may trail the last.
            inflateReset(&stream);
            const bool nextMember =
                stream.avail_in < 2 || (stream.next_in[0] == 0x1f && stream.next_in[1] == 0x8b);
            // Padding after the last member is left unread, as gzip(1) leaves it.
            if (!nextMember || (stream.avail_in == 0 && m_source.atEnd()))
                m_finished = true;
        } else if (result != Z_OK && result != Z_BUF_ERROR) {
            fail(tr("the compressed data is damaged"));
        }
    }
    return qint64(maxSize) - stream.avail_out;
}
