#include "App/AppSession.h"
#include "FileSizeLimit.h"
#include "MediaProbe.h"
#include "Recording/RecordingOutputSize.h"
#include "Recording/RecordingPanel.h"
#include "Surface/PlayerHostingView.h"
#include "TestHome.h"
#include "TestMedia.h"
#include "TestSoundServer.h"
#include "UI/ContentView.h"
#include "UI/PlayerTheme.h"
#include "Web/WebPlayerProfile.h"
#include "Web/YouTubeHostingView.h"

#include <QLabel>
#include <QTemporaryDir>
#include <QTest>
#include <QWebEngineView>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

// The colours along the middle row of a picture, left to right, each named once.
QString coloursAcross(const QByteArray &picture)
{
    QString seen;
    for (int x = 0; x < MediaProbe::frameWidth; ++x) {
        const QColor c = MediaProbe::pixel(picture, x, MediaProbe::frameHeight / 2);
        const QChar name = MediaProbe::near(c, Qt::red, 60)     ? u'R'
                           : MediaProbe::near(c, Qt::green, 60) ? u'G'
                           : MediaProbe::near(c, Qt::blue, 60)  ? u'B'
                                                                : u'.';
        if (name != u'.' && !seen.endsWith(name))
            seen += name;
    }
    return seen;
}

} // namespace

// Recordings of the running application under Xvfb, with a sound server of the test's own whose
// null output is what the recording hears; the files are read back with ffprobe and ffmpeg.
class tst_Recording : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        useTemporaryHome();
        // The application's look, so that the toast has its dark background as users see it.
        PlayerTheme::apply(*qApp);
        const QString failure = m_sound.start();
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
        m_session = std::make_unique<AppSession>();
        m_session->window().resize(1000, 640);
        m_session->show();
        QVERIFY(QTest::qWaitForWindowExposed(&m_session->window()));
    }

    void cleanup()
    {
        if (recorder().state() == PlayerRecordingState::recording)
            recorder().stopRecording();
        QTRY_COMPARE_WITH_TIMEOUT(recorder().state(), PlayerRecordingState::idle, 30000);
        // The alerts of the last recording are dismissed, as a user would.
        if (QWidget *sheet = m_session->content().openSheet())
            sheet->close();
    }

    void recordsWhatThePlayerShowsAndPlays()
    {
        play(u"columns-tone.mp4"_s);
        auto *view = m_session->window().findChild<PlayerHostingView *>();
        QVERIFY(view);
        const QSize expected =
            outputDimensions(QSizeF(view->recordingRectInView().size()), view->devicePixelRatioF(),
                             PlayerRecordingQuality::normal);
        // A toast shows over the picture for the second half of the recording.
        QTimer::singleShot(1500, &player(), [this] { player().showToast(u"Volume 100%"_s, 3e9); });
        double recorded = 0;
        const QString path = record(u"player.mp4"_s, 3, &recorded);
        QVERIFY(!path.isEmpty());
        QVERIFY(player().isPlaying());
        QCOMPARE(recorder().errorMessage(), std::nullopt);

        const QJsonObject probed = MediaProbe::probe(path);
        const QJsonObject video = MediaProbe::stream(probed, u"video"_s);
        const QJsonObject audio = MediaProbe::stream(probed, u"audio"_s);
        QCOMPARE(video.value(u"profile"_s).toString(), u"High"_s);
        QCOMPARE(QSize(video.value(u"width"_s).toInt(), video.value(u"height"_s).toInt()),
                 expected);
        QCOMPARE(audio.value(u"codec_name"_s).toString(), u"aac"_s);
        QCOMPARE(audio.value(u"sample_rate"_s).toString(), u"48000"_s);
        QCOMPARE(audio.value(u"channels"_s).toInt(), 2);
        const double duration =
            MediaProbe::number(probed.value(u"format"_s).toObject(), "duration");
        QVERIFY2(std::abs(duration - recorded) <= 0.3,
                 qPrintable(u"file %1 s, recorded %2 s"_s.arg(duration).arg(recorded)));
        const double frames = video.value(u"nb_read_frames"_s).toString().toDouble();
        QVERIFY2(frames >= 0.9 * 30 * duration, qPrintable(QString::number(frames)));
        QVERIFY(MediaProbe::indexFirst(path));
        // The tone peaks at about 3,000 once mixed down to one channel, silence near 0: a third
        // of the tone tells them apart with room for how loud a run plays it (one gave 2,998).
        const std::vector<std::int16_t> sound = MediaProbe::samples(path);
        QVERIFY2(MediaProbe::loudestSample(sound) > 1000,
                 qPrintable(u"loudest sample %1 of %2"_s.arg(MediaProbe::loudestSample(sound))
                                .arg(sound.size())));

        const std::vector<QByteArray> pictures = MediaProbe::frames(path);
        QVERIFY(pictures.size() > 60);
        QCOMPARE(coloursAcross(pictures[15]), u"RGB"_s);
        // The toast near the bottom of the picture is in the recording.
        const int toastRow = MediaProbe::frameHeight - 1;
        int changed = 0;
        for (int x = 0; x < MediaProbe::frameWidth; ++x) {
            changed += !MediaProbe::near(MediaProbe::pixel(pictures[15], x, toastRow),
                                         MediaProbe::pixel(pictures.back(), x, toastRow), 30);
        }
        QVERIFY2(changed >= 2, "the toast is not in the recording");
    }

    void grabsTheVideoWithoutDrawingAgain()
    {
        play(u"columns.mp4"_s);
        player().togglePlayback();
        QTRY_VERIFY(!player().isPlaying());
        auto *view = m_session->window().findChild<PlayerHostingView *>();
        QVERIFY(view);
        QTest::qWait(300);
        // The first grab draws the frame once more, into the buffer it is then kept in.
        const quint64 drawnBefore = view->framesDrawn();
        QVERIFY(!view->recordingPicture(view->recordingRectInView()).image.isNull());
        QVERIFY(view->framesDrawn() <= drawnBefore + 1);
        const quint64 drawn = view->framesDrawn();
        for (int i = 0; i < 10; ++i) {
            const CapturedPicture picture = view->recordingPicture(view->recordingRectInView());
            QVERIFY(picture.bottomUp);
            const QImage image = picture.image.mirrored(false, true);
            const int y = image.height() / 2;
            QVERIFY(MediaProbe::near(image.pixelColor(image.width() / 2, y), Qt::green, 40));
            QVERIFY(MediaProbe::near(
                image.pixelColor(image.width() / 2 - image.height() * 16 / 9 / 3, y), Qt::red, 40));
        }
        QCOMPARE(view->framesDrawn(), drawn);
    }

    void keepsPictureAndSoundInStep()
    {
        play(u"flash-beep.mp4"_s);
        const QString path = record(u"step.mp4"_s, 4.5);
        QVERIFY(!path.isEmpty());
        const std::vector<double> flashes = MediaProbe::flashes(MediaProbe::frames(path));
        const std::vector<double> beeps = MediaProbe::beeps(MediaProbe::samples(path));
        // Each beep against the flash nearest to it. A picture the player itself showed late once
        // moves one pair; a recorder that places sound and picture apart moves them all, so the
        // median is what is judged.
        std::vector<double> offsets;
        QString pairs;
        for (const double beep : beeps) {
            const auto flash =
                std::min_element(flashes.begin(), flashes.end(), [&](double a, double b) {
                    return std::abs(a - beep) < std::abs(b - beep);
                });
            if (flash == flashes.end() || std::abs(*flash - beep) >= 0.5)
                continue;
            offsets.push_back(*flash - beep);
            pairs += u" %1/%2"_s.arg(*flash).arg(beep);
        }
        QVERIFY2(offsets.size() >= 3, qPrintable(u"flash/beep pairs:"_s + pairs));
        std::sort(offsets.begin(), offsets.end());
        const double median = offsets[offsets.size() / 2];
        QVERIFY2(std::abs(median) <= 0.05, qPrintable(u"flash/beep pairs:"_s + pairs));
    }

    void stopsByItselfAndShowsTheTimeLeft()
    {
        play(u"columns-tone.mp4"_s);
        const QString path = m_files.filePath(u"timed.mp4"_s);
        QCOMPARE(recorder().startRecording(PlayerRecordingQuality::normal, path, u" 0,05 m "_s),
                 std::nullopt);
        QTRY_COMPARE(recorder().state(), PlayerRecordingState::recording);
        QVERIFY(recorder().recordingPanel());
        QCOMPARE(recorder().recordingPanel()->width(), 310);
        QTRY_COMPARE(recorder().panelText(), u"REC  00:01  •  LEFT  00:01"_s);
        QTRY_COMPARE_WITH_TIMEOUT(recorder().state(), PlayerRecordingState::idle, 10000);
        QCOMPARE(recorder().panelText(), std::nullopt);
        QCOMPARE(recorder().lastSavedURL(), QUrl::fromLocalFile(path));
        QVERIFY(recorder().duration() >= 3 && recorder().duration() < 3.5);
        const double duration =
            MediaProbe::number(MediaProbe::probe(path).value(u"format"_s).toObject(), "duration");
        QVERIFY2(std::abs(duration - 3) < 0.35, qPrintable(QString::number(duration)));
    }

    void tellsWhyAFolderCannotBeWritten()
    {
        play(u"columns-tone.mp4"_s);
        QCOMPARE(recorder().startRecording(PlayerRecordingQuality::normal, u"/sys/velm.mp4"_s, {}),
                 std::nullopt);
        QCOMPARE(recorder().state(), PlayerRecordingState::preparing);
        QTRY_COMPARE(recorder().state(), PlayerRecordingState::idle);
        QCOMPARE(recorder().errorMessage(),
                 u"The recording could not be written to “/sys/velm.mp4”: Permission denied."_s);
        // Where no capture permission exists, a folder's refusal is not mistaken for one.
        QVERIFY(!recorder().requiresScreenRecordingPermission());
        const double before = player().currentTime();
        QTRY_VERIFY(player().currentTime() > before + 0.5);
    }

    void stopsWhenTheDiskIsFull()
    {
        play(u"columns-tone.mp4"_s);
        const QString path = m_files.filePath(u"full.mp4"_s);
        QCOMPARE(recorder().startRecording(PlayerRecordingQuality::normal, path, {}), std::nullopt);
        QTRY_COMPARE(recorder().state(), PlayerRecordingState::recording);
        FileSizeLimit full(256 * 1024);
        QVERIFY(full.applied());
        const bool stopped = QTest::qWaitFor(
            [&] { return recorder().state() == PlayerRecordingState::idle; }, 30000);
        full.lift();
        QVERIFY2(stopped, "the recording went on past the full disk");
        QCOMPARE(recorder().errorMessage(),
                 u"The recording could not be written to “%1”: File too large."_s.arg(path));
        QVERIFY(!QFile::exists(path));
        const double playing = player().currentTime();
        QTRY_VERIFY(player().currentTime() > playing + 0.5);
    }

    void recordsAWebPlayer()
    {
        // A browser view on a page of three columns, as the web players show their videos.
        player().stop();
        AppNotifier notifier;
        WebPlayerProfile profile;
        PlayerSurfaceRegistry surfaces;
        QWidget window;
        window.resize(640, 360);
        auto *web = new YouTubeHostingView(notifier, profile, &window);
        web->setGeometry(window.rect());
        web->setHtml(
            u"<html><body style='margin:0;display:flex;height:100vh'>"
            "<div style='flex:1;background:#f00'></div><div style='flex:1;background:#0f0'>"
            "</div><div style='flex:1;background:#00f'></div></body></html>"_s);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTRY_VERIFY_WITH_TIMEOUT(
            coloursAcross([&] {
                const QImage shown = web->recordingPicture(web->rect())
                                         .image.scaled(16, 9)
                                         .convertToFormat(QImage::Format_RGB888);
                QByteArray rows;
                for (int y = 0; y < 9; ++y)
                    rows.append(reinterpret_cast<const char *>(shown.scanLine(y)), 48);
                return rows;
            }()) == u"RGB"_s,
            20000);
        surfaces.hold(web);
        GrantedRecordingPermission permission;
        PlayerRecordingController webRecorder(surfaces, permission, nullptr);
        QStringList notices;
        connect(&webRecorder, &PlayerRecordingController::notice, this,
                [&](const QString &text) { notices.append(text); });
        const QString path = m_files.filePath(u"web.mp4"_s);
        QCOMPARE(webRecorder.startRecording(PlayerRecordingQuality::hd, path, {}), std::nullopt);
        QTRY_COMPARE(webRecorder.state(), PlayerRecordingState::recording);
        QTest::qWait(2000);
        webRecorder.stopRecording();
        QTRY_COMPARE_WITH_TIMEOUT(webRecorder.state(), PlayerRecordingState::idle, 30000);
        QCOMPARE(webRecorder.lastSavedURL(), QUrl::fromLocalFile(path));
        // Without the system's sound the user is told once, and the file still has its sound track.
        QCOMPARE(notices,
                 QStringList{u"Recording without system audio: the sound server could not be "
                             "reached."_s});
        const QJsonObject probed = MediaProbe::probe(path);
        const QJsonObject video = MediaProbe::stream(probed, u"video"_s);
        QCOMPARE(QSize(video.value(u"width"_s).toInt(), video.value(u"height"_s).toInt()),
                 QSize(1920, 1080));
        QCOMPARE(MediaProbe::stream(probed, u"audio"_s).value(u"codec_name"_s).toString(),
                 u"aac"_s);
        const double duration =
            MediaProbe::number(probed.value(u"format"_s).toObject(), "duration");
        QVERIFY(video.value(u"nb_read_frames"_s).toString().toDouble() >= 0.95 * 30 * duration);
        const std::vector<QByteArray> pictures = MediaProbe::frames(path);
        QVERIFY(!pictures.empty());
        QCOMPARE(coloursAcross(pictures[pictures.size() / 2]), u"RGB"_s);
    }

private:
    PlayerRecordingController &recorder() { return m_session->recorder(); }
    PlayerModel &player() { return m_session->player(); }
    // Plays name from its start and waits until its picture is drawn.
    void play(const QString &name);
    // Records for about `seconds` and returns the file, or an empty path.
    QString record(const QString &name, double seconds, double *recorded = nullptr);

    TestSoundServer m_sound;
    QTemporaryDir m_files;
    std::unique_ptr<AppSession> m_session;
};

void tst_Recording::play(const QString &name)
{
    player().play(WebAddress::fromLocalFile(testMedia(name)), name, false);
    QTRY_VERIFY_WITH_TIMEOUT(player().isPlaying() && player().currentTime() > 0.2, 20000);
}

QString tst_Recording::record(const QString &name, double seconds, double *recorded)
{
    const QString path = m_files.filePath(name);
    if (recorder().startRecording(PlayerRecordingQuality::normal, path, QString()))
        return {};
    if (!QTest::qWaitFor([&] { return recorder().state() == PlayerRecordingState::recording; },
                         20000))
        return {};
    QTest::qWait(int(seconds * 1000));
    if (recorded)
        *recorded = recorder().duration();
    recorder().stopRecording();
    if (!QTest::qWaitFor([&] { return recorder().state() == PlayerRecordingState::idle; }, 30000))
        return {};
    return recorder().lastSavedURL() ? recorder().lastSavedURL()->toLocalFile() : QString();
}

QTEST_MAIN(tst_Recording)
#include "tst_Recording.moc"
