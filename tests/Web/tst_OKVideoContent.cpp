#include "Web/OKVideoContent.h"

#include "TextRows.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_OKVideoContent : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recognises_data();
    void recognises();
    void embedAddress_data();
    void embedAddress();
};

void tst_OKVideoContent::recognises_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("expected"); // "none" for no result

    addTextRow("video", u"https://ok.ru/video/12345", u"12345");
    addTextRow("videoembed with query", u"https://m.ok.ru/videoembed/12345?autoplay=0", u"12345");
    addTextRow("live with _ and -", u"https://ok.ru/live/ab_c-9", u"ab_c-9");
    addTextRow("dot rejects the address", u"https://ok.ru/video/12.3", u"none");
    addTextRow("keyword last", u"https://ok.ru/video/", u"none");
    addTextRow("nested path", u"https://ok.ru/profile/1/video/77", u"77");
    addTextRow("upper-case host", u"https://OK.RU/video/1", u"1");
    addTextRow("keywords are case-sensitive", u"https://ok.ru/VIDEO/1", u"none");
    addTextRow("letters of any script", u"https://ok.ru/video/%D0%B6%D0%B41", u"\u0436\u04341");
    addTextRow("combining mark", u"https://ok.ru/video/e%CC%81", u"e\u0301");
    addTextRow("blank after trimming", u"https://ok.ru/video/%20", u"none");
    addTextRow("inner space", u"https://ok.ru/video/a%20b", u"none");
    addTextRow("look-alike suffix host", u"https://ok.ru.example/video/1", u"none");
    addTextRow("look-alike prefix host", u"https://notok.ru/video/1", u"none");
    addTextRow("query never read", u"https://ok.ru/?video=1", u"none");
}

void tst_OKVideoContent::recognises()
{
    QFETCH(QString, url);
    QFETCH(QString, expected);
    const std::optional<OKVideoContent> content =
        OKVideoContent::fromUrl(*WebAddress::fromText(url));
    QCOMPARE(content ? content->videoID() : u"none"_s, expected);
    if (content)
        QCOMPARE(content->id(), content->videoID());
}

void tst_OKVideoContent::embedAddress_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("embed");

    QTest::newRow("digits") << u"https://m.ok.ru/video/12345?x=1"_s
                            << u"https://ok.ru/videoembed/12345?autoplay=1&nochat=1"_s;
    QTest::newRow("non-ASCII id is escaped")
        << u"https://ok.ru/live/%D0%B6_1"_s
        << u"https://ok.ru/videoembed/%D0%B6_1?autoplay=1&nochat=1"_s;
}

void tst_OKVideoContent::embedAddress()
{
    QFETCH(QString, url);
    QFETCH(QString, embed);
    const OKVideoContent content = *OKVideoContent::fromUrl(*WebAddress::fromText(url));
    const WebAddress address = content.embedURL();
    QCOMPARE(address.text(), embed);
    // Reading the embed address back yields the same video.
    QCOMPARE(OKVideoContent::fromUrl(address), content);
}

QTEST_APPLESS_MAIN(tst_OKVideoContent)
#include "tst_OKVideoContent.moc"
