#include "Surface/FaceDetector.h"
#include "Surface/SmartReframe.h"

#include <QPainter>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QImage photograph(const QString &name)
{
    return QImage(QStringLiteral(VELM_TEST_DATA) + u"/faces/"_s + name);
}

// Where the face is in each photograph, measured by eye on the full picture: the midpoint
// between the outer corners of the eyes, in fractions of the width.
constexpr double astronautFace = 0.44;
constexpr double hopperFace = 0.52;

// A photograph scaled to height, placed with its left edge at x in a grey frame of size.
QImage framed(const QImage &picture, QSize size, int x, int height, double turnDegrees = 0)
{
    QImage frame(size, QImage::Format_RGB32);
    frame.fill(QColor(128, 128, 128));
    QPainter painter(&frame);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QImage scaled = picture.scaledToHeight(height, Qt::SmoothTransformation);
    painter.translate(x + scaled.width() / 2.0, (size.height() - height) / 2.0 + height / 2.0);
    painter.rotate(turnDegrees);
    painter.drawImage(QPointF(-scaled.width() / 2.0, -height / 2.0), scaled);
    return frame;
}

// Where a point at fraction f of a photograph's width lands in a frame made by framed().
double inFrame(double f, const QImage &picture, QSize size, int x, int height)
{
    return (x + f * picture.width() * height / picture.height()) / size.width();
}

} // namespace

class tst_FaceDetector : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void findsTheFace_data();
    void findsTheFace();
    void findsNothingWithoutAFace_data();
    void findsNothingWithoutAFace();
    void followsTheLargerOfTwoFaces();

private:
    FaceDetector m_detector;
};

void tst_FaceDetector::initTestCase()
{
    QVERIFY(m_detector.isReady());
    QVERIFY(!photograph(u"astronaut.png"_s).isNull());
    QVERIFY(!photograph(u"grace_hopper_512x512.jpg"_s).isNull());
}

void tst_FaceDetector::findsTheFace_data()
{
    const QImage astronaut = photograph(u"astronaut.png"_s);
    const QImage hopper = photograph(u"grace_hopper_512x512.jpg"_s);
    const QSize hd(1920, 1080);
    QTest::addColumn<QImage>("picture");
    QTest::addColumn<double>("midpoint");
    QTest::newRow("astronaut") << astronaut << astronautFace;
    QTest::newRow("Hopper") << hopper << hopperFace;
    QTest::newRow("Hopper mirrored") << hopper.mirrored(true, false) << 1 - hopperFace;
    QTest::newRow("astronaut on the right of a wide frame")
        << framed(astronaut, hd, 1200, 540) << inFrame(astronautFace, astronaut, hd, 1200, 540);
    QTest::newRow("Hopper small on the left of a wide frame")
        << framed(hopper, hd, 100, 400) << inFrame(hopperFace, hopper, hd, 100, 400);
    QTest::newRow("Hopper turned 15°")
        << framed(hopper, hd, 700, 700, 15) << inFrame(hopperFace, hopper, hd, 700, 700);
    QTest::newRow("astronaut turned −15°, in 720p")
        << framed(astronaut, QSize(1280, 720), 100, 500, -15)
        << inFrame(astronautFace, astronaut, QSize(1280, 720), 100, 500);
}

void tst_FaceDetector::findsTheFace()
{
    QFETCH(QImage, picture);
    QFETCH(double, midpoint);
    const std::vector<FaceBox> faces = m_detector.detect(picture);
    QVERIFY(!faces.empty());
    const std::optional<FaceBox> face = SmartReframe::largestFace(faces);
    QVERIFY2(
        std::abs(face->horizontalMidpoint() - midpoint) < 0.04,
        qPrintable(u"found at %1, expected at %2"_s.arg(face->horizontalMidpoint()).arg(midpoint)));
}

void tst_FaceDetector::findsNothingWithoutAFace_data()
{
    QTest::addColumn<QImage>("picture");
    QImage grey(1280, 720, QImage::Format_RGB32);
    grey.fill(QColor(90, 90, 90));
    QTest::newRow("grey") << grey;
    QImage stripes(1920, 1080, QImage::Format_RGB32);
    for (int y = 0; y < stripes.height(); ++y) {
        for (int x = 0; x < stripes.width(); ++x)
            stripes.setPixelColor(x, y,
                                  QColor::fromHsv((x / 7 + y / 5) % 360, 200, 40 + (x * y) % 200));
    }
    QTest::newRow("stripes") << stripes;
    // The photograph with the face painted over: the suit, the flag and the rocket remain.
    QImage covered = photograph(u"astronaut.png"_s);
    QPainter(&covered).fillRect(QRect(130, 30, 170, 200), QColor(40, 40, 60));
    QTest::newRow("the astronaut without her face") << covered;
    QTest::newRow("empty") << QImage();
}

void tst_FaceDetector::findsNothingWithoutAFace()
{
    QFETCH(QImage, picture);
    const std::vector<FaceBox> faces = m_detector.detect(picture);
    QVERIFY2(faces.empty(),
             qPrintable(u"%1 found, the first at %2"_s.arg(faces.size())
                            .arg(faces.empty() ? 0 : faces.front().horizontalMidpoint())));
}

void tst_FaceDetector::followsTheLargerOfTwoFaces()
{
    const QImage astronaut = photograph(u"astronaut.png"_s);
    const QImage hopper = photograph(u"grace_hopper_512x512.jpg"_s);
    const QSize hd(1920, 1080);
    QImage frame = framed(hopper, hd, 1300, 600);
    {
        QPainter painter(&frame);
        painter.drawImage(QRect(150, 250, 400, 400), astronaut);
    }
    const std::optional<FaceBox> face = SmartReframe::largestFace(m_detector.detect(frame));
    QVERIFY(face);
    QVERIFY2(std::abs(face->horizontalMidpoint() - inFrame(hopperFace, hopper, hd, 1300, 600)) <
                 0.04,
             qPrintable(QString::number(face->horizontalMidpoint())));
}

QTEST_GUILESS_MAIN(tst_FaceDetector)
#include "tst_FaceDetector.moc"
