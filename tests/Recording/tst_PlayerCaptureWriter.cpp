#include "FileSizeLimit.h"
#include "MediaProbe.h"
#include "Recording/CaptureEncoder.h"
#include "Recording/PlayerCaptureWriter.h"

#include <QDir>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr std::int64_t second = 1'000'000'000;
constexpr std::int64_t frameTime = second / 30;
// Any moment on the monotonic clock; the file's time line starts at its first frame.
constexpr std::int64_t origin = 5'000 * second;

// A frame of one colour, as OpenGL reads it back (rows bottom first) or as a widget grab gives
// it, with a marker square in its top-left corner so that a picture upside down shows.
CaptureFrame frame(QColor colour, std::int64_t time, bool bottomUp, QSize size = QSize(320, 180))
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(colour);
    QPainter(&image).fillRect(0, 0, size.width() / 4, size.height() / 4, Qt::white);
    if (bottomUp)
        image = image.mirrored(false, true).convertToFormat(QImage::Format_RGBA8888);
    return CaptureFrame{{image, bottomUp}, {}, time};
}

// 10 ms of sound starting at time: a 1 kHz tone or silence.
AudioChunk chunk(std::int64_t time, bool tone)
{
    AudioChunk chunk{std::vector<float>(960), time};
    for (size_t i = 0; tone && i < 480; ++i) {
        const float value = float(0.5 * std::sin(2 * M_PI * 1000 * double(i) / 48000));
        chunk.samples[2 * i] = chunk.samples[2 * i + 1] = value;
    }
    return chunk;
}

std::unique_ptr<PlayerCaptureWriter> created(const QString &path, QSize size = QSize(320, 180))
{
    auto writer = PlayerCaptureWriter::create(path, size);
    if (auto *failure = std::get_if<QString>(&writer))
        qWarning("%s", qPrintable(*failure));
    return std::holds_alternative<QString>(writer)
               ? nullptr
               : std::move(std::get<std::unique_ptr<PlayerCaptureWriter>>(writer));
}

// Writes until the writer fails or `frames` frames are in.
void feed(PlayerCaptureWriter &writer, int frames, std::int64_t soundLead = 0)
{
    for (int i = 0; i < frames && !writer.failure(); ++i) {
        writer.appendVideo(frame(i % 2 ? Qt::red : Qt::blue, origin + i * frameTime, false));
        for (int c = 0; c < 4; ++c)
            writer.appendAudio(chunk(origin - soundLead + i * frameTime + c * frameTime / 4, true));
    }
}

} // namespace

// The MP4 writer on real files, read back with ffprobe and ffmpeg.
class tst_PlayerCaptureWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesAFileThatPlaysEverywhere()
    {
        const QString path = m_dir.filePath(u"colours.mp4"_s);
        auto writer = created(path);
        QVERIFY(writer);
        // One second red as OpenGL gives it, one second blue as a widget grab gives it, with a
        // green badge drawn over the second half; frames for a slot already filled are dropped.
        for (int i = 0; i < 60; ++i) {
            CaptureFrame next = i < 30 ? frame(Qt::red, origin + i * frameTime, true)
                                       : frame(Qt::blue, origin + i * frameTime, false);
            if (i >= 30) {
                QImage badge(80, 45, QImage::Format_ARGB32_Premultiplied);
                badge.fill(Qt::green);
                next.overlays.push_back({QPoint(240, 135), badge});
            }
            writer->appendVideo(next);
            writer->appendVideo(frame(Qt::yellow, origin + i * frameTime + frameTime / 4, false));
            for (int c = 0; c < 4; ++c)
                writer->appendAudio(chunk(origin + i * frameTime + c * frameTime / 4, true));
        }
        QCOMPARE(writer->framesWritten(), 60);
        const RecordingOutcome outcome = writer->finish();
        QCOMPARE(outcome.savedPath, path);

        const QJsonObject probed = MediaProbe::probe(path);
        const QJsonObject video = MediaProbe::stream(probed, u"video"_s);
        const QJsonObject audio = MediaProbe::stream(probed, u"audio"_s);
        QCOMPARE(video.value(u"codec_name"_s).toString(), u"h264"_s);
        QCOMPARE(video.value(u"profile"_s).toString(), u"High"_s);
        QCOMPARE(video.value(u"width"_s).toInt(), 320);
        QCOMPARE(video.value(u"height"_s).toInt(), 180);
        QCOMPARE(video.value(u"nb_read_frames"_s).toString(), u"60"_s);
        QCOMPARE(audio.value(u"codec_name"_s).toString(), u"aac"_s);
        QCOMPARE(audio.value(u"sample_rate"_s).toString(), u"48000"_s);
        QCOMPARE(audio.value(u"channels"_s).toInt(), 2);
        QVERIFY(std::abs(MediaProbe::number(probed.value(u"format"_s).toObject(), "duration") -
                         2.0) < 0.05);
        QVERIFY(MediaProbe::indexFirst(path));

        const std::vector<QByteArray> pictures = MediaProbe::frames(path);
        QVERIFY(pictures.size() >= 59);
        // Upright (the marker top-left) in both row orders, each its own colour, the badge on top.
        QVERIFY(MediaProbe::near(MediaProbe::pixel(pictures[15], 1, 1), Qt::white));
        QVERIFY(MediaProbe::near(MediaProbe::pixel(pictures[15], 14, 7), Qt::red));
        QVERIFY(MediaProbe::near(MediaProbe::pixel(pictures[45], 1, 1), Qt::white));
        QVERIFY(MediaProbe::near(MediaProbe::pixel(pictures[45], 8, 5), Qt::blue));
        QVERIFY(MediaProbe::near(MediaProbe::pixel(pictures[45], 14, 7), Qt::green));
        QVERIFY(MediaProbe::loudestSample(MediaProbe::samples(path)) > 8000);
    }

    void keepsPictureAndSoundInStep()
    {
        // Flashes and beeps at the same instants; the sound starts before the first frame (dropped)
        // and pauses for a while in the middle (silence fills the gap).
        const QString path = m_dir.filePath(u"step.mp4"_s);
        auto writer = created(path);
        QVERIFY(writer);
        for (int c = -50; c < 400; ++c) {
            const std::int64_t time = origin + c * second / 100;
            const bool flash = c >= 0 && c % 100 >= 50 && c % 100 < 60;
            if (c >= 0 && c % 10 == 0) {
                for (int f = 0; f < 3; ++f) {
                    const std::int64_t at = time + f * frameTime;
                    const bool lit = (at - origin) % second >= second / 2 &&
                                     (at - origin) % second < second / 2 + second / 10;
                    writer->appendVideo(frame(lit ? Qt::white : Qt::black, at, f % 2));
                }
            }
            if (c < 170 || c >= 230)
                writer->appendAudio(chunk(time, flash || c < 0));
        }
        QCOMPARE(writer->finish().savedPath, path);
        const std::vector<double> flashes = MediaProbe::flashes(MediaProbe::frames(path));
        const std::vector<double> beeps = MediaProbe::beeps(MediaProbe::samples(path));
        QCOMPARE(flashes.size(), size_t(4));
        QCOMPARE(beeps.size(), size_t(4));
        for (size_t i = 0; i < flashes.size(); ++i)
            QVERIFY2(std::abs(flashes[i] - beeps[i]) <= 0.035,
                     qPrintable(u"flash %1 s, beep %2 s"_s.arg(flashes[i]).arg(beeps[i])));
    }

    void finishingWithoutFramesLeavesNoFile()
    {
        const QString path = m_dir.filePath(u"empty.mp4"_s);
        auto writer = created(path);
        QVERIFY(writer);
        writer->appendAudio(chunk(origin, true)); // sound alone starts nothing
        const RecordingOutcome outcome = writer->finish();
        QVERIFY(!outcome.savedPath);
        QCOMPARE(outcome.error, u"No video frames were captured."_s);
        QVERIFY(!QFile::exists(path));
    }

    void replacesAnExistingFile()
    {
        const QString path = m_dir.filePath(u"again.mp4"_s);
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write(QByteArray(100000, 'x'));
        old.close();
        auto writer = created(path);
        QVERIFY(writer);
        feed(*writer, 15);
        QCOMPARE(writer->finish().savedPath, path);
        QCOMPARE(MediaProbe::stream(MediaProbe::probe(path), u"video"_s)
                     .value(u"nb_read_frames"_s)
                     .toString(),
                 u"15"_s);
    }

    void refusesWhatCannotBeWritten_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("error");

        QVERIFY(QDir(m_dir.path()).mkpath(u"folder.mp4/inside"_s));
        QFile file(m_dir.filePath(u"plain"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QTest::newRow("a folder that cannot be written")
            << u"/sys/recording.mp4"_s
            << u"The recording could not be written to “/sys/recording.mp4”: Permission denied."_s;
        QTest::newRow("a folder that does not exist")
            << m_dir.filePath(u"gone/recording.mp4"_s)
            << u"The recording could not be written to “%1”: No such file or directory."_s.arg(
                   m_dir.filePath(u"gone/recording.mp4"_s));
        QTest::newRow("a file where a folder should be")
            << m_dir.filePath(u"plain/recording.mp4"_s)
            << u"The recording could not be written to “%1”: Not a directory."_s.arg(
                   m_dir.filePath(u"plain/recording.mp4"_s));
        QTest::newRow("a folder in the file's place")
            << m_dir.filePath(u"folder.mp4"_s)
            << u"The file “%1” could not be replaced: "_s.arg(m_dir.filePath(u"folder.mp4"_s));
    }

    void refusesWhatCannotBeWritten()
    {
        QFETCH(QString, path);
        QFETCH(QString, error);
        auto writer = PlayerCaptureWriter::create(path, QSize(320, 180));
        QVERIFY(std::holds_alternative<QString>(writer));
        QVERIFY2(std::get<QString>(writer).startsWith(error),
                 qPrintable(std::get<QString>(writer)));
    }

    void aFullDiskFailsAndLeavesNoFile()
    {
        const QString path = m_dir.filePath(u"full.mp4"_s);
        FileSizeLimit full(200 * 1024);
        QVERIFY(full.applied());
        auto writer = created(path);
        if (writer)
            feed(*writer, 900);
        const std::optional<QString> failure = writer ? writer->failure() : std::nullopt;
        const RecordingOutcome outcome =
            writer ? writer->finish() : RecordingOutcome::failed(QString());
        full.lift();
        QVERIFY(writer);
        QVERIFY(failure);
        QVERIFY2(writer->framesWritten() < 900, "the writer went on past the full disk");
        QVERIFY(!outcome.savedPath);
        QCOMPARE(outcome.error,
                 u"The recording could not be written to “%1”: File too large."_s.arg(path));
        QVERIFY(!QFile::exists(path));
    }

    void theEncoderDropsRatherThanWaits()
    {
        // A burst of large frames faster than any encoder: offering never waits, so some are
        // dropped, and every frame offered is either written or dropped.
        const QString path = m_dir.filePath(u"burst.mp4"_s);
        std::optional<QString> opened = u"not yet"_s;
        std::optional<RecordingOutcome> outcome;
        {
            CaptureEncoder encoder([](const QString &) {});
            encoder.open(path, QSize(1920, 1080), [&](const auto &failure) { opened = failure; });
            QTRY_VERIFY(!opened);
            const CaptureFrame big = frame(Qt::darkCyan, 0, true, QSize(1920, 1080));
            for (int i = 0; i < 120; ++i) {
                CaptureFrame next = big;
                next.time = origin + i * frameTime;
                encoder.offerFrame(std::move(next));
            }
            QVERIFY(encoder.framesDropped() > 0);
            QCOMPARE(encoder.framesOffered(), 120);
            encoder.finish([&](const RecordingOutcome &done) { outcome = done; });
            const std::int64_t dropped = encoder.framesDropped();
            QTRY_VERIFY_WITH_TIMEOUT(outcome, 60000);
            QCOMPARE(outcome->savedPath, path);
            QCOMPARE(MediaProbe::stream(MediaProbe::probe(path), u"video"_s)
                         .value(u"nb_read_frames"_s)
                         .toString()
                         .toLongLong(),
                     120 - dropped);
        }
    }

private:
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(tst_PlayerCaptureWriter)
#include "tst_PlayerCaptureWriter.moc"
