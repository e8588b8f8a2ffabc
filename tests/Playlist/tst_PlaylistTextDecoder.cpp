#include "Playlist/PlaylistTextDecoder.h"

#include "TestData.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_PlaylistTextDecoder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decodes_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");

        QTest::newRow("UTF-8") << QByteArray("Caf\xc3\xa9 \xe2\x80\x94 \xf0\x9f\x99\x82")
                               << u"Caf\u00e9 \u2014 \U0001F642"_s;
        QTest::newRow("byte-order mark dropped")
            << QByteArray("\xef\xbb\xbf#EXTM3U\n") << u"#EXTM3U\n"_s;
        QTest::newRow("Latin-1 letters") << QByteArray("Caf\xe9 \xff") << u"Caf\u00e9 \u00ff"_s;
        QTest::newRow("one bad byte makes it all Windows-1252")
            << QByteArray("\xc3\xa9 \x96 \xff") << u"\u00c3\u00a9 \u2013 \u00ff"_s;
        QTest::newRow("Windows-1252 punctuation and letters")
            << QByteArray("\x80\x84\x93\x92\x85 Ko\x9aice \x8a\x8e\x9f\x99")
            << u"\u20ac\u201e\u201c\u2019\u2026 Ko\u0161ice \u0160\u017d\u0178\u2122"_s;
        QTest::newRow("bytes Windows-1252 leaves undefined")
            << QByteArray("\x81\x8d\x8f\x90\x9d") << u"\u0081\u008d\u008f\u0090\u009d"_s;
        QTest::newRow("overlong form is not UTF-8") << QByteArray("\xc0\xaf") << u"\u00c0\u00af"_s;
        QTest::newRow("encoded surrogate is not UTF-8")
            << QByteArray("\xed\xa0\x80") << u"\u00ed\u00a0\u20ac"_s;
        QTest::newRow("truncated sequence") << QByteArray("ok\xe2\x80") << u"ok\u00e2\u20ac"_s;
        QTest::newRow("NUL kept") << QByteArray("a\0b", 3) << QString(u"a"_s + QChar(0) + u"b"_s);
        QTest::newRow("empty") << QByteArray() << QString();
    }

    void decodes()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        const std::optional<QString> decoded = PlaylistTextDecoder::decode(bytes);
        QVERIFY(decoded);
        QCOMPARE(*decoded, text);
    }

    void decodesRealFiles()
    {
        const std::optional<QString> legacy =
            PlaylistTextDecoder::decode(readTestData(u"m3u/made/german-cp1252-mixed-breaks.m3u"_s));
        QVERIFY(legacy && legacy->contains(u"Stadt K\u00f6ln"));
        QVERIFY(legacy->contains(u"Nachrichten \u2013 Live"));
        QVERIFY(legacy->contains(u"\u201eNatur\u201c"));
        const std::optional<QString> utf8 =
            PlaylistTextDecoder::decode(readTestData(u"m3u/made/german-utf8.m3u"_s));
        QVERIFY(utf8 && utf8->contains(u"Stadt K\u00f6ln"));
    }
};

QTEST_APPLESS_MAIN(tst_PlaylistTextDecoder)
#include "tst_PlaylistTextDecoder.moc"
