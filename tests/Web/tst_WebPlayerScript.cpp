#include "Web/OKVideoPlayerRegistry.h"
#include "Web/WebPlayerScript.h"
#include "Web/YouTubePlayerPage.h"

#include "RecordingScriptTarget.h"

#include <QTest>

#include <limits>
#include <memory>
#include <optional>

Q_DECLARE_METATYPE(std::optional<QString>)

using namespace Qt::StringLiterals;

class tst_WebPlayerScript : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void numbersReadBackExactly_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("whole") << 5.0 << u"5.0"_s;
        QTest::newRow("negative whole") << -20.0 << u"-20.0"_s;
        QTest::newRow("fraction") << 0.35 << u"0.35"_s;
        QTest::newRow("zero") << 0.0 << u"0.0"_s;
        QTest::newRow("shortest, not 17 digits") << 0.1 + 0.2 << u"0.30000000000000004"_s;
        QTest::newRow("tiny") << 1e-5 << u"1e-05"_s;
        QTest::newRow("huge") << 1e16 << u"1e+16"_s;
        QTest::newRow("large plain") << 123456789012.5 << u"123456789012.5"_s;
        QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << u"NaN"_s;
        QTest::newRow("infinite") << -std::numeric_limits<double>::infinity() << u"-Infinity"_s;
    }

    void numbersReadBackExactly()
    {
        QFETCH(double, value);
        QFETCH(QString, text);
        QCOMPARE(WebPlayerScript::number(value), text);
    }

    void pageLiteralsAreJsonStrings_data()
    {
        QTest::addColumn<std::optional<QString>>("value");
        QTest::addColumn<QString>("literal");
        QTest::newRow("absent") << std::optional<QString>() << u"null"_s;
        QTest::newRow("plain") << std::optional(u"abc"_s) << u"\"abc\""_s;
        QTest::newRow("script end")
            << std::optional(u"a\"b</script>"_s) << u"\"a\\\"b<\\/script>\""_s;
        QTest::newRow("control and non-ASCII")
            << std::optional(u"\t\u00e9\\"_s) << u"\"\\t\u00e9\\\\\""_s;
    }

    void pageLiteralsAreJsonStrings()
    {
        QFETCH(std::optional<QString>, value);
        QFETCH(QString, literal);
        QCOMPARE(YouTubePlayerPage::javascriptString(value), literal);
    }

    void registryRunsCommandsLaterOnTheViewOnScreen()
    {
        OKVideoPlayerRegistry registry;
        // Without a view when it runs, a command goes nowhere and is not kept for a later view.
        registry.evaluate(u"lost();"_s);
        QTest::qWait(10);
        auto view = std::make_unique<RecordingScriptTarget>();
        RecordingScriptTarget older;
        registry.hold(&older);
        registry.hold(view.get());
        registry.release(&older); // an older view going away never unregisters a newer one
        QTest::qWait(10);
        QVERIFY(view->scripts.isEmpty());

        registry.setMuted(true);
        // Never inside the caller: the command runs from the event loop.
        QVERIFY(view->scripts.isEmpty());
        QTRY_COMPARE(view->scripts,
                     QStringList{WebPlayerScript::setMuted(WebPlayerService::okVideo, true)});
        QVERIFY(older.scripts.isEmpty());

        // A view that went away is not kept alive.
        view.reset();
        QVERIFY(!registry.webView());
    }
};

QTEST_GUILESS_MAIN(tst_WebPlayerScript)
#include "tst_WebPlayerScript.moc"
