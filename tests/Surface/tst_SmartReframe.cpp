#include "Surface/BlazeFaceDecoding.h"
#include "Surface/SmartReframe.h"

#include <QTest>

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

FaceBox spanning(double left, double right)
{
    return {left, 0.2, right - left, 0.3};
}

// Raw network output with nothing found: every score far below any threshold.
struct RawOutput
{
    explicit RawOutput(const BlazeFaceDecoding::Input &input = {})
        : boxes(size_t(BlazeFaceDecoding::anchorCount(input)) * BlazeFaceDecoding::valuesPerAnchor,
                0),
          scores(size_t(BlazeFaceDecoding::anchorCount(input)), -20)
    {}

    std::vector<float> boxes;
    std::vector<float> scores;

    // A box of side pixels around the anchor's cell centre moved by (dx, dy) pixels.
    void predict(int anchor, double score, float dx, float dy, float side)
    {
        scores[size_t(anchor)] = float(std::log(score / (1 - score)));
        float *values = boxes.data() + size_t(anchor) * BlazeFaceDecoding::valuesPerAnchor;
        values[0] = dx;
        values[1] = dy;
        values[2] = side;
        values[3] = side;
    }
};

} // namespace

Q_DECLARE_METATYPE(BlazeFaceDecoding::Input)

class tst_SmartReframe : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void approachesTheFaceAndDecaysWithout_data()
    {
        QTest::addColumn<double>("start");
        QTest::addColumn<std::optional<FaceBox>>("face");
        QTest::addColumn<QList<double>>("pans");
        QTest::newRow("a face at 0.1 … 0.3 from the centre")
            << 0.0 << std::optional(spanning(0.1, 0.3)) << QList<double>{0.21, 0.3465, 0.435225};
        QTest::newRow("no face from 0.6")
            << 0.6 << std::optional<FaceBox>() << QList<double>{0.39, 0.2535};
        QTest::newRow("a centred face from −1")
            << -1.0 << std::optional(spanning(0.4, 0.6)) << QList<double>{-0.65, -0.4225};
    }

    void approachesTheFaceAndDecaysWithout()
    {
        QFETCH(double, start);
        QFETCH(std::optional<FaceBox>, face);
        QFETCH(QList<double>, pans);
        double pan = start;
        for (const double expected : pans) {
            pan = SmartReframe::nextPan(pan, SmartReframe::panTarget(face));
            QVERIFY2(std::abs(pan - expected) < 1e-12, qPrintable(QString::number(pan, 'g', 17)));
        }
    }

    void aimsAtTheFaceMidpoint_data()
    {
        const double nan = std::numeric_limits<double>::quiet_NaN();
        QTest::addColumn<FaceBox>("face");
        QTest::addColumn<double>("target");
        QTest::newRow("centred") << spanning(0.45, 0.55) << 0.0;
        QTest::newRow("at the left edge") << spanning(-0.1, 0.1) << 1.0;
        QTest::newRow("at the right edge") << spanning(0.9, 1.1) << -1.0;
        QTest::newRow("beyond the left edge") << spanning(-0.6, -0.2) << 1.0;
        QTest::newRow("beyond the right edge") << spanning(1.2, 1.6) << -1.0;
        QTest::newRow("a quarter in") << spanning(0.2, 0.3) << 0.5;
        QTest::newRow("not a number") << FaceBox{nan, 0, 0.1, 0.1} << 1.0;
    }

    void aimsAtTheFaceMidpoint()
    {
        QFETCH(FaceBox, face);
        QFETCH(double, target);
        QCOMPARE(SmartReframe::panTarget(face), target);
    }

    void followsTheLargestFace_data()
    {
        QTest::addColumn<std::vector<FaceBox>>("faces");
        QTest::addColumn<std::optional<FaceBox>>("followed");
        const FaceBox small{0.1, 0.1, 0.1, 0.1};
        const FaceBox large{0.6, 0.1, 0.3, 0.3};
        // The same area in other shapes.
        const FaceBox wide{0.5, 0.5, 0.4, 0.1};
        const FaceBox tall{0.2, 0.2, 0.1, 0.4};
        QTest::newRow("none") << std::vector<FaceBox>{} << std::optional<FaceBox>();
        QTest::newRow("largest last") << std::vector{small, small, large} << std::optional(large);
        QTest::newRow("largest first") << std::vector{large, small} << std::optional(large);
        QTest::newRow("equal areas: the first listed")
            << std::vector{small, wide, tall} << std::optional(wide);
        QTest::newRow("equal areas, other order") << std::vector{tall, wide} << std::optional(tall);
    }

    void followsTheLargestFace()
    {
        QFETCH(std::vector<FaceBox>, faces);
        QFETCH(std::optional<FaceBox>, followed);
        QCOMPARE(SmartReframe::largestFace(faces), followed);
    }

    void decodesBoxesAroundTheirAnchors_data()
    {
        QTest::addColumn<BlazeFaceDecoding::Input>("input");
        QTest::newRow("back, square") << BlazeFaceDecoding::Input{256, 256, 16};
        QTest::newRow("back, wide") << BlazeFaceDecoding::Input{256, 160, 16};
        QTest::newRow("front") << BlazeFaceDecoding::Input{128, 128, 8};
    }

    void decodesBoxesAroundTheirAnchors()
    {
        // Anchor 0 is the fine grid's top-left cell; the coarse grid's anchors follow the fine
        // grid's, six a cell, row by row; the last anchor is the coarse grid's bottom-right cell.
        QFETCH(BlazeFaceDecoding::Input, input);
        const double fineColumns = input.width / input.fineCell;
        const double fineRows = input.height / input.fineCell;
        const int columns = input.width / (2 * input.fineCell);
        const int rows = input.height / (2 * input.fineCell);
        RawOutput raw(input);
        raw.predict(0, 0.9, 0, 0, 16);
        raw.predict(int(fineColumns * fineRows * 2) + 6 * (columns * 3 + 2), 0.8, 32, -16, 64);
        raw.predict(BlazeFaceDecoding::anchorCount(input) - 1, 0.55, 0, 0, 32); // below 0.6
        const auto faces = BlazeFaceDecoding::decode(raw.boxes, raw.scores, input, 0.6);
        QCOMPARE(faces.size(), size_t(2));
        const auto near = [](double a, double b) { return std::abs(a - b) < 1e-6; };
        QVERIFY(near(faces[0].score, 0.9));
        QVERIFY(near(faces[0].box.horizontalMidpoint(), 0.5 / fineColumns));
        QVERIFY(near(faces[0].box.y + faces[0].box.height / 2, 0.5 / fineRows));
        QVERIFY(near(faces[0].box.width, 16.0 / input.width));
        // Coarse grid, column 2, row 3.
        QVERIFY(near(faces[1].box.horizontalMidpoint(), 2.5 / columns + 32.0 / input.width));
        QVERIFY(near(faces[1].box.y + faces[1].box.height / 2, 3.5 / rows - 16.0 / input.height));
        QVERIFY(near(faces[1].box.width, 64.0 / input.width));
        QVERIFY(near(faces[1].box.height, 64.0 / input.height));
    }

    void mergesTheBoxesOfOneFace()
    {
        // Neighbouring anchors see one face, slightly apart; a face elsewhere stays on its own.
        RawOutput raw;
        const int cell = 512 + 6 * (8 * 4 + 4);
        raw.predict(cell, 0.9, 0, 0, 60);
        raw.predict(cell + 1, 0.7, 6, 0, 60);
        raw.predict(2 * (16 * 2 + 2), 0.8, 0, 0, 20);
        const auto faces = BlazeFaceDecoding::decode(raw.boxes, raw.scores, {}, 0.6);
        QCOMPARE(faces.size(), size_t(2));
        // The merged box lies between the two, nearer the more certain one.
        const double merged = faces[0].box.horizontalMidpoint() - 4.5 / 8;
        QVERIFY2(merged > 0 && merged < 3.0 / 256, qPrintable(QString::number(merged * 256)));
        QVERIFY(std::abs(faces[1].box.horizontalMidpoint() - 2.5 / 16) < 1e-6);
    }

    void refusesShortOutput()
    {
        RawOutput raw;
        raw.predict(10, 0.99, 0, 0, 30);
        using BlazeFaceDecoding::decode;
        QVERIFY(decode(std::span(raw.boxes).first(100), raw.scores, {}, 0.5).empty());
        QVERIFY(decode(raw.boxes, std::span(raw.scores).first(895), {}, 0.5).empty());
        QVERIFY(decode(raw.boxes, raw.scores, {0, 256, 16}, 0.5).empty());
        QVERIFY(decode(raw.boxes, raw.scores, {256, 250, 16}, 0.5).empty());
        QVERIFY(decode(raw.boxes, raw.scores, {256, 256, 0}, 0.5).empty());
        QCOMPARE(decode(raw.boxes, raw.scores, {}, 0.5).size(), size_t(1));
    }
};

QTEST_GUILESS_MAIN(tst_SmartReframe)
#include "tst_SmartReframe.moc"
