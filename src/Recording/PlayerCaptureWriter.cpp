#include "Recording/PlayerCaptureWriter.h"

#include "Recording/RecorderError.h"
#include "Recording/RecordingEncoding.h"
#include "Recording/RecordingOutputSize.h"
#include "Recording/RecordingTexts.h"

#include <QFile>
#include <QFileInfo>
#include <QPainter>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

using namespace RecordingEncoding;

constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;
// Sound this far from where its stamp puts it is moved there (silence in a gap, an overlap cut);
// closer, it follows on, so the stamps' jitter never chops it.
constexpr std::int64_t audioSlack = audioSampleRate / 50;
constexpr std::int64_t samplesPerFrame = audioSampleRate / framesPerSecond;

QString averror(int code)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return QString::fromUtf8(text);
}

AVPixelFormat pixelFormat(QImage::Format format)
{
    switch (format) {
    case QImage::Format_RGBA8888:
    case QImage::Format_RGBA8888_Premultiplied:
        return AV_PIX_FMT_RGBA;
    case QImage::Format_RGBX8888:
        return AV_PIX_FMT_RGB0;
    case QImage::Format_ARGB32:
    case QImage::Format_ARGB32_Premultiplied:
        return Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? AV_PIX_FMT_BGRA : AV_PIX_FMT_ARGB;
    case QImage::Format_RGB32:
        return Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? AV_PIX_FMT_BGR0 : AV_PIX_FMT_0RGB;
    default:
        return AV_PIX_FMT_NONE;
    }
}

// The picture drawn upright with what lay over it, when something did.
QImage composed(const CaptureFrame &frame)
{
    QImage image = frame.picture.bottomUp ? frame.picture.image.mirrored(false, true)
                                          : frame.picture.image.copy();
    image.setDevicePixelRatio(1);
    QPainter painter(&image);
    for (const CaptureOverlay &overlay : frame.overlays) {
        painter.drawImage(QRectF(QPointF(overlay.at), QSizeF(overlay.image.size())), overlay.image,
                          QRectF(overlay.image.rect()));
    }
    return image;
}

// Where a picture of `source` goes in `output`: as large as fits, proportions kept, centred on
// even pixels. A picture within two pixels of the output's shape fills it.
QRect fittedRect(QSize source, QSize output)
{
    const double scale = std::min(double(output.width()) / source.width(),
                                  double(output.height()) / source.height());
    int width = std::max(2, int(std::lround(source.width() * scale)) & ~1);
    int height = std::max(2, int(std::lround(source.height() * scale)) & ~1);
    if (std::abs(width - output.width()) <= 2 && std::abs(height - output.height()) <= 2)
        return QRect(QPoint(0, 0), output);
    width = std::min(width, output.width());
    height = std::min(height, output.height());
    return QRect(((output.width() - width) / 2) & ~1, ((output.height() - height) / 2) & ~1, width,
                 height);
}

void fillBlack(AVFrame *frame)
{
    for (int plane = 0; plane < 3; ++plane) {
        const int rows = plane == 0 ? frame->height : (frame->height + 1) / 2;
        std::memset(frame->data[plane], plane == 0 ? 16 : 128,
                    size_t(frame->linesize[plane]) * rows);
    }
}

} // namespace

std::variant<std::unique_ptr<PlayerCaptureWriter>, QString>
PlayerCaptureWriter::create(const QString &path, QSize size)
{
    // The save dialog has already asked whether to replace it.
    if (const QFileInfo old(path); old.exists() || old.isSymLink()) {
        QFile file(path);
        if (!file.remove())
            return RecordingTexts::cannotReplace.arg(path, file.errorString());
    }
    std::unique_ptr<PlayerCaptureWriter> writer(new PlayerCaptureWriter(path, size));
    if (std::optional<QString> failure = writer->open()) {
        writer->cancel();
        return *failure;
    }
    return writer;
}

PlayerCaptureWriter::PlayerCaptureWriter(const QString &path, QSize size)
    : m_path(path), m_size(size)
{}

PlayerCaptureWriter::~PlayerCaptureWriter()
{
    close();
}

std::optional<QString> PlayerCaptureWriter::open()
{
    const QByteArray file = QFile::encodeName(m_path);
    if (avformat_alloc_output_context2(&m_format, nullptr, "mp4", file.constData()) < 0)
        return errorDescription(RecorderError::writerConfigurationFailed);
    if (std::optional<QString> failure = openVideo())
        return failure;
    if (std::optional<QString> failure = openAudio())
        return failure;
    m_packet = av_packet_alloc();
    if (!m_packet)
        return errorDescription(RecorderError::writerConfigurationFailed);
    if (const int code = avio_open(&m_format->pb, file.constData(), AVIO_FLAG_WRITE); code < 0)
        return RecordingTexts::cannotWrite.arg(m_path, averror(code));
    // The index goes before the media, so the file plays while it is still being copied.
    AVDictionary *options = nullptr;
    av_dict_set(&options, "movflags", "+faststart", 0);
    const int code = avformat_write_header(m_format, &options);
    av_dict_free(&options);
    if (code < 0)
        return RecordingTexts::cannotWrite.arg(m_path, averror(code));
    m_headerWritten = true;
    return std::nullopt;
}

std::optional<QString> PlayerCaptureWriter::openVideo()
{
    const std::optional<std::int64_t> bitRate = recordingBitRate(m_size.width(), m_size.height());
    const AVCodec *codec = avcodec_find_encoder_by_name("libx264");
    if (!bitRate || !codec || m_size.width() < 2 || m_size.height() < 2 || m_size.width() % 2 ||
        m_size.height() % 2)
        return errorDescription(RecorderError::writerConfigurationFailed);
    m_video = avcodec_alloc_context3(codec);
    if (!m_video)
        return errorDescription(RecorderError::writerConfigurationFailed);
    m_video->width = m_size.width();
    m_video->height = m_size.height();
    m_video->pix_fmt = AV_PIX_FMT_YUV420P;
    m_video->time_base = AVRational{1, framesPerSecond};
    m_video->framerate = AVRational{framesPerSecond, 1};
    m_video->gop_size = keyFrameInterval;
    m_video->bit_rate = *bitRate;
    m_video->color_primaries = AVCOL_PRI_BT709;
    m_video->color_trc = AVCOL_TRC_BT709;
    m_video->colorspace = AVCOL_SPC_BT709;
    m_video->color_range = AVCOL_RANGE_MPEG;
    if (m_format->oformat->flags & AVFMT_GLOBALHEADER)
        m_video->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    av_opt_set(m_video->priv_data, "profile", videoProfile, 0);
    av_opt_set(m_video->priv_data, "preset", videoPreset, 0);
    if (avcodec_open2(m_video, codec, nullptr) < 0)
        return errorDescription(RecorderError::writerConfigurationFailed);
    m_videoStream = addStream(m_video);
    m_videoFrame = av_frame_alloc();
    if (!m_videoStream || !m_videoFrame)
        return errorDescription(RecorderError::writerConfigurationFailed);
    m_videoStream->avg_frame_rate = m_video->framerate;
    m_videoFrame->format = m_video->pix_fmt;
    m_videoFrame->width = m_video->width;
    m_videoFrame->height = m_video->height;
    if (av_frame_get_buffer(m_videoFrame, 0) < 0)
        return errorDescription(RecorderError::writerConfigurationFailed);
    return std::nullopt;
}

AVStream *PlayerCaptureWriter::addStream(const AVCodecContext *codec)
{
    AVStream *stream = avformat_new_stream(m_format, nullptr);
    if (!stream || avcodec_parameters_from_context(stream->codecpar, codec) < 0)
        return nullptr;
    stream->time_base = codec->time_base;
    return stream;
}

std::optional<QString> PlayerCaptureWriter::openAudio()
{
    const AVCodec *codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
    if (!codec)
        return errorDescription(RecorderError::writerConfigurationFailed);
    m_audio = avcodec_alloc_context3(codec);
    if (!m_audio)
        return errorDescription(RecorderError::writerConfigurationFailed);
    m_audio->sample_fmt = AV_SAMPLE_FMT_FLTP;
    m_audio->sample_rate = audioSampleRate;
    av_channel_layout_default(&m_audio->ch_layout, audioChannels);
    m_audio->bit_rate = audioBitRate;
    m_audio->time_base = AVRational{1, audioSampleRate};
    if (m_format->oformat->flags & AVFMT_GLOBALHEADER)
        m_audio->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (avcodec_open2(m_audio, codec, nullptr) < 0)
        return errorDescription(RecorderError::writerConfigurationFailed);
    m_audioStream = addStream(m_audio);
    m_audioFrame = av_frame_alloc();
    if (!m_audioStream || !m_audioFrame)
        return errorDescription(RecorderError::writerConfigurationFailed);
    m_audioFrame->format = m_audio->sample_fmt;
    m_audioFrame->sample_rate = audioSampleRate;
    m_audioFrame->nb_samples = m_audio->frame_size;
    if (av_channel_layout_copy(&m_audioFrame->ch_layout, &m_audio->ch_layout) < 0 ||
        av_frame_get_buffer(m_audioFrame, 0) < 0)
        return errorDescription(RecorderError::writerConfigurationFailed);
    return std::nullopt;
}

void PlayerCaptureWriter::appendVideo(const CaptureFrame &frame)
{
    if (m_failure || frame.picture.image.isNull())
        return;
    if (!m_sessionStarted) {
        m_sessionStarted = true;
        m_firstFrameTime = frame.time;
    }
    const std::int64_t slot = std::llround(double(frame.time - m_firstFrameTime) * framesPerSecond /
                                           nanosecondsPerSecond);
    if (slot <= m_lastSlot)
        return;
    if (!convert(frame))
        return;
    m_videoFrame->pts = slot;
    if (encode(m_video, m_videoStream, m_videoFrame)) {
        m_lastSlot = slot;
        ++m_framesWritten;
    }
}

bool PlayerCaptureWriter::convert(const CaptureFrame &frame)
{
    QImage upright;
    const QImage *source = &frame.picture.image;
    bool bottomUp = frame.picture.bottomUp;
    if (!frame.overlays.empty() || pixelFormat(source->format()) == AV_PIX_FMT_NONE) {
        upright = composed(frame);
        if (pixelFormat(upright.format()) == AV_PIX_FMT_NONE)
            upright.convertTo(QImage::Format_ARGB32_Premultiplied);
        source = &upright;
        bottomUp = false;
    }
    if (av_frame_make_writable(m_videoFrame) < 0)
        return false;
    const QRect target = fittedRect(source->size(), m_size);
    if (target.size() != m_size)
        fillBlack(m_videoFrame);
    m_scaler = sws_getCachedContext(m_scaler, source->width(), source->height(),
                                    pixelFormat(source->format()), target.width(), target.height(),
                                    AV_PIX_FMT_YUV420P, SWS_BILINEAR, nullptr, nullptr, nullptr);
    if (!m_scaler)
        return false;
    // Screens show full-range RGB; the video is BT.709 limited range, as tagged.
    const int *bt709 = sws_getCoefficients(SWS_CS_ITU709);
    sws_setColorspaceDetails(m_scaler, bt709, 1, bt709, 0, 0, 1 << 16, 1 << 16);
    const int bytesPerLine = int(source->bytesPerLine());
    const uint8_t *rows[1] = {source->constBits()};
    int strides[1] = {bytesPerLine};
    if (bottomUp) {
        rows[0] = source->constBits() + qsizetype(source->height() - 1) * bytesPerLine;
        strides[0] = -bytesPerLine;
    }
    uint8_t *planes[3];
    for (int plane = 0; plane < 3; ++plane) {
        const int shift = plane == 0 ? 0 : 1;
        planes[plane] = m_videoFrame->data[plane] +
                        qsizetype(target.y() >> shift) * m_videoFrame->linesize[plane] +
                        (target.x() >> shift);
    }
    sws_scale(m_scaler, rows, strides, 0, source->height(), planes, m_videoFrame->linesize);
    return true;
}

void PlayerCaptureWriter::appendAudio(const AudioChunk &chunk)
{
    if (!m_sessionStarted || m_failure)
        return;
    const std::int64_t frames = std::int64_t(chunk.samples.size()) / audioChannels;
    std::int64_t at = std::llround(double(chunk.time - m_firstFrameTime) * audioSampleRate /
                                   nanosecondsPerSecond);
    std::int64_t skip = 0;
    if (at < m_audioPlaced - audioSlack)
        skip = m_audioPlaced - at; // heard again, or before the first frame
    else if (at > m_audioPlaced + audioSlack)
        writeSilence(at - m_audioPlaced);
    if (skip >= frames)
        return;
    writeSamples(chunk.samples.data() + skip * audioChannels, frames - skip);
}

void PlayerCaptureWriter::writeSilence(std::int64_t frames)
{
    const std::vector<float> silence(size_t(std::min<std::int64_t>(frames, audioSampleRate)) *
                                     audioChannels);
    while (frames > 0 && !m_failure) {
        const std::int64_t now = std::min<std::int64_t>(frames, audioSampleRate);
        writeSamples(silence.data(), now);
        frames -= now;
    }
}

void PlayerCaptureWriter::writeSamples(const float *samples, std::int64_t frames)
{
    m_pendingAudio.insert(m_pendingAudio.end(), samples, samples + frames * audioChannels);
    m_audioPlaced += frames;
    encodePendingBlocks();
}

void PlayerCaptureWriter::encodePendingBlocks()
{
    const size_t block = size_t(m_audio->frame_size) * audioChannels;
    size_t used = 0;
    while (m_pendingAudio.size() - used >= block && !m_failure) {
        if (const int code = av_frame_make_writable(m_audioFrame); code < 0) {
            fail(averror(code));
            break;
        }
        const float *in = m_pendingAudio.data() + used;
        auto *left = reinterpret_cast<float *>(m_audioFrame->data[0]);
        auto *right = reinterpret_cast<float *>(m_audioFrame->data[1]);
        for (int i = 0; i < m_audio->frame_size; ++i) {
            left[i] = in[2 * i];
            right[i] = in[2 * i + 1];
        }
        encodeAudioBlock();
        used += block;
    }
    m_pendingAudio.erase(m_pendingAudio.begin(), m_pendingAudio.begin() + qsizetype(used));
}

void PlayerCaptureWriter::encodeAudioBlock()
{
    m_audioFrame->pts = m_audioEncoded;
    m_audioEncoded += m_audioFrame->nb_samples;
    encode(m_audio, m_audioStream, m_audioFrame);
}

bool PlayerCaptureWriter::encode(AVCodecContext *codec, AVStream *stream, AVFrame *frame)
{
    if (const int code = avcodec_send_frame(codec, frame); code < 0 && code != AVERROR_EOF) {
        fail(averror(code));
        return false;
    }
    for (;;) {
        const int code = avcodec_receive_packet(codec, m_packet);
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF)
            return true;
        if (code < 0) {
            fail(averror(code));
            return false;
        }
        av_packet_rescale_ts(m_packet, codec->time_base, stream->time_base);
        m_packet->stream_index = stream->index;
        if (const int written = av_interleaved_write_frame(m_format, m_packet); written < 0) {
            fail(averror(written));
            return false;
        }
    }
}

void PlayerCaptureWriter::fail(const QString &why)
{
    if (!m_failure)
        m_failure = RecordingTexts::cannotWrite.arg(m_path, why);
}

RecordingOutcome PlayerCaptureWriter::finish()
{
    if (!m_sessionStarted) {
        cancel();
        return RecordingOutcome::failed(errorDescription(RecorderError::noFramesCaptured));
    }
    // The sound lasts as long as the picture, silent where none was heard.
    const std::int64_t videoEnd = (m_lastSlot + 1) * samplesPerFrame;
    if (m_audioPlaced < videoEnd)
        writeSilence(videoEnd - m_audioPlaced);
    if (!m_pendingAudio.empty() && !m_failure) {
        // The last block is filled up with silence.
        m_pendingAudio.resize(size_t(m_audio->frame_size) * audioChannels, 0.0f);
        encodePendingBlocks();
    }
    if (!m_failure) {
        encode(m_video, m_videoStream, nullptr);
        encode(m_audio, m_audioStream, nullptr);
    }
    if (!m_failure) {
        if (const int code = av_write_trailer(m_format); code < 0)
            fail(averror(code));
        else if (m_format->pb->error < 0)
            fail(averror(m_format->pb->error));
        m_headerWritten = false;
    }
    if (!m_failure) {
        if (const int code = avio_closep(&m_format->pb); code < 0)
            fail(averror(code));
    }
    if (m_failure) {
        const QString why = *m_failure;
        cancel();
        return RecordingOutcome::failed(why);
    }
    close();
    return RecordingOutcome::saved(m_path);
}

void PlayerCaptureWriter::cancel()
{
    const bool opened = m_format && m_format->pb;
    close();
    // A file without its index plays nowhere: it is not left behind.
    if (opened || m_headerWritten)
        QFile::remove(m_path);
}

void PlayerCaptureWriter::close()
{
    if (m_format && m_format->pb)
        avio_closep(&m_format->pb);
    m_headerWritten = false;
    sws_freeContext(m_scaler);
    m_scaler = nullptr;
    av_packet_free(&m_packet);
    av_frame_free(&m_videoFrame);
    av_frame_free(&m_audioFrame);
    avcodec_free_context(&m_video);
    avcodec_free_context(&m_audio);
    avformat_free_context(m_format);
    m_format = nullptr;
    m_videoStream = nullptr;
    m_audioStream = nullptr;
}
