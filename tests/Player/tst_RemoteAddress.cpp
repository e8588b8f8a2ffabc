#include "Player/RemoteAddress.h"

#include "TextRows.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_RemoteAddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void normalizes_data();
    void normalizes();
    void recognisesPlaylists_data();
    void recognisesPlaylists();
    void classifies_data();
    void classifies();
};

void tst_RemoteAddress::normalizes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    addTextRow("white space and line breaks", u"\n\t https://x/live.m3u8 \r\n",
               u"https://x/live.m3u8");
    addTextRow("angle brackets with spaces", u"  < https://x/live.m3u8 >  ",
               u"https://x/live.m3u8");
    addTextRow("Markdown link", u"[My list](https://x/list.m3u)", u"https://x/list.m3u");
    addTextRow("Markdown link around angle brackets", u"[a](<https://x/y>)", u"https://x/y");
    addTextRow("empty Markdown target", u"[a]()", u"");
    addTextRow("first ]( to the final )", u"see [a](b) and [c](https://x)",
               u"b) and [c](https://x");
    addTextRow("parenthesis not at the end", u"[a](https://x) trailing",
               u"[a](https://x) trailing");
    addTextRow("two characters are no brackets", u"<>", u"<>");
    addTextRow("no-break space trimmed", u"\u00a0https://x\u3000", u"https://x");
}

void tst_RemoteAddress::normalizes()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(RemoteAddress::normalizedRemoteAddress(text), expected);
}

void tst_RemoteAddress::recognisesPlaylists_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("playlist");

    QTest::newRow("m3u path") << u"http://x/list.m3u"_s << true;
    QTest::newRow("upper-case extension") << u"http://x/LIST.M3U"_s << true;
    QTest::newRow("m3u8 is a stream") << u"http://x/list.m3u8"_s << false;
    QTest::newRow("m3u8 path with m3u query") << u"http://x/a.m3u8?type=m3u"_s << true;
    QTest::newRow("type=m3u_plus") << u"http://x/get.php?username=u&type=m3u_plus"_s << true;
    QTest::newRow("output=M3U8") << u"http://x/get.php?output=M3U8"_s << true;
    QTest::newRow("name ending in type") << u"http://x/api?mytype=m3u"_s << true;
    QTest::newRow("escaped inside a value") << u"http://x/api?q=type%3Dm3u"_s << true;
    QTest::newRow("other type") << u"http://x/get.php?type=ts"_s << false;
    QTest::newRow("item without value") << u"http://x/get.php?type"_s << false;
    QTest::newRow("m3u as a folder") << u"http://x/m3u/"_s << false;
}

void tst_RemoteAddress::recognisesPlaylists()
{
    QFETCH(QString, url);
    QFETCH(bool, playlist);
    QCOMPARE(RemoteAddress::isIPTVPlaylistURL(*WebAddress::fromText(url)), playlist);
}

void tst_RemoteAddress::classifies_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected"); // kind, then the url or content identity

    addTextRow("live stream in brackets", u" <https://x/path/live.m3u8> ",
               u"live https://x/path/live.m3u8");
    addTextRow("file stream", u"https://x/movie.mp4", u"stream https://x/movie.mp4");
    addTextRow("Markdown playlist", u"[list](https://x/list.m3u)", u"playlist https://x/list.m3u");
    addTextRow("query playlist", u"http://x/get.php?output=M3U8",
               u"playlist http://x/get.php?output=M3U8");
    addTextRow("upper-case scheme kept as written", u"HTTPS://EXAMPLE.COM/a",
               u"stream HTTPS://EXAMPLE.COM/a");
    addTextRow("YouTube before playlist", u"https://youtube.com/watch?v=abc&type=m3u",
               u"youtube abc|");
    addTextRow("OK.ru before playlist", u"https://ok.ru/video/1?output=m3u", u"okVideo 1");
    addTextRow("YouTube host without video is a stream", u"https://youtube.com/feed",
               u"stream https://youtube.com/feed");
    addTextRow("no scheme", u"example.com/live.m3u8", u"invalid");
    addTextRow("ftp", u"ftp://x/a.m3u", u"invalid");
    addTextRow("empty", u"   ", u"invalid");
    addTextRow("space inside", u"http://x/a b.m3u8", u"invalid");
}

void tst_RemoteAddress::classifies()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    const RemoteTarget target = RemoteAddress::classify(text);
    QString actual;
    switch (target.kind) {
    case RemoteTarget::Kind::invalid:
        QVERIFY(target.url.isNull());
        actual = u"invalid"_s;
        break;
    case RemoteTarget::Kind::youtube:
        actual = u"youtube "_s + target.youtube->id();
        break;
    case RemoteTarget::Kind::okVideo:
        actual = u"okVideo "_s + target.okVideo->id();
        break;
    case RemoteTarget::Kind::playlist:
        actual = u"playlist "_s + target.url.text();
        break;
    case RemoteTarget::Kind::stream:
        actual = (target.isLiveStream ? u"live "_s : u"stream "_s) + target.url.text();
        break;
    }
    QCOMPARE(actual, expected);
}

QTEST_APPLESS_MAIN(tst_RemoteAddress)
#include "tst_RemoteAddress.moc"
