// The video area on a real OpenGL widget under Xvfb, drawing a real engine's frames: a 16:9 clip
// in three columns (red, green, blue) shows where each part of the picture lands in each mode.

#include "Base/AppNotifier.h"
#include "Base/WebAddress.h"
#include "Player/PlayerModel.h"
#include "ProcessRunner.h"
#include "Recording/PlayerSurfaceRegistry.h"
#include "Surface/PlayerHostingView.h"
#include "Surface/PlayerLayerGeometry.h"
#include "TestHttpServer.h"
#include "TestMedia.h"
#include "TestSurface.h"
#include "Web/YouTubePlayerView.h"

#include <QApplication>
#include <QLabel>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

using Mode = PortraitDisplayMode;
Q_DECLARE_METATYPE(PortraitDisplayMode)

namespace {

// Where a pixel must be, and what it must show: 'r', 'g', 'b' or 'k' (black).
struct Probe
{
    QPoint at;
    char colour;
};

char colourOf(QRgb pixel)
{
    const int r = qRed(pixel), g = qGreen(pixel), b = qBlue(pixel);
    if (r < 40 && g < 40 && b < 40)
        return 'k';
    if (r > 150 && g < 90 && b < 90)
        return 'r';
    if (g > 150 && r < 90 && b < 90)
        return 'g';
    if (b > 150 && r < 90 && g < 90)
        return 'b';
    if (r > 200 && g > 200 && b > 200)
        return 'w';
    return '?';
}

QString mismatches(const QImage &frame, const QList<Probe> &probes)
{
    QString found;
    for (const Probe &probe : probes) {
        const char seen = colourOf(frame.pixel(probe.at));
        if (seen != probe.colour)
            found += QStringLiteral("(%1,%2) %3 not %4; ")
                         .arg(probe.at.x())
                         .arg(probe.at.y())
                         .arg(QChar::fromLatin1(seen))
                         .arg(QChar::fromLatin1(probe.colour));
    }
    return found;
}

// The mean difference of the colour channels (0 … 255) between the box of shown and what the
// picture rectangle of the view would show there of whole, a picture that fills its image.
// The box's outermost two pixels are left out: their filtering reaches outside the box.
double meanDifference(const QImage &shown, const QImage &whole, const QRectF &box,
                      const QRectF &picture)
{
    const QRect inner = box.toAlignedRect().adjusted(2, 2, -2, -2).intersected(shown.rect());
    double sum = 0;
    qint64 count = 0;
    for (int y = inner.top(); y <= inner.bottom(); ++y) {
        for (int x = inner.left(); x <= inner.right(); ++x) {
            const QPointF share((x + 0.5 - picture.left()) / picture.width(),
                                (y + 0.5 - picture.top()) / picture.height());
            const QPoint source(int(share.x() * whole.width()), int(share.y() * whole.height()));
            if (!whole.rect().contains(source))
                continue;
            const QRgb a = shown.pixel(x, y);
            const QRgb b = whole.pixel(source);
            sum += std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) +
                   std::abs(qBlue(a) - qBlue(b));
            count += 3;
        }
    }
    return count > 0 ? sum / count : 255;
}

bool near(QRgb pixel, QRgb wanted)
{
    return std::abs(qRed(pixel) - qRed(wanted)) < 40 &&
           std::abs(qGreen(pixel) - qGreen(wanted)) < 40 &&
           std::abs(qBlue(pixel) - qBlue(wanted)) < 40;
}

// What the X server shows of a top-level widget: the picture of its native windows together.
QImage onScreen(const QWidget &window)
{
    const QRect placed(window.mapToGlobal(QPoint(0, 0)), window.size());
    return window.screen()
        ->grabWindow(0, placed.x(), placed.y(), placed.width(), placed.height())
        .toImage();
}

// The window states a widget went through, as it was told of them.
class StateRecorder : public QObject
{
public:
    explicit StateRecorder(QWidget *widget) { widget->installEventFilter(this); }
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::WindowStateChange)
            asked.append(static_cast<QWidget *>(watched)->windowState());
        return false;
    }
    QList<Qt::WindowStates> asked;
};

} // namespace

Q_DECLARE_METATYPE(QList<Probe>)

class tst_PlayerSurface : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_screen = std::make_unique<TestSurface>();
        m_model = &m_screen->player.model;
        QVERIFY(QTest::qWaitForWindowExposed(&m_screen->surface));
    }

    void cleanup() { m_screen.reset(); }

    void modesPlaceThePicture_data()
    {
        QTest::addColumn<Mode>("mode");
        QTest::addColumn<double>("pan");
        QTest::addColumn<QList<Probe>>("probes");

        // The 9:16 box of a 640 × 360 view spans x 218.75 … 421.25.
        const QList<Probe> outsideTheBox{{{100, 180}, 'k'}, {{540, 180}, 'k'}, {{212, 20}, 'k'}};
        QTest::newRow("normal shows all three columns")
            << Mode::normal << 0.0
            << QList<Probe>{{{100, 180}, 'r'}, {{320, 180}, 'g'}, {{540, 180}, 'b'}};
        QTest::newRow("fill shows the centre in the box")
            << Mode::fill << 0.0
            << outsideTheBox + QList<Probe>{{{225, 180}, 'g'}, {{320, 20}, 'g'}, {{415, 340}, 'g'}};
        QTest::newRow("rotate turns the left column to the top")
            << Mode::rotate << 0.0
            << outsideTheBox + QList<Probe>{{{320, 30}, 'r'}, {{320, 180}, 'g'}, {{320, 330}, 'b'}};
        QTest::newRow("manual pan 1 shows the left column")
            << Mode::manual << 1.0
            << outsideTheBox + QList<Probe>{{{230, 180}, 'r'}, {{400, 180}, 'r'}};
        QTest::newRow("manual pan -1 shows the right column")
            << Mode::manual << -1.0
            << outsideTheBox + QList<Probe>{{{240, 180}, 'b'}, {{410, 180}, 'b'}};
    }

    void modesPlaceThePicture()
    {
        QFETCH(Mode, mode);
        QFETCH(double, pan);
        QFETCH(QList<Probe>, probes);

        showPausedClip();
        PlayerHostingView *view = hostingView();
        QCOMPARE(mismatches(view->grabFramebuffer(), {{{100, 180}, 'r'}}), QString());

        // The paused picture is drawn again in the new geometry, and again after a pan.
        m_screen->surface.setPortraitMode(mode);
        if (pan != 0)
            QTRY_COMPARE(mismatches(view->grabFramebuffer(), {{{320, 180}, 'g'}}), QString());
        view->setHorizontalPan(pan);
        QTRY_COMPARE(mismatches(view->grabFramebuffer(), probes), QString());

        const QRect recorded = view->recordingRectInView();
        QCOMPARE(recorded, mode == Mode::normal ? view->rect() : QRect(219, 0, 202, 360));
    }

    void modesKeepThePictureUpright_data()
    {
        // The clip's white band along its top edge, and the red/green/blue below it.
        QTest::addColumn<Mode>("mode");
        QTest::addColumn<QList<Probe>>("probes");
        QTest::newRow("normal") << Mode::normal
                                << QList<Probe>{
                                       {{320, 20}, 'w'}, {{320, 340}, 'g'}, {{100, 180}, 'r'}};
        QTest::newRow("fill") << Mode::fill << QList<Probe>{{{320, 12}, 'w'}, {{320, 340}, 'g'}};
        QTest::newRow("manual") << Mode::manual
                                << QList<Probe>{{{320, 12}, 'w'}, {{320, 340}, 'g'}};
        QTest::newRow("smart") << Mode::smart << QList<Probe>{{{320, 12}, 'w'}, {{320, 340}, 'g'}};
        // Turned a quarter clockwise: the left column on top, the top band on the right.
        QTest::newRow("rotate") << Mode::rotate
                                << QList<Probe>{
                                       {{416, 180}, 'w'}, {{226, 180}, 'g'}, {{320, 30}, 'r'}};
    }

    void modesKeepThePictureUpright()
    {
        QFETCH(Mode, mode);
        QFETCH(QList<Probe>, probes);
        showPausedClip(QStringLiteral("columns-top.mp4"));
        m_screen->surface.setPortraitMode(mode);
        QTRY_COMPARE(mismatches(hostingView()->grabFramebuffer(), probes), QString());
    }

    void boxShowsThePictureTheGeometryPlaces_data()
    {
        QTest::addColumn<Mode>("mode");
        QTest::addColumn<double>("pan");
        QTest::newRow("fill") << Mode::fill << 0.0;
        QTest::newRow("manual, centred") << Mode::manual << 0.0;
        QTest::newRow("manual, a little left") << Mode::manual << 0.37;
        QTest::newRow("manual, right edge") << Mode::manual << -1.0;
    }

    void boxShowsThePictureTheGeometryPlaces()
    {
        // The box modes draw only what the box shows. Every pixel of the box must be the pixel of
        // the whole picture that the geometry puts there: the normal mode shows that picture whole
        // (a 16:9 clip fills the 16:9 view), and the box is compared with it point by point.
        QFETCH(Mode, mode);
        QFETCH(double, pan);
        showPausedClip(QStringLiteral("detail.mp4"));
        PlayerHostingView *view = hostingView();
        const QImage whole = view->grabFramebuffer();
        m_screen->surface.setPortraitMode(mode);
        view->setHorizontalPan(pan);
        const PlayerLayerLayout layout = PlayerLayerGeometry::layout(
            mode, QSizeF(view->size()), QSizeF(m_model->engine().videoSize()), pan);
        const auto corners = PlayerLayerGeometry::pictureCorners(layout, 16.0 / 9.0);
        const QRectF picture(corners[0], corners[2]);
        // Where each half of the box matches the whole picture best, as a shift in whole pixels: 0
        // for both halves when the picture sits where the geometry puts it at the right size.
        const auto bestShift = [&](const QImage &shown, const QRectF &part) {
            int best = 0;
            double least = 255;
            for (int dx = -4; dx <= 4; ++dx) {
                const double difference =
                    meanDifference(shown, whole, part, picture.translated(dx, 0));
                if (difference < least) {
                    least = difference;
                    best = dx;
                }
            }
            return best;
        };
        const QRectF box = layout.cropRect;
        const QRectF left(box.topLeft(), QSizeF(box.width() / 2, box.height()));
        const QRectF right = left.translated(box.width() / 2, 0);
        // Judged on one grab at a time: a frame drawn while the mode changes may still be on
        // screen at first, and a picture the geometry misplaces never passes.
        QString seen;
        const auto placed = [&] {
            const QImage shown = view->grabFramebuffer();
            const double difference = meanDifference(shown, whole, box, picture);
            const int leftShift = bestShift(shown, left), rightShift = bestShift(shown, right);
            seen = QStringLiteral("difference %1, shifts %2 and %3")
                       .arg(difference)
                       .arg(leftShift)
                       .arg(rightShift);
            return difference < 6 && leftShift == 0 && rightShift == 0;
        };
        QTRY_VERIFY2(placed(), qPrintable(seen));
    }

    void mouseOnThePicture()
    {
        showPausedClip();
        m_screen->surface.setPortraitMode(Mode::fill);
        m_screen->surface.setPortraitMode(Mode::manual);
        PlayerHostingView *view = hostingView();
        QSignalSpy clicked(&m_screen->views.notifier, &AppNotifier::playerSurfaceClicked);
        // 35% of 640 px to the right takes the pan from 0 to 1, and no further.
        QTest::mousePress(view, Qt::LeftButton, {}, QPoint(100, 180));
        QTest::mouseMove(view, QPoint(212, 180));
        QCOMPARE(view->horizontalPan(), 0.5);
        QTest::mouseMove(view, QPoint(600, 180));
        QCOMPARE(view->horizontalPan(), 1.0);
        QTest::mouseRelease(view, Qt::LeftButton, {}, QPoint(600, 180));
        QCOMPARE(clicked.count(), 1);
        QCOMPARE(clicked.first().first().value<QObject *>(), m_screen->surface.windowHandle());
        QTRY_COMPARE(mismatches(view->grabFramebuffer(), {{{300, 180}, 'r'}}), QString());

        // The framing survives smart mode and back.
        m_screen->surface.setPortraitMode(Mode::smart);
        m_screen->surface.setPortraitMode(Mode::manual);
        QCOMPARE(view->horizontalPan(), 1.0);

        // As the window system delivers a double click: a click like any other, then the
        // double-click press, which only toggles full screen. Without a window manager the X server
        // never confirms full screen, so what can be seen is the state asked of the window.
        StateRecorder states(&m_screen->surface);
        QTest::mouseClick(view, Qt::LeftButton, {}, QPoint(320, 180));
        QTest::mouseDClick(view, Qt::LeftButton, {}, QPoint(320, 180));
        QCOMPARE(clicked.count(), 2);
        QCOMPARE(view->horizontalPan(), 1.0);
        QVERIFY(!states.asked.isEmpty());
        QVERIFY(states.asked.first() & Qt::WindowFullScreen);

        m_screen->surface.setPortraitMode(Mode::fill); // fill starts centred again
        QCOMPARE(view->horizontalPan(), 0.0);
    }

    void screenShowsThePictureUnderTheWidgetsOverIt()
    {
        // The picture has a native window of its own over the widgets: the screen must show it,
        // with the widgets stacked over it drawn over it, see-through where they are, and a
        // press on it must reach the view as the X server delivers it.
        showPausedClip();
        QLabel solid(&m_screen->surface);
        solid.setStyleSheet(QStringLiteral("background: rgb(255, 0, 255)"));
        solid.setGeometry(40, 150, 40, 40);
        QLabel glass(&m_screen->surface);
        glass.setStyleSheet(QStringLiteral("background: rgba(255, 255, 255, 128)"));
        glass.setGeometry(300, 150, 40, 40);
        solid.show();
        glass.show();
        const auto shows = [&](QPoint at, QRgb colour) {
            return near(onScreen(m_screen->surface).pixel(at), colour);
        };
        QTRY_VERIFY(shows({60, 170}, qRgb(255, 0, 255)));
        QVERIFY(shows({320, 170}, qRgb(128, 255, 128)));
        QVERIFY(shows({100, 250}, qRgb(255, 0, 0)));
        QVERIFY(shows({540, 180}, qRgb(0, 0, 255)));
        // A widget that changes its look but neither its size nor its place, twice: each look
        // must reach the screen, not the one before it.
        solid.setStyleSheet(QStringLiteral("background: rgb(0, 255, 255)"));
        QTRY_VERIFY(shows({60, 170}, qRgb(0, 255, 255)));
        solid.setStyleSheet(QStringLiteral("background: rgb(255, 255, 0)"));
        QTRY_VERIFY(shows({60, 170}, qRgb(255, 255, 0)));
        solid.hide();
        QTRY_VERIFY(shows({60, 170}, qRgb(255, 0, 0)));

        QSignalSpy clicked(&m_screen->views.notifier, &AppNotifier::playerSurfaceClicked);
        const QPoint at = m_screen->surface.mapToGlobal(QPoint(540, 250));
        const ProcessResult click =
            runProcess(QStringLiteral("xdotool"),
                       {QStringLiteral("mousemove"), QString::number(at.x()),
                        QString::number(at.y()), QStringLiteral("click"), QStringLiteral("1")});
        QVERIFY2(click.finished && click.exitCode == 0, click.err.constData());
        QTRY_COMPARE(clicked.count(), 1);
    }

    void nothingIsDrawnWhileNothingChanges()
    {
        showPausedClip();
        PlayerHostingView *view = hostingView();
        QSignalSpy swapped(view, &PlayerHostingView::frameSwapped);
        // The frames of the seek may still be arriving on a busy machine: wait for a calm moment.
        for (int tries = 0; tries < 10; ++tries) {
            swapped.clear();
            if (!swapped.wait(400))
                break;
        }
        swapped.clear();
        QTest::qWait(700);
        QCOMPARE(swapped.count(), 0);
        m_model->togglePlayback();
        QTRY_VERIFY(swapped.count() >= 5);
    }

    void surfaceShowsOnePlayerAndThePrompt()
    {
        QVERIFY(qobject_cast<PlayerLayerView *>(m_screen->surface.currentPlayer()));
        QVERIFY(m_screen->surface.isPromptShown());
        QCOMPARE(m_screen->views.surfaces.view(), hostingView());

        m_model->openRemote(u"https://www.youtube.com/watch?v=abc", std::nullopt);
        QTRY_VERIFY(qobject_cast<YouTubePlayerView *>(m_screen->surface.currentPlayer()));
        QVERIFY(!m_screen->surface.isPromptShown());
        QVERIFY(m_screen->views.surfaces.view() != nullptr);
        QVERIFY(!qobject_cast<PlayerLayerView *>(m_screen->surface.currentPlayer()));

        // Back to the engine: a new picture, which plays.
        showPausedClip();
        QVERIFY(!m_screen->surface.isPromptShown());
        QCOMPARE(m_screen->views.surfaces.view(), hostingView());
        m_model->stop();
        QVERIFY(m_screen->surface.isPromptShown());
    }

    void badgeShowsForLiveStreamsOnly_data()
    {
        QTest::addColumn<bool>("live");
        QTest::newRow("live stream") << true;
        QTest::newRow("media on demand") << false;
    }

    void badgeShowsForLiveStreamsOnly()
    {
        QFETCH(bool, live);
        TestHttpServer server;
        TestHttpReply silent;
        silent.neverAnswer = true;
        server.route("/stream.m3u8", silent);
        m_model->play(*WebAddress::fromText(server.url(QStringLiteral("/stream.m3u8"))), {}, live);
        QTRY_VERIFY(m_model->isBuffering() == live);
        QTest::qWait(600); // past the indicator's delay
        QCOMPARE(m_screen->surface.isBufferingBadgeShown(), live);
        m_model->stop();
        QVERIFY(!m_screen->surface.isBufferingBadgeShown());
    }

private:
    // The clip on screen, paused 1 s in, so every grab sees the same frame.
    void showPausedClip(const QString &name = QStringLiteral("columns.mp4"));
    PlayerHostingView *hostingView() const;

    std::unique_ptr<TestSurface> m_screen;
    PlayerModel *m_model = nullptr;
};

PlayerHostingView *tst_PlayerSurface::hostingView() const
{
    return m_screen->hostingView();
}

void tst_PlayerSurface::showPausedClip(const QString &name)
{
    m_model->play(WebAddress::fromLocalFile(testMedia(name)), {}, false);
    QTRY_VERIFY_WITH_TIMEOUT(m_model->engine().isPlaying() && m_model->engine().position() > 0.2,
                             10000);
    m_model->togglePlayback();
    m_model->engine().seekExact(1);
    QSignalSpy seeked(&m_model->engine(), &MpvEngine::seekFinished);
    QVERIFY(seeked.wait(5000));
    if (name.startsWith(QStringLiteral("columns")))
        QTRY_COMPARE(colourOf(hostingView()->grabFramebuffer().pixel(320, 180)), 'g');
    else
        QTRY_VERIFY(colourOf(hostingView()->grabFramebuffer().pixel(320, 180)) != 'k');
    // The frame of the seek may reach the view a moment after the seek is reported: the picture
    // is taken as settled once it stayed the same for a while.
    QImage last;
    int unchanged = 0;
    QTRY_VERIFY([&] {
        const QImage now = hostingView()->grabFramebuffer();
        unchanged = now == last ? unchanged + 1 : 0;
        last = now;
        return unchanged >= 4;
    }());
}

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication application(argc, argv);
    tst_PlayerSurface test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_PlayerSurface.moc"
