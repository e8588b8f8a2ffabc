#pragma once

#include "Recording/CapturedPicture.h"
#include "Recording/RecordingOutcome.h"

#include <QSize>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;
struct AVStream;
struct SwsContext;

// One MP4 file of H.264 High video and AAC 48 kHz stereo sound, fed with grabbed frames and
// system-sound chunks and finished or cancelled once. The file's time line starts at the first
// frame: sound from before it is dropped, and silence fills where sound is missing, so the two
// stay in step. Frames land on a 30-a-second grid; a frame for a slot already filled is dropped.
// Used from one thread at a time.
class PlayerCaptureWriter
{
public:
    // Replaces a file at path and opens the file for a video of size (even sides). The reason
    // of a failure otherwise.
    static std::variant<std::unique_ptr<PlayerCaptureWriter>, QString> create(const QString &path,
                                                                              QSize size);
    ~PlayerCaptureWriter();

    bool sessionStarted() const { return m_sessionStarted; }
    // Why the file can no longer be written (a full disk, say); appends are ignored from then.
    const std::optional<QString> &failure() const { return m_failure; }
    std::int64_t framesWritten() const { return m_framesWritten; }

    void appendVideo(const CaptureFrame &frame);
    void appendAudio(const AudioChunk &chunk);
    // Completes the file; without a frame the file is removed and the error is that none came.
    RecordingOutcome finish();
    // Leaves no file behind.
    void cancel();

private:
    PlayerCaptureWriter(const QString &path, QSize size);

    std::optional<QString> open();
    std::optional<QString> openVideo();
    std::optional<QString> openAudio();
    // A stream of the file for what codec encodes, in its time base; nothing on failure.
    AVStream *addStream(const AVCodecContext *codec);
    bool convert(const CaptureFrame &frame);
    void writeSamples(const float *samples, std::int64_t frames);
    void writeSilence(std::int64_t frames);
    // Encodes every whole block of the sound waiting.
    void encodePendingBlocks();
    void encodeAudioBlock();
    bool encode(AVCodecContext *codec, AVStream *stream, AVFrame *frame);
    void fail(const QString &why);
    void close();

    QString m_path;
    QSize m_size;
    bool m_sessionStarted = false;
    std::int64_t m_firstFrameTime = 0;
    std::int64_t m_lastSlot = -1;
    std::int64_t m_framesWritten = 0;
    std::int64_t m_audioPlaced = 0; // samples after the first frame, silence included
    std::int64_t m_audioEncoded = 0;
    std::vector<float> m_pendingAudio; // interleaved, less than one encoder block
    std::optional<QString> m_failure;

    AVFormatContext *m_format = nullptr;
    AVCodecContext *m_video = nullptr;
    AVCodecContext *m_audio = nullptr;
    AVStream *m_videoStream = nullptr;
    AVStream *m_audioStream = nullptr;
    AVFrame *m_videoFrame = nullptr;
    AVFrame *m_audioFrame = nullptr;
    AVPacket *m_packet = nullptr;
    SwsContext *m_scaler = nullptr;
    bool m_headerWritten = false;
};
