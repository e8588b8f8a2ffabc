// The smart portrait mode on a real OpenGL view under Xvfb, following a real face in a generated
// video: a photograph left of the centre of a wide grey picture for 6 s, right of it for 6 s, then
// gone.

#include "Base/WebAddress.h"
#include "Player/PlayerModel.h"
#include "Surface/FaceDetector.h"
#include "Surface/PlayerHostingView.h"
#include "TestMedia.h"
#include "TestSurface.h"

#include <QSignalSpy>
#include <QTest>

namespace {

// Whether the face detector finds a face in what the 9:16 box shows.
bool faceInBox(PlayerHostingView &view)
{
    const QImage frame = view.grabFramebuffer();
    const double dpr = frame.devicePixelRatio();
    const QRect box = view.recordingRectInView();
    const QImage shown = frame.copy(QRect(box.topLeft() * dpr, box.size() * dpr));
    FaceDetector detector;
    return !detector.detect(shown).empty();
}

} // namespace

class tst_FaceTracking : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_screen = std::make_unique<TestSurface>();
        QVERIFY(QTest::qWaitForWindowExposed(&m_screen->surface));
    }

    void cleanup() { m_screen.reset(); }

    void followsTheFaceAndLetsGo()
    {
        play();
        PlayerHostingView &hosting = *view();
        QSignalSpy moved(&hosting, &PlayerHostingView::horizontalPanChanged);
        hosting.setDisplayMode(PortraitDisplayMode::smart);
        // The face left of the centre (its midpoint at 0.35: the box aims at +0.3), approached step
        // by step.
        QTRY_VERIFY_WITH_TIMEOUT(hosting.horizontalPan() > 0.25, 5000);
        QVERIFY2(position() < 6, "the face had moved on before the box reached it");
        QVERIFY(moved.count() >= 3);
        QVERIFY2(hosting.horizontalPan() < 0.35,
                 qPrintable(QString::number(hosting.horizontalPan())));
        QVERIFY2(faceInBox(hosting), "the face is not in the box");

        // Right of the centre from 6 s (midpoint 0.65: −0.3), the box crosses over.
        QTRY_VERIFY_WITH_TIMEOUT(hosting.horizontalPan() < -0.25, 8000);
        QVERIFY(position() < 12);
        QVERIFY2(faceInBox(hosting), "the face is not in the box");

        // Gone from 12 s: back towards the centre.
        QTRY_VERIFY_WITH_TIMEOUT(position() > 12.3 && std::abs(hosting.horizontalPan()) < 0.08,
                                 8000);
        QVERIFY(!faceInBox(hosting));
    }

    void staysWhilePausedAndStopsWithTheMode()
    {
        play(6.5);
        PlayerHostingView &hosting = *view();
        hosting.setDisplayMode(PortraitDisplayMode::smart);
        QTRY_VERIFY_WITH_TIMEOUT(hosting.horizontalPan() < -0.15, 4000);

        // Paused: the frame shown does not change, so nothing moves (after a search under way
        // ends).
        m_screen->player.model.togglePlayback();
        QTRY_VERIFY(!m_screen->player.model.engine().isPlaying());
        QTest::qWait(600);
        const double paused = hosting.horizontalPan();
        QTest::qWait(1500);
        QCOMPARE(hosting.horizontalPan(), paused);

        // Playing again it moves on; another mode stops it at once, even with a search under way.
        m_screen->player.model.togglePlayback();
        QTRY_VERIFY_WITH_TIMEOUT(hosting.horizontalPan() != paused, 3000);
        hosting.setDisplayMode(PortraitDisplayMode::manual);
        QVERIFY(!hosting.isTrackingFaces());
        const double manual = hosting.horizontalPan();
        QTest::qWait(1500);
        QCOMPARE(hosting.horizontalPan(), manual);
        // And the framing made in the smart mode is the manual mode's starting point.
        QVERIFY(manual < -0.15);
    }

    void startsAgainAfterALoad()
    {
        // A new load forgets the old media's frames; the steps go on with the new one's.
        play(6.5);
        PlayerHostingView &hosting = *view();
        hosting.setDisplayMode(PortraitDisplayMode::smart);
        QTRY_VERIFY_WITH_TIMEOUT(hosting.horizontalPan() < -0.15, 4000);
        play();
        QTRY_VERIFY_WITH_TIMEOUT(hosting.horizontalPan() > 0.15, 5000);
        QVERIFY(hosting.isTrackingFaces());
    }

private:
    PlayerHostingView *view() const;
    void play(double from = 0);
    double position() const { return m_screen->player.model.engine().position(); }

    std::unique_ptr<TestSurface> m_screen;
};

PlayerHostingView *tst_FaceTracking::view() const
{
    return m_screen->hostingView();
}

void tst_FaceTracking::play(double from)
{
    m_screen->player.model.play(
        WebAddress::fromLocalFile(testMedia(QStringLiteral("moving-face.mp4"))), {}, false);
    QTRY_VERIFY_WITH_TIMEOUT(m_screen->player.model.engine().isPlaying() && position() > 0.1,
                             10000);
    if (from > 0)
        m_screen->player.model.seek(from);
    QVERIFY(view());
}

QTEST_MAIN(tst_FaceTracking)
#include "tst_FaceTracking.moc"
