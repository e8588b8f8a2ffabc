#include "Player/RemoteAddress.h"

#include "TextRows.h"

#include <QTest>

using namespace Qt::StringLiterals;

// What a typed address becomes, in one table: cleaned, then a YouTube video or playlist, an OK.ru
// video, an IPTV playlist, a stream (live for HLS), or nothing.
class tst_RemoteAddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void normalizes_data()
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

    void normalizes()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(RemoteAddress::normalizedRemoteAddress(text), expected);
    }

    void classifies_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected"); // kind, then the url or the content's identity

        // Streams and playlists.
        addTextRow("live stream in brackets", u" <https://x/path/live.m3u8> ",
                   u"live https://x/path/live.m3u8");
        addTextRow("file stream", u"https://x/movie.mp4", u"stream https://x/movie.mp4");
        addTextRow("Markdown playlist", u"[list](https://x/list.m3u)",
                   u"playlist https://x/list.m3u");
        addTextRow("upper-case extension", u"http://x/LIST.M3U", u"playlist http://x/LIST.M3U");
        addTextRow("m3u8 path with m3u query", u"http://x/a.m3u8?type=m3u",
                   u"playlist http://x/a.m3u8?type=m3u");
        addTextRow("type=m3u_plus", u"http://x/get.php?username=u&type=m3u_plus",
                   u"playlist http://x/get.php?username=u&type=m3u_plus");
        addTextRow("output=M3U8", u"http://x/get.php?output=M3U8",
                   u"playlist http://x/get.php?output=M3U8");
        addTextRow("escaped inside a value", u"http://x/api?q=type%3Dm3u",
                   u"playlist http://x/api?q=type%3Dm3u");
        addTextRow("other type", u"http://x/get.php?type=ts", u"stream http://x/get.php?type=ts");
        addTextRow("m3u as a folder", u"http://x/m3u/", u"stream http://x/m3u/");
        addTextRow("upper-case scheme kept as written", u"HTTPS://EXAMPLE.COM/a",
                   u"stream HTTPS://EXAMPLE.COM/a");
        addTextRow("no scheme", u"example.com/live.m3u8", u"invalid");
        addTextRow("ftp", u"ftp://x/a.m3u", u"invalid");
        addTextRow("empty", u"   ", u"invalid");
        addTextRow("space inside", u"http://x/a b.m3u8", u"invalid");

        // YouTube: the identity is "video|playlist".
        addTextRow("YouTube before playlist", u"https://youtube.com/watch?v=abc&type=m3u",
                   u"youtube abc|");
        addTextRow("short link with list", u"https://youtu.be/abc123?list=PL1",
                   u"youtube abc123|PL1");
        addTextRow("short link root only", u"https://youtu.be/", u"stream https://youtu.be/");
        addTextRow("short link root with list", u"https://youtu.be/?list=PL1", u"youtube |PL1");
        addTextRow("short link ignores v", u"https://youtu.be/abc?v=zzz", u"youtube abc|");
        addTextRow("watch decodes then trims", u"https://www.youtube.com/watch?v=%20abc%20",
                   u"youtube abc|");
        addTextRow("watch with list only", u"https://youtube.com/watch?list=PLx", u"youtube |PLx");
        addTextRow("watch trailing slash is no watch page", u"https://youtube.com/watch/?v=abc",
                   u"stream https://youtube.com/watch/?v=abc");
        addTextRow("first v wins even without value",
                   u"https://youtube.com/watch?v&v=second&list=PL", u"youtube |PL");
        addTextRow("first list wins", u"https://youtube.com/watch?v=abc&list=PL1&list=PL2",
                   u"youtube abc|PL1");
        addTextRow("shorts", u"https://youtube.com/shorts/XYZ", u"youtube XYZ|");
        addTextRow("privacy subdomain", u"https://www.youtube-nocookie.com/embed/XYZ?list=L",
                   u"youtube XYZ|L");
        addTextRow("upper-case host", u"https://WWW.YOUTUBE.COM/embed/XYZ", u"youtube XYZ|");
        addTextRow("YouTube keywords are case-sensitive", u"https://youtube.com/SHORTS/XYZ",
                   u"stream https://youtube.com/SHORTS/XYZ");
        addTextRow("keyword anywhere", u"https://youtube.com/a/embed/X", u"youtube X|");
        addTextRow("YouTube keyword last", u"https://youtube.com/embed",
                   u"stream https://youtube.com/embed");
        addTextRow("YouTube look-alike prefix host", u"https://notyoutube.com/embed/XYZ",
                   u"stream https://notyoutube.com/embed/XYZ");

        // OK.ru: the identity is the video id.
        addTextRow("OK.ru before playlist", u"https://ok.ru/video/1?output=m3u", u"okVideo 1");
        addTextRow("videoembed with query", u"https://m.ok.ru/videoembed/12345?autoplay=0",
                   u"okVideo 12345");
        addTextRow("live with _ and -", u"https://ok.ru/live/ab_c-9", u"okVideo ab_c-9");
        addTextRow("dot rejects the address", u"https://ok.ru/video/12.3",
                   u"stream https://ok.ru/video/12.3");
        addTextRow("nested path", u"https://ok.ru/profile/1/video/77", u"okVideo 77");
        addTextRow("OK.ru upper-case host", u"https://OK.RU/video/1", u"okVideo 1");
        addTextRow("OK.ru keywords are case-sensitive", u"https://ok.ru/VIDEO/1",
                   u"stream https://ok.ru/VIDEO/1");
        addTextRow("letters of any script", u"https://ok.ru/video/%D0%B6%D0%B41",
                   u"okVideo \u0436\u04341");
        addTextRow("blank after trimming", u"https://ok.ru/video/%20",
                   u"stream https://ok.ru/video/%20");
        addTextRow("OK.ru look-alike host", u"https://notok.ru/video/1",
                   u"stream https://notok.ru/video/1");
        addTextRow("query never read", u"https://ok.ru/?video=1", u"stream https://ok.ru/?video=1");
    }

    void classifies()
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
            // Present identifiers are never empty: absence is expressed as absence.
            QVERIFY(!target.youtube->videoID().value_or(u"x"_s).isEmpty());
            QVERIFY(!target.youtube->playlistID().value_or(u"x"_s).isEmpty());
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

    void okVideoEmbedAddress_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("embed");

        QTest::newRow("digits") << u"https://m.ok.ru/video/12345?x=1"_s
                                << u"https://ok.ru/videoembed/12345?autoplay=1&nochat=1"_s;
        QTest::newRow("non-ASCII id is escaped")
            << u"https://ok.ru/live/%D0%B6_1"_s
            << u"https://ok.ru/videoembed/%D0%B6_1?autoplay=1&nochat=1"_s;
    }

    void okVideoEmbedAddress()
    {
        QFETCH(QString, url);
        QFETCH(QString, embed);
        const OKVideoContent content = *OKVideoContent::fromUrl(*WebAddress::fromText(url));
        const WebAddress address = content.embedURL();
        QCOMPARE(address.text(), embed);
        // Reading the embed address back yields the same video.
        QCOMPARE(OKVideoContent::fromUrl(address), content);
    }
};

QTEST_APPLESS_MAIN(tst_RemoteAddress)
#include "tst_RemoteAddress.moc"
