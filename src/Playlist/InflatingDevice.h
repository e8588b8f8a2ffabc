#pragma once

#include <QIODevice>

#include <memory>

// Reads another device, inflating it as it goes when it is gzip data (told by its first bytes,
// whatever the file is called or the server says; several gzip members follow on as gzip(1)
// does) and passing it through when it is not. Sequential and read-only; the source, a file or a
// buffer, is read a block at a time (a read that brings nothing is its end), so files of any size
// pass through in constant memory. Any thread, one at a time.
class InflatingDevice : public QIODevice
{
public:
    // maxOutput: at most this many bytes come out, so that a small file cannot inflate into an
    // endless one; a larger result ends in an error.
    InflatingDevice(QIODevice &source, qint64 maxOutput);
    ~InflatingDevice() override;

    bool isSequential() const override { return true; }
    bool atEnd() const override;
    // Whether the source was gzip data; known after the first read.
    bool isCompressed() const { return m_compressed; }

protected:
    qint64 readData(char *data, qint64 maxSize) override;
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    struct Inflater;

    qint64 inflateInto(char *data, qint64 maxSize);
    void fail(const QString &reason);

    QIODevice &m_source;
    qint64 m_maxOutput;
    qint64 m_produced = 0;
    bool m_decided = false;
    bool m_compressed = false;
    bool m_finished = false;
    std::unique_ptr<Inflater> m_inflater;
};
