#include "Surface/PlayerLayerGeometry.h"

#include <QTest>

using Mode = PortraitDisplayMode;
Q_DECLARE_METATYPE(PortraitDisplayMode)

namespace {

bool near(const QRectF &a, const QRectF &b)
{
    const auto same = [](double x, double y) { return std::abs(x - y) < 1e-9; };
    return same(a.x(), b.x()) && same(a.y(), b.y()) && same(a.width(), b.width()) &&
           same(a.height(), b.height());
}

QByteArray text(const QRectF &r)
{
    return QByteArray::number(r.x(), 'g', 12) + ',' + QByteArray::number(r.y(), 'g', 12) + ' ' +
           QByteArray::number(r.width(), 'g', 12) + 'x' + QByteArray::number(r.height(), 'g', 12);
}

} // namespace

class tst_PlayerLayerGeometry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void layoutOfEachMode_data()
    {
        QTest::addColumn<Mode>("mode");
        QTest::addColumn<QSizeF>("bounds");
        QTest::addColumn<QSizeF>("picture");
        QTest::addColumn<double>("pan");
        QTest::addColumn<QRectF>("crop");
        QTest::addColumn<QRectF>("frame"); // zoom applied

        const QSizeF view(1600, 900);
        const QSizeF wide(1920, 1080);
        const QRectF box(546.875, 0, 506.25, 900);
        // The box's own picture, grown 1.13 times about its centre.
        const QRectF boxZoomed(-32.90625, -58.5, 572.0625, 1017);

        QTest::newRow("normal: the whole view, no zoom")
            << Mode::normal << view << wide << 0.0 << QRectF(0, 0, 1600, 900)
            << QRectF(0, 0, 1600, 900);
        QTest::newRow("fill: the 9:16 box, zoomed")
            << Mode::fill << view << wide << 0.0 << box << boxZoomed;
        QTest::newRow("manual pan 0 centres a wide picture")
            << Mode::manual << view << wide << 0.0 << box << QRectF(-650.875, -58.5, 1808, 1017);
        QTest::newRow("manual pan 1 aligns the left edges")
            << Mode::manual << view << wide << 1.0 << box << QRectF(-104, -58.5, 1808, 1017);
        QTest::newRow("manual 9:16 picture fills the box, pan ignored")
            << Mode::manual << view << QSizeF(1080, 1920) << 0.7 << box << boxZoomed;
        QTest::newRow("manual tall picture is centred vertically")
            << Mode::manual << view << QSizeF(900, 2000) << 0.0 << box
            << QRectF(-32.90625, -185.625, 572.0625, 1271.25);
        QTest::newRow("manual without a picture size uses the box")
            << Mode::manual << view << QSizeF(0, 0) << 1.0 << box << boxZoomed;
        QTest::newRow("narrow view: the box overhangs both sides")
            << Mode::fill << QSizeF(300, 900) << wide << 0.0 << QRectF(-103.125, 0, 506.25, 900)
            << boxZoomed;
        // Below a height of 1 the box's aspect is taken as its width alone.
        QTest::newRow("box under one unit high")
            << Mode::manual << QSizeF(10, 0.5) << QSizeF(40, 100) << 0.0
            << QRectF(4.859375, 0, 0.28125, 0.5) << QRectF(-0.013, -0.0325, 0.226, 0.565);
    }

    void layoutOfEachMode()
    {
        QFETCH(Mode, mode);
        QFETCH(QSizeF, bounds);
        QFETCH(QSizeF, picture);
        QFETCH(double, pan);
        QFETCH(QRectF, crop);
        QFETCH(QRectF, frame);

        const PlayerLayerLayout layout = PlayerLayerGeometry::layout(mode, bounds, picture, pan);
        QVERIFY2(near(layout.cropRect, crop), text(layout.cropRect));
        QVERIFY2(near(layout.videoFrame, frame), text(layout.videoFrame));
        QCOMPARE(layout.clipsToCrop, mode != Mode::normal);
        QCOMPARE(layout.fillsLayer, mode != Mode::normal);
        QCOMPARE(layout.rotated, mode == Mode::rotate);
    }

    void dragPansByAShareOfTheWidth_data()
    {
        QTest::addColumn<double>("start");
        QTest::addColumn<double>("dx");
        QTest::addColumn<double>("width");
        QTest::addColumn<double>("pan");
        QTest::newRow("35% right takes 0 to 1") << 0.0 << 350.0 << 1000.0 << 1.0;
        QTest::newRow("half of that is half") << 0.0 << -175.0 << 1000.0 << -0.5;
        QTest::newRow("from a start") << 0.4 << 70.0 << 1000.0 << 0.6;
        QTest::newRow("clamped right") << 0.5 << 5000.0 << 1000.0 << 1.0;
        QTest::newRow("clamped left") << -0.5 << -5000.0 << 1000.0 << -1.0;
        QTest::newRow("a view of no width divides by 1") << 0.0 << 0.25 << 0.0 << 0.25;
    }

    void dragPansByAShareOfTheWidth()
    {
        QFETCH(double, start);
        QFETCH(double, dx);
        QFETCH(double, width);
        QFETCH(double, pan);
        QCOMPARE(PlayerLayerGeometry::pannedBy(start, dx, width), pan);
    }

    void rotatedPictureIsTurnedClockwise()
    {
        // A 16:9 picture fills the sideways layer exactly; its top-left corner lands at the box's
        // top-right, its bottom-left at the box's top-left.
        const PlayerLayerLayout layout =
            PlayerLayerGeometry::layout(Mode::rotate, QSizeF(1600, 900), QSizeF(1920, 1080), 0);
        const auto corners = PlayerLayerGeometry::pictureCorners(layout, 16.0 / 9.0);
        QCOMPARE(corners[0], QPointF(1053.125, 0));
        QCOMPARE(corners[1], QPointF(1053.125, 900));
        QCOMPARE(corners[2], QPointF(546.875, 900));
        QCOMPARE(corners[3], QPointF(546.875, 0));

        // Fitting whole (normal) letterboxes a 4:3 picture in a 16:9 view.
        const PlayerLayerLayout normal =
            PlayerLayerGeometry::layout(Mode::normal, QSizeF(1600, 900), QSizeF(1200, 900), 0);
        const auto fitted = PlayerLayerGeometry::pictureCorners(normal, 4.0 / 3.0);
        QCOMPARE(fitted[0], QPointF(200, 0));
        QCOMPARE(fitted[2], QPointF(1400, 900));
    }
};

QTEST_APPLESS_MAIN(tst_PlayerLayerGeometry)
#include "tst_PlayerLayerGeometry.moc"
