#include "Web/YouTubeContent.h"

#include "TextRows.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_YouTubeContent : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recognises_data();
    void recognises();
    void identityTellsPlaylistsApart();
};

void tst_YouTubeContent::recognises_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("expected"); // "video|playlist" as id(), "none" for no result

    addTextRow("short link with list", u"https://youtu.be/abc123?list=PL1", u"abc123|PL1");
    addTextRow("short link root only", u"https://youtu.be/", u"none");
    addTextRow("short link root with list", u"https://youtu.be/?list=PL1", u"|PL1");
    addTextRow("short link ignores v", u"https://youtu.be/abc?v=zzz", u"abc|");
    addTextRow("watch decodes then trims", u"https://www.youtube.com/watch?v=%20abc%20", u"abc|");
    addTextRow("watch with list only", u"https://youtube.com/watch?list=PLx", u"|PLx");
    addTextRow("watch with neither", u"https://youtube.com/watch", u"none");
    addTextRow("watch trailing slash is no watch page", u"https://youtube.com/watch/?v=abc",
               u"none");
    addTextRow("watch empty values", u"https://youtube.com/watch?v=&list=", u"none");
    addTextRow("first v wins even without value", u"https://youtube.com/watch?v&v=second&list=PL",
               u"|PL");
    addTextRow("first list wins", u"https://youtube.com/watch?v=abc&list=PL1&list=PL2", u"abc|PL1");
    addTextRow("shorts", u"https://youtube.com/shorts/XYZ", u"XYZ|");
    addTextRow("embed on mobile host", u"https://m.youtube.com/embed/XYZ", u"XYZ|");
    addTextRow("privacy subdomain", u"https://www.youtube-nocookie.com/embed/XYZ?list=L", u"XYZ|L");
    addTextRow("upper-case host", u"https://WWW.YOUTUBE.COM/embed/XYZ", u"XYZ|");
    addTextRow("keywords are case-sensitive", u"https://youtube.com/SHORTS/XYZ", u"none");
    addTextRow("keyword anywhere", u"https://youtube.com/a/embed/X", u"X|");
    addTextRow("keyword after keyword", u"https://youtube.com/embed/live", u"live|");
    addTextRow("keyword last", u"https://youtube.com/embed", u"none");
    addTextRow("look-alike suffix host", u"https://youtube.com.example/embed/XYZ", u"none");
    addTextRow("look-alike prefix host", u"https://notyoutube.com/embed/XYZ", u"none");
    addTextRow("short-link host is exact", u"https://www.youtu.be/abc", u"none");
    addTextRow("other service", u"https://vimeo.com/123?list=PL", u"none");
}

void tst_YouTubeContent::recognises()
{
    QFETCH(QString, url);
    QFETCH(QString, expected);
    const std::optional<YouTubeContent> content =
        YouTubeContent::fromUrl(*WebAddress::fromText(url));
    QCOMPARE(content ? content->id() : u"none"_s, expected);
    if (content) {
        // Present identifiers are never empty: absence is expressed as absence.
        QVERIFY(content->videoID() || content->playlistID());
        QVERIFY(!content->videoID().value_or(u"x"_s).isEmpty());
        QVERIFY(!content->playlistID().value_or(u"x"_s).isEmpty());
    }
}

void tst_YouTubeContent::identityTellsPlaylistsApart()
{
    const auto content = [](const char16_t *url) {
        return *YouTubeContent::fromUrl(*WebAddress::fromText(QString::fromUtf16(url)));
    };
    const YouTubeContent first = content(u"https://youtu.be/abc?list=PL1");
    const YouTubeContent second = content(u"https://youtube.com/watch?v=abc&list=PL2");
    QVERIFY(first != second);
    QVERIFY(first.id() != second.id());
    QCOMPARE(content(u"https://youtu.be/abc?list=PL1"), first);
    QVERIFY(content(u"https://youtu.be/?list=PL1").id().startsWith(u'|'));
}

QTEST_APPLESS_MAIN(tst_YouTubeContent)
#include "tst_YouTubeContent.moc"
