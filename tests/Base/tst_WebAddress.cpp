#include "Base/WebAddress.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_WebAddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void acceptsOnlyAddressText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");

        QTest::newRow("full") << u"http://user:pw@host:8080/p/a?q=1&r#frag"_s << true;
        QTest::newRow("IPv6 literal") << u"http://[::1]:8080/x"_s << true;
        QTest::newRow("relative name") << u"logo.png"_s << true;
        QTest::newRow("scheme only") << u"http:"_s << true;
        QTest::newRow("sub-delims") << u"http://h/a!$&'()*+,;=:@~_-.b"_s << true;
        QTest::newRow("empty") << QString() << false;
        QTest::newRow("space in path") << u"http://a/b c"_s << false;
        QTest::newRow("lone percent") << u"http://a/%"_s << false;
        QTest::newRow("bad escape") << u"http://a/%zz"_s << false;
        QTest::newRow("short escape") << u"http://a/%4"_s << false;
        QTest::newRow("non-ASCII letter") << u"http://a/\u00e9t\u00e9"_s << false;
        QTest::newRow("NUL") << QString(u"http://a/b"_s + QChar(0)) << false;
        QTest::newRow("second hash") << u"http://a/#x#y"_s << false;
        QTest::newRow("brackets in path") << u"http://a/[x]"_s << false;
        QTest::newRow("brackets in query") << u"http://a/?x=[1]"_s << false;
        QTest::newRow("unclosed IP literal") << u"http://[::1/x"_s << false;
        QTest::newRow("port not a number") << u"http://host:port/"_s << false;
        QTest::newRow("two at-signs") << u"http://a@b@c/"_s << false;
        QTest::newRow("colon in first relative segment") << u"1abc:foo"_s << false;
    }

    void acceptsOnlyAddressText()
    {
        QFETCH(QString, text);
        QFETCH(bool, valid);
        const std::optional<WebAddress> address = WebAddress::fromText(text);
        QCOMPARE(address.has_value(), valid);
        if (valid)
            QCOMPARE(address->text(), text); // never rewritten
    }

    void rejectsEveryCharacterOutsideTheGrammar()
    {
        // Punctuation a path may hold; "#" and "?" start a fragment or query, which is fine too.
        // Brackets belong to IP-literal hosts only; "%" escapes have rows of their own.
        const QString allowed = u"-._~:/?#@!$&'()*+,;="_s;
        // Positions in the first and a later block of eight, and in the tail after the last block.
        for (const qsizetype at : {9, 30, 44}) {
            for (char16_t c = 0; c < 0x100; ++c) {
                if ((c < 0x80 && QChar(c).isLetterOrNumber()) || c == u'%')
                    continue;
                QString text = u"http://h/abcdefghijklmnopqrstuvwxyz0123456789"_s;
                text.insert(at, QChar(c));
                QVERIFY2(WebAddress::fromText(text).has_value() == allowed.contains(QChar(c)),
                         qPrintable(
                             QStringLiteral("U+%1 at %2").arg(int(c), 4, 16, QChar(u'0')).arg(at)));
            }
        }
    }

    void resolvesLikeRfc3986_data()
    {
        QTest::addColumn<QString>("reference");
        QTest::addColumn<QString>("expected");

        // Examples of RFC 3986 section 5.4 (one of each kind), base http://a/b/c/d;p?q.
        const char *const examples[][2] = {
            {"g:h", "g:h"},
            {"g", "http://a/b/c/g"},
            {"/g", "http://a/g"},
            {"//g", "http://g"},
            {"?y", "http://a/b/c/d;p?y"},
            {"#s", "http://a/b/c/d;p?q#s"},
            {"g?y#s", "http://a/b/c/g?y#s"},
            {"g;x?y#s", "http://a/b/c/g;x?y#s"},
            {".", "http://a/b/c/"},
            {"..", "http://a/b/"},
            {"../g", "http://a/b/g"},
            {"../..", "http://a/"},
            {"../../g", "http://a/g"},
            {"../../../g", "http://a/g"},
            {"/./g", "http://a/g"},
            {"/../g", "http://a/g"},
            {".g", "http://a/b/c/.g"},
            {"..g", "http://a/b/c/..g"},
            {"./../g", "http://a/b/g"},
            {"g/./h", "http://a/b/c/g/h"},
            {"g/../h", "http://a/b/c/h"},
            {"g;x=1/../y", "http://a/b/c/y"},
            {"g?y/../x", "http://a/b/c/g?y/../x"},
            {"g#s/../x", "http://a/b/c/g#s/../x"},
            {"http:g", "http:g"},
        };
        for (const auto &example : examples)
            QTest::newRow(example[0])
                << QString::fromLatin1(example[0]) << QString::fromLatin1(example[1]);
    }

    void resolvesLikeRfc3986()
    {
        QFETCH(QString, reference);
        QFETCH(QString, expected);
        const WebAddress base = *WebAddress::fromText(u"http://a/b/c/d;p?q");
        const std::optional<WebAddress> resolved = WebAddress::fromText(reference, base);
        QVERIFY(resolved);
        QCOMPARE(resolved->text(), expected);
    }

    void resolvesPlaylistLinesAgainstFiles_data()
    {
        QTest::addColumn<QString>("base");
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("expected");

        const QString file = u"file:///home/u/lists/index.m3u"_s;
        QTest::newRow("sibling folder")
            << file << u"channels/af.m3u"_s << u"file:///home/u/lists/channels/af.m3u"_s;
        QTest::newRow("parent") << file << u"../live.ts"_s << u"file:///home/u/live.ts"_s;
        QTest::newRow("absolute path") << file << u"/srv/x.ts"_s << u"file:///srv/x.ts"_s;
        QTest::newRow("absolute address untouched")
            << file << u"HTTP://Host/./a/../b"_s << u"HTTP://Host/./a/../b"_s;
        QTest::newRow("host without path") << u"http://h"_s << u"seg.ts"_s << u"http://h/seg.ts"_s;
        QTest::newRow("keeps base query for fragment")
            << u"http://h/p/list.m3u?token=1"_s << u"#x"_s << u"http://h/p/list.m3u?token=1#x"_s;
        QTest::newRow("a path never becomes a host")
            << u"http:/.//evil.example/list.m3u"_s << u"chan.ts"_s
            << u"http:/.//evil.example/chan.ts"_s;
        QTest::newRow("nor through dot segments")
            << u"http:/a/b"_s << u"..//evil.example/x"_s << u"http:/.//evil.example/x"_s;
        QTest::newRow("a relative base resolves nothing")
            << u"#fdexp/hb/d;p?q"_s << u"../../../."_s << u"../../../."_s;
        QTest::newRow("nor lets a segment become a scheme") << u"a"_s << u"../x:y"_s << u"../x:y"_s;
    }

    void resolvesPlaylistLinesAgainstFiles()
    {
        QFETCH(QString, base);
        QFETCH(QString, line);
        QFETCH(QString, expected);
        const std::optional<WebAddress> resolved =
            WebAddress::fromText(line, *WebAddress::fromText(base));
        QVERIFY(resolved);
        QCOMPARE(resolved->text(), expected);
        // What comes out reads back as the same address, and a line without a host of its own keeps
        // the list's host (or none).
        const std::optional<WebAddress> again = WebAddress::fromText(resolved->text());
        QCOMPARE(again, resolved);
        if (!line.contains(u"://"))
            QCOMPARE(again->host(), WebAddress::fromText(base)->host());
    }

    void splitsComponents_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("host"); // "-" for none
        QTest::addColumn<QString>("path");
        QTest::addColumn<QStringList>("components");
        QTest::addColumn<QString>("last"); // "-" when it does not decode
        QTest::addColumn<QString>("extension");

        QTest::newRow("no path") << u"http://host"_s << u"host"_s << QString() << QStringList()
                                 << QString() << QString();
        QTest::newRow("root") << u"http://host/"_s << u"host"_s << u"/"_s << QStringList{u"/"_s}
                              << u"/"_s << QString();
        QTest::newRow("trailing slash")
            << u"http://h/a/b/"_s << u"h"_s << u"/a/b/"_s << QStringList{u"/"_s, u"a"_s, u"b"_s}
            << u"b"_s << QString();
        QTest::newRow("escaped name")
            << u"http://h/My%20Show.mp4"_s << u"h"_s << u"/My Show.mp4"_s
            << QStringList{u"/"_s, u"My Show.mp4"_s} << u"My Show.mp4"_s << u"mp4"_s;
        QTest::newRow("escape that is not UTF-8")
            << u"http://h/x%FF"_s << u"h"_s << u"/x%FF"_s << QStringList{u"/"_s, u"x%FF"_s}
            << u"-"_s << QString();
        QTest::newRow("IP literal and port")
            << u"http://[::1]:80/a.M3U"_s << u"::1"_s << u"/a.M3U"_s
            << QStringList{u"/"_s, u"a.M3U"_s} << u"a.M3U"_s << u"M3U"_s;
        QTest::newRow("file address has no host")
            << u"file:///tmp/a.ts"_s << u"-"_s << u"/tmp/a.ts"_s
            << QStringList{u"/"_s, u"tmp"_s, u"a.ts"_s} << u"a.ts"_s << u"ts"_s;
        QTest::newRow("hidden file has no extension")
            << u"http://h/.m3u"_s << u"h"_s << u"/.m3u"_s << QStringList{u"/"_s, u".m3u"_s}
            << u".m3u"_s << QString();
        QTest::newRow("query is not path")
            << u"http://h/get.php?x=a.m3u"_s << u"h"_s << u"/get.php"_s
            << QStringList{u"/"_s, u"get.php"_s} << u"get.php"_s << u"php"_s;
    }

    void splitsComponents()
    {
        QFETCH(QString, text);
        QFETCH(QString, host);
        QFETCH(QString, path);
        QFETCH(QStringList, components);
        QFETCH(QString, last);
        QFETCH(QString, extension);
        const WebAddress address = *WebAddress::fromText(text);
        QCOMPARE(address.host().value_or(u"-"_s), host);
        QCOMPARE(address.path(), path);
        QCOMPARE(address.pathComponents(), components);
        QCOMPARE(address.lastPathComponent().value_or(u"-"_s), last);
        QCOMPARE(address.pathExtension(), extension);
    }

    void tellsSchemes_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("scheme");
        QTest::addColumn<bool>("web");
        QTest::addColumn<bool>("file");

        QTest::newRow("http") << u"http://h/a"_s << u"http"_s << true << false;
        QTest::newRow("https in capitals") << u"HTTPS://h"_s << u"HTTPS"_s << true << false;
        QTest::newRow("mixed case") << u"hTtP:x"_s << u"hTtP"_s << true << false;
        QTest::newRow("scheme only") << u"https:"_s << u"https"_s << true << false;
        QTest::newRow("longer scheme") << u"httpsx://h"_s << u"httpsx"_s << false << false;
        QTest::newRow("shorter scheme") << u"htt://h"_s << u"htt"_s << false << false;
        QTest::newRow("other scheme") << u"rtmp://h/live"_s << u"rtmp"_s << false << false;
        QTest::newRow("file") << u"FILE:///tmp/a.ts"_s << u"FILE"_s << false << true;
        QTest::newRow("colon after a slash") << u"a/http:x"_s << QString() << false << false;
        QTest::newRow("colon in the query") << u"//h/p?http:x"_s << QString() << false << false;
        QTest::newRow("colon in the fragment") << u"p#file:x"_s << QString() << false << false;
        QTest::newRow("relative path") << u"http"_s << QString() << false << false;
    }

    void tellsSchemes()
    {
        QFETCH(QString, text);
        QFETCH(QString, scheme);
        QFETCH(bool, web);
        QFETCH(bool, file);
        const std::optional<WebAddress> address = WebAddress::fromText(text);
        QVERIFY(address);
        QCOMPARE(address->scheme(), scheme);
        QCOMPARE(address->hasScheme(), !scheme.isNull());
        QCOMPARE(address->isWebAddress(), web);
        QCOMPARE(address->isLocalFile(), file);
    }

    void parsesQueryItems()
    {
        const WebAddress address =
            *WebAddress::fromText(u"http://h/p?v=%20abc%20&list&x=1=2&+=%2B&");
        using Item = WebAddress::QueryItem;
        const QList<Item> expected{{u"v"_s, u" abc "_s},
                                   {u"list"_s, std::nullopt},
                                   {u"x"_s, u"1=2"_s},
                                   {u"+"_s, u"+"_s},
                                   {QString(), std::nullopt}};
        QCOMPARE(address.queryItems(), expected);
        QVERIFY(WebAddress::fromText(u"http://h/p")->queryItems().isEmpty());
    }

    void localFileRoundTrip()
    {
        const QString path = u"/tmp/My Film \u00e9[1]%.mkv"_s;
        const WebAddress address = WebAddress::fromLocalFile(path);
        QCOMPARE(address.text(), u"file:///tmp/My%20Film%20%C3%A9%5B1%5D%25.mkv"_s);
        QVERIFY(address.isLocalFile());
        QCOMPARE(address.toLocalFile(), path);
        // The address of a file is itself valid address text.
        QCOMPARE(WebAddress::fromText(address.text()), address);
    }
};

QTEST_APPLESS_MAIN(tst_WebAddress)
#include "tst_WebAddress.moc"
