#include "Recording/RecordingCaptureArea.h"
#include "Recording/RecordingDuration.h"
#include "Recording/RecordingFileName.h"
#include "Recording/RecordingOutputSize.h"

#include <QTest>

using namespace Qt::StringLiterals;

// The recorder's rules without a window: stop times, the clock text, output sizes, bit rates,
// the capture area and the proposed file name.
class tst_RecordingRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parsesStopTimes_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("seconds"); // -1: refused

        QTest::newRow("minutes") << u"30m"_s << 1800.0;
        QTest::newRow("hours with a decimal") << u"1.2hr"_s << 4320.0;
        QTest::newRow("comma and a space") << u"1,5 h"_s << 5400.0;
        QTest::newRow("word, upper case") << u"90 Minutes"_s << 5400.0;
        QTest::newRow("hours before h") << u"2hours"_s << 7200.0;
        QTest::newRow("doubled suffix") << u"2hourss"_s << -1.0;
        QTest::newRow("leading point") << u".5h"_s << 1800.0;
        QTest::newRow("plus sign") << u"+2m"_s << 120.0;
        QTest::newRow("exponent") << u"1e1m"_s << 600.0;
        QTest::newRow("just one second") << u"0.0166667m"_s << 1.000002;
        QTest::newRow("under a second") << u"0.01m"_s << -1.0;
        QTest::newRow("zero") << u"0m"_s << -1.0;
        QTest::newRow("negative") << u"-5m"_s << -1.0;
        QTest::newRow("seconds unit") << u"0.5s"_s << -1.0;
        QTest::newRow("bare number") << u"45"_s << -1.0;
        QTest::newRow("days") << u"2d"_s << -1.0;
        QTest::newRow("999 hours") << u"999h"_s << 3596400.0;
        QTest::newRow("past 999 hours") << u"999.01h"_s << -1.0;
        QTest::newRow("infinite") << u"infh"_s << -1.0;
        QTest::newRow("not a number") << u"nanm"_s << -1.0;
        QTest::newRow("unit only") << u"m"_s << -1.0;
        QTest::newRow("two numbers") << u"1.2.3m"_s << -1.0;
        QTest::newRow("tab inside") << u"5\tm"_s << -1.0;
        QTest::newRow("Arabic-Indic digits") << u"٥m"_s << -1.0;
        QTest::newRow("empty") << QString() << -1.0;
    }

    void parsesStopTimes()
    {
        QFETCH(QString, text);
        QFETCH(double, seconds);
        const std::optional<double> parsed = parseRecordingDuration(text);
        if (seconds < 0) {
            QVERIFY2(!parsed, qPrintable(QString::number(parsed.value_or(0))));
        } else {
            QVERIFY(parsed);
            QVERIFY2(std::abs(*parsed - seconds) < 1e-3, qPrintable(QString::number(*parsed)));
        }
    }

    void formatsDurations_data()
    {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QString>("text");

        QTest::newRow("zero") << 0.0 << u"00:00"_s;
        QTest::newRow("truncated") << 7.99 << u"00:07"_s;
        QTest::newRow("last of the hour") << 3599.9 << u"59:59"_s;
        QTest::newRow("an hour") << 3600.0 << u"1:00:00"_s;
        QTest::newRow("hours, minutes, seconds") << 3723.0 << u"1:02:03"_s;
        QTest::newRow("many hours") << 999 * 3600.0 << u"999:00:00"_s;
        QTest::newRow("negative") << -5.0 << u"00:00"_s;
        QTest::newRow("not a number") << std::nan("") << u"00:00"_s;
    }

    void formatsDurations()
    {
        QFETCH(double, seconds);
        QFETCH(QString, text);
        QCOMPARE(formatDuration(seconds), text);
    }

    void writesThePanelLabel()
    {
        QCOMPARE(recordingPanelText(0, std::nullopt), u"REC  00:00"_s);
        QCOMPARE(recordingPanelText(59.2, 60.0), u"REC  00:59  •  LEFT  00:00"_s);
        QCOMPARE(recordingPanelText(58.5, 60.0), u"REC  00:58  •  LEFT  00:01"_s);
        // Past the stop time the time left stays at zero.
        QCOMPARE(recordingPanelText(61, 60.0), u"REC  01:01  •  LEFT  00:00"_s);
    }

    void sizesTheOutput_data()
    {
        QTest::addColumn<QSizeF>("points");
        QTest::addColumn<double>("scale");
        QTest::addColumn<bool>("hd");
        QTest::addColumn<QSize>("pixels");

        QTest::newRow("retina, normal") << QSizeF(960, 540) << 2.0 << false << QSize(1920, 1080);
        QTest::newRow("retina, hd") << QSizeF(960, 540) << 2.0 << true << QSize(1920, 1080);
        QTest::newRow("portrait hd") << QSizeF(400, 711) << 1.0 << true << QSize(1080, 1920);
        QTest::newRow("odd sides") << QSizeF(801, 451) << 1.0 << false << QSize(800, 450);
        QTest::newRow("one point") << QSizeF(1, 1) << 1.0 << false << QSize(2, 2);
        QTest::newRow("portrait up to the box")
            << QSizeF(300, 600) << 1.0 << true << QSize(960, 1920);
        QTest::newRow("square uses the landscape box")
            << QSizeF(500, 500) << 1.0 << true << QSize(1080, 1080);
        QTest::newRow("hd ignores the scale")
            << QSizeF(480, 270) << 2.0 << true << QSize(1920, 1080);
        QTest::newRow("fractional scale rounds half away")
            << QSizeF(501, 301) << 1.5 << false << QSize(752, 452);
    }

    void sizesTheOutput()
    {
        QFETCH(QSizeF, points);
        QFETCH(double, scale);
        QFETCH(bool, hd);
        QFETCH(QSize, pixels);
        QCOMPARE(outputDimensions(points, scale,
                                  hd ? PlayerRecordingQuality::hd : PlayerRecordingQuality::normal),
                 pixels);
    }

    void ratesBits_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<qint64>("bitRate"); // -1: does not fit

        QTest::newRow("1080p") << 1920 << 1080 << qint64(12'441'600);
        QTest::newRow("720p") << 1280 << 720 << qint64(5'529'600);
        QTest::newRow("small is raised") << 640 << 360 << qint64(4'000'000);
        QTest::newRow("largest sides") << INT_MAX << INT_MAX << qint64(-1);
    }

    void ratesBits()
    {
        QFETCH(int, width);
        QFETCH(int, height);
        QFETCH(qint64, bitRate);
        const std::optional<std::int64_t> rate = recordingBitRate(width, height);
        QCOMPARE(rate.value_or(-1), bitRate);
    }

    void findsTheCaptureArea_data()
    {
        QTest::addColumn<QRect>("window");
        QTest::addColumn<QPoint>("client");
        QTest::addColumn<QRect>("surface");
        QTest::addColumn<QList<QRect>>("displays");
        QTest::addColumn<int>("display"); // -1: an error
        QTest::addColumn<QRect>("inDisplay");
        QTest::addColumn<int>("error");

        const QList<QRect> two{QRect(0, 0, 1920, 1080), QRect(1920, 0, 1280, 1024)};
        QTest::newRow("inside the first display")
            << QRect(100, 100, 800, 600) << QPoint(100, 130) << QRect(0, 0, 800, 450) << two << 0
            << QRect(100, 130, 800, 450) << 0;
        QTest::newRow("mostly on the second, clipped to it")
            << QRect(1800, 50, 800, 600) << QPoint(1800, 80) << QRect(10, 0, 780, 500) << two << 1
            << QRect(0, 80, 670, 500) << 0;
        QTest::newRow("a tie keeps the first")
            << QRect(1520, 0, 800, 600) << QPoint(1520, 0) << QRect(0, 0, 800, 600) << two << 0
            << QRect(1520, 0, 400, 600) << 0;
        QTest::newRow("on no display")
            << QRect(5000, 5000, 800, 600) << QPoint(5000, 5000) << QRect(0, 0, 800, 600) << two
            << -1 << QRect() << int(RecorderError::playerDisplayNotFound);
        QTest::newRow("no displays at all")
            << QRect(0, 0, 800, 600) << QPoint(0, 0) << QRect(0, 0, 800, 600) << QList<QRect>()
            << -1 << QRect() << int(RecorderError::playerDisplayNotFound);
        QTest::newRow("eight pixels high")
            << QRect(0, 0, 800, 600) << QPoint(0, 0) << QRect(0, 0, 800, 8) << two << -1 << QRect()
            << int(RecorderError::invalidCaptureArea);
        QTest::newRow("nine pixels is enough")
            << QRect(0, 0, 800, 600) << QPoint(0, 0) << QRect(0, 0, 9, 9) << two << 0
            << QRect(0, 0, 9, 9) << 0;
        QTest::newRow("surface off the display's edge")
            << QRect(-795, 0, 800, 600) << QPoint(-795, 0) << QRect(0, 0, 800, 600)
            << QList<QRect>{QRect(0, 0, 1920, 1080)} << -1 << QRect()
            << int(RecorderError::invalidCaptureArea);
    }

    void findsTheCaptureArea()
    {
        QFETCH(QRect, window);
        QFETCH(QPoint, client);
        QFETCH(QRect, surface);
        QFETCH(QList<QRect>, displays);
        QFETCH(int, display);
        QFETCH(QRect, inDisplay);
        QFETCH(int, error);
        const auto found = RecordingCaptureArea::find(window, client, surface, displays);
        if (display < 0) {
            QVERIFY(std::holds_alternative<RecorderError>(found));
            QCOMPARE(int(std::get<RecorderError>(found)), error);
            return;
        }
        QVERIFY(std::holds_alternative<RecordingCaptureArea>(found));
        const RecordingCaptureArea area = std::get<RecordingCaptureArea>(found);
        QCOMPARE(area.display, display);
        QCOMPARE(area.inDisplay, inDisplay);
        // The same rectangle, back in the window's client coordinates, lies within the surface.
        QCOMPARE(area.inWindow.size(), inDisplay.size());
        QVERIFY(surface.contains(area.inWindow));
    }

    void proposesAFileName()
    {
        const QDateTime evening(QDate(2024, 5, 1), QTime(20, 15, 3));
        QCOMPARE(proposedRecordingName(PlayerRecordingQuality::normal, evening),
                 u"Velm Player Pro Normal Recording 2024-05-01 20-15-03.mp4"_s);
        QCOMPARE(proposedRecordingName(PlayerRecordingQuality::hd, evening),
                 u"Velm Player Pro HD Recording 2024-05-01 20-15-03.mp4"_s);
    }
};

QTEST_GUILESS_MAIN(tst_RecordingRules)
#include "tst_RecordingRules.moc"
