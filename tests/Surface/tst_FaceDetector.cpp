#include "FacePictures.h"
#include "Surface/FaceDetector.h"
#include "Surface/SmartReframe.h"

#include <QPainter>
#include <QTest>

using namespace Qt::StringLiterals;

using namespace FacePictures;

class tst_FaceDetector : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_detector.isReady());
        QVERIFY(!photograph(u"astronaut.png"_s).isNull());
        QVERIFY(!photograph(u"grace_hopper_512x512.jpg"_s).isNull());
    }

    void findsTheFace_data()
    {
        QTest::addColumn<QImage>("picture");
        QTest::addColumn<double>("midpoint");
        for (const Picture &face : withFaces())
            QTest::newRow(qPrintable(face.name)) << face.image << face.midpoint;
    }

    void findsTheFace()
    {
        QFETCH(QImage, picture);
        QFETCH(double, midpoint);
        const std::vector<FaceBox> faces = m_detector.detect(picture);
        QVERIFY(!faces.empty());
        const std::optional<FaceBox> face = SmartReframe::largestFace(faces);
        QVERIFY2(
            std::abs(face->horizontalMidpoint() - midpoint) < 0.04,
            qPrintable(
                u"found at %1, expected at %2"_s.arg(face->horizontalMidpoint()).arg(midpoint)));
    }

    void findsNothingWithoutAFace_data()
    {
        QTest::addColumn<QImage>("picture");
        for (const Picture &none : withoutFaces())
            QTest::newRow(qPrintable(none.name)) << none.image;
        QTest::newRow("empty") << QImage();
    }

    void findsNothingWithoutAFace()
    {
        QFETCH(QImage, picture);
        const std::vector<FaceBox> faces = m_detector.detect(picture);
        QVERIFY2(faces.empty(),
                 qPrintable(u"%1 found, the first at %2"_s.arg(faces.size())
                                .arg(faces.empty() ? 0 : faces.front().horizontalMidpoint())));
    }

    void followsTheLargerOfTwoFaces()
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

private:
    FaceDetector m_detector;
};

QTEST_GUILESS_MAIN(tst_FaceDetector)
#include "tst_FaceDetector.moc"
