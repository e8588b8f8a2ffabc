#pragma once

#include "ProcessRunner.h"

#include <QColor>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtEndian>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

// What a media file holds, read back with the ffmpeg command-line tools: its streams, its
// pictures as small RGB frames on a 30-a-second grid, and its sound as mono samples.
namespace MediaProbe {

using namespace Qt::StringLiterals;

inline QJsonObject probe(const QString &path)
{
    const ProcessResult result =
        runProcess(u"ffprobe"_s, {u"-v"_s, u"error"_s, u"-show_streams"_s, u"-show_format"_s,
                                  u"-count_frames"_s, u"-of"_s, u"json"_s, path});
    return QJsonDocument::fromJson(result.out).object();
}

inline QJsonObject stream(const QJsonObject &probed, const QString &type)
{
    for (const QJsonValue &value : probed.value(u"streams"_s).toArray()) {
        if (value.toObject().value(u"codec_type"_s).toString() == type)
            return value.toObject();
    }
    return {};
}

inline double number(const QJsonObject &object, const char *key)
{
    return object.value(QLatin1String(key)).toString().toDouble();
}

constexpr int frameWidth = 16;
constexpr int frameHeight = 9;
constexpr int frameBytes = frameWidth * frameHeight * 3;

// Every picture scaled to 16 × 9, one per 1/30 s of the file's time line.
inline std::vector<QByteArray> frames(const QString &path)
{
    const ProcessResult result = runProcess(
        u"ffmpeg"_s,
        {u"-v"_s, u"error"_s, u"-i"_s, path, u"-vf"_s, u"scale=16:9:flags=area"_s, u"-fps_mode"_s,
         u"cfr"_s, u"-r"_s, u"30"_s, u"-pix_fmt"_s, u"rgb24"_s, u"-f"_s, u"rawvideo"_s, u"-"_s});
    std::vector<QByteArray> pictures;
    for (qsizetype at = 0; at + frameBytes <= result.out.size(); at += frameBytes)
        pictures.push_back(result.out.mid(at, frameBytes));
    return pictures;
}

inline QColor pixel(const QByteArray &frame, int x, int y)
{
    const auto *rgb = reinterpret_cast<const uchar *>(frame.constData()) + (y * frameWidth + x) * 3;
    return QColor(rgb[0], rgb[1], rgb[2]);
}

inline double brightness(const QByteArray &frame)
{
    double sum = 0;
    for (const char byte : frame)
        sum += uchar(byte);
    return sum / frame.size();
}

inline bool near(const QColor &a, const QColor &b, int tolerance = 40)
{
    return std::abs(a.red() - b.red()) <= tolerance &&
           std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

// The sound, mixed to mono, at 48 kHz.
inline std::vector<std::int16_t> samples(const QString &path)
{
    const ProcessResult result =
        runProcess(u"ffmpeg"_s, {u"-v"_s, u"error"_s, u"-i"_s, path, u"-ac"_s, u"1"_s, u"-ar"_s,
                                 u"48000"_s, u"-f"_s, u"s16le"_s, u"-"_s});
    std::vector<std::int16_t> mono(size_t(result.out.size()) / 2);
    for (size_t i = 0; i < mono.size(); ++i)
        mono[i] = qFromLittleEndian<std::int16_t>(result.out.constData() + i * 2);
    return mono;
}

inline double loudestSample(const std::vector<std::int16_t> &mono)
{
    int loudest = 0;
    for (const std::int16_t sample : mono)
        loudest = std::max(loudest, std::abs(int(sample)));
    return loudest;
}

// Seconds at which the pictures turn bright.
inline std::vector<double> flashes(const std::vector<QByteArray> &pictures)
{
    std::vector<double> onsets;
    for (size_t i = 1; i < pictures.size(); ++i) {
        if (brightness(pictures[i]) > 128 && brightness(pictures[i - 1]) <= 128)
            onsets.push_back(double(i) / 30);
    }
    return onsets;
}

// Seconds at which a sound starts after at least half a second of quiet.
inline std::vector<double> beeps(const std::vector<std::int16_t> &mono, int threshold = 1000)
{
    std::vector<double> onsets;
    size_t quietSince = 0;
    for (size_t i = 0; i < mono.size(); ++i) {
        if (std::abs(int(mono[i])) < threshold)
            continue;
        if (onsets.empty() || i - quietSince > 24000)
            onsets.push_back(double(i) / 48000);
        quietSince = i;
    }
    return onsets;
}

// Whether the file's index comes before its media, so it plays while still being copied.
inline bool indexFirst(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    while (!file.atEnd()) {
        const QByteArray header = file.read(8);
        if (header.size() < 8)
            return false;
        const quint32 size = qFromBigEndian<quint32>(header.constData());
        const QByteArray type = header.mid(4, 4);
        if (type == "moov")
            return true;
        if (type == "mdat" || size < 8)
            return false;
        file.seek(file.pos() + size - 8);
    }
    return false;
}

} // namespace MediaProbe
