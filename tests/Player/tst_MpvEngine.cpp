#include "Player/MpvEngine.h"

#include "TestMedia.h"

#include <QSignalSpy>
#include <QTest>

#include <cmath>

using namespace Qt::StringLiterals;

// The engine against real libmpv playing generated media, headless.
class tst_MpvEngine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void playbackFollowsTheMedia();
    void exactSeekLandsOnTheFrame_data();
    void exactSeekLandsOnTheFrame();
    void endOfMediaStopsTheClockAtTheDuration();
    void audioOnlyHasNoPicture();
    void unplayableInputFails_data();
    void unplayableInputFails();
    void aReplacedFailingLoadIsNotReported();
    void stopUnloadsAndAllowsTheNextLoad();
};

void tst_MpvEngine::playbackFollowsTheMedia()
{
    MpvEngine engine(MpvEngine::Output::headless);
    QVERIFY(engine.isValid());
    engine.load(testMedia(u"clip.mp4"_s));
    QVERIFY(engine.hasMedia());
    QVERIFY(engine.isPlaying());
    QTRY_COMPARE(engine.videoSize(), QSize(320, 180));
    QTRY_VERIFY(std::fabs(engine.duration() - 5.0) < 0.05);
    QTRY_VERIFY(engine.position() > 0.3);
    const double before = engine.position();
    QTest::qWait(500);
    // Real time, within the slack of a loaded machine.
    QVERIFY2(engine.position() - before > 0.25, qPrintable(QString::number(engine.position())));

    engine.setPaused(true);
    QVERIFY(!engine.isPlaying());
    QTest::qWait(150);
    const double paused = engine.position();
    QTest::qWait(400);
    QCOMPARE(engine.position(), paused);
}

void tst_MpvEngine::exactSeekLandsOnTheFrame_data()
{
    QTest::addColumn<double>("target");
    QTest::newRow("between key frames") << 2.52;
    QTest::newRow("start") << 0.0;
    QTest::newRow("last second") << 4.44;
}

void tst_MpvEngine::exactSeekLandsOnTheFrame()
{
    QFETCH(double, target);
    MpvEngine engine(MpvEngine::Output::headless);
    engine.load(testMedia(u"clip.mp4"_s));
    QTRY_VERIFY(engine.position() > 0.1);
    engine.setPaused(true);
    QSignalSpy seeks(&engine, &MpvEngine::seekFinished);
    engine.seekExact(target);
    QTRY_COMPARE(seeks.count(), 1);
    // One frame at 25 frames per second.
    QTRY_VERIFY2(std::fabs(engine.position() - target) < 0.04,
                 qPrintable(QString::number(engine.position())));
}

void tst_MpvEngine::endOfMediaStopsTheClockAtTheDuration()
{
    MpvEngine engine(MpvEngine::Output::headless);
    engine.load(testMedia(u"clip.mp4"_s));
    QTRY_VERIFY(engine.duration() > 0);
    engine.seekExact(4.6);
    QTRY_VERIFY_WITH_TIMEOUT(engine.isEndReached(), 5000);
    QVERIFY(!engine.isPlaying());
    QVERIFY(!engine.hasFailed());
    QCOMPARE(engine.position(), engine.duration());
}

void tst_MpvEngine::audioOnlyHasNoPicture()
{
    MpvEngine engine(MpvEngine::Output::headless);
    engine.load(testMedia(u"audio.m4a"_s));
    QTRY_VERIFY(std::fabs(engine.duration() - 3.0) < 0.05);
    QTRY_VERIFY(engine.position() > 0.2);
    QVERIFY(engine.videoSize().isEmpty());
    QVERIFY(engine.isPlaying());
}

void tst_MpvEngine::unplayableInputFails_data()
{
    QTest::addColumn<QString>("target");
    QTest::newRow("text file") << testMedia(u"text.mp4"_s);
    QTest::newRow("empty file") << testMedia(u"empty.mp4"_s);
    QTest::newRow("truncated mp4") << testMedia(u"truncated.mp4"_s);
    QTest::newRow("missing file") << testMedia(u"no such file.mp4"_s);
    QTest::newRow("refused connection") << u"http://127.0.0.1:1/stream.m3u8"_s;
    QTest::newRow("process file descriptor") << u"fdclose://0"_s;
    QTest::newRow("generated media") << u"av://lavfi:testsrc"_s;
    QTest::newRow("relative path") << u"clip.mp4"_s;
}

void tst_MpvEngine::unplayableInputFails()
{
    QFETCH(QString, target);
    MpvEngine engine(MpvEngine::Output::headless);
    QSignalSpy failures(&engine, &MpvEngine::loadFailed);
    engine.load(target);
    QTRY_COMPARE(failures.count(), 1);
    QVERIFY(engine.hasFailed());
    QVERIFY(engine.hasMedia());
    QVERIFY(!engine.isPlaying());
    QVERIFY(!engine.isWaitingToPlay());
    QVERIFY(std::isnan(engine.duration()));

    // The engine is still usable.
    engine.load(testMedia(u"clip.mp4"_s));
    QTRY_VERIFY(engine.position() > 0.1);
    QVERIFY(!engine.hasFailed());
    QCOMPARE(failures.count(), 1);
}

void tst_MpvEngine::aReplacedFailingLoadIsNotReported()
{
    MpvEngine engine(MpvEngine::Output::headless);
    QSignalSpy failures(&engine, &MpvEngine::loadFailed);
    engine.load(testMedia(u"text.mp4"_s));
    engine.load(testMedia(u"clip.mp4"_s));
    QTRY_VERIFY(engine.position() > 0.3);
    QCOMPARE(failures.count(), 0);
    QVERIFY(engine.isPlaying());
}

void tst_MpvEngine::stopUnloadsAndAllowsTheNextLoad()
{
    MpvEngine engine(MpvEngine::Output::headless);
    engine.load(testMedia(u"clip.mp4"_s));
    QTRY_VERIFY(engine.position() > 0.1);
    engine.stop();
    QVERIFY(!engine.hasMedia());
    QVERIFY(!engine.isPlaying());
    QVERIFY(std::isnan(engine.position()));
    QTest::qWait(200);
    // Late property events of the stopped file do not bring its state back.
    QVERIFY(std::isnan(engine.position()));
    QVERIFY(engine.videoSize().isEmpty());

    engine.load(testMedia(u"My Film.mkv"_s));
    QTRY_COMPARE(engine.videoSize(), QSize(320, 240));
}

QTEST_GUILESS_MAIN(tst_MpvEngine)
#include "tst_MpvEngine.moc"
