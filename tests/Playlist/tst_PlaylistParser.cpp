#include "Playlist/PlaylistParser.h"
#include "Playlist/PlaylistReader.h"
#include "Playlist/PlaylistTextDecoder.h"

#include "TestData.h"

#include <QBuffer>
#include <QDirIterator>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include <thread>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// "name|url|logo|group|country" with "-" for an absent field: one readable line per entry.
QString describe(const PlaylistEntry &entry)
{
    return QStringList{entry.name, entry.url.text(), entry.logoURL ? entry.logoURL->text() : u"-"_s,
                       entry.groupTitle.value_or(u"-"_s), entry.countryCode.value_or(u"-"_s)}
        .join(u'|');
}

QStringList describeAll(const QList<PlaylistEntry> &entries)
{
    QStringList lines;
    for (const PlaylistEntry &entry : entries)
        lines.append(describe(entry));
    return lines;
}

const WebAddress &remoteBase()
{
    static const WebAddress base = *WebAddress::fromText(u"http://h/lists/index.m3u");
    return base;
}

QList<PlaylistEntry> parseTestData(const QString &relativePath)
{
    return PlaylistParser::parse(readTestData(relativePath),
                                 WebAddress::fromLocalFile(testData(relativePath)));
}

// What the parser gives for the whole text decoded first: the same characters as UTF-8, which
// has a byte sequence for every line break and space of the decoded text, behind a byte-order mark
// of its own, which the parser drops (so that a mark starting the decoded text stays a character).
QList<PlaylistEntry> parseDecoded(QByteArrayView bytes, const WebAddress &base)
{
    return PlaylistParser::parse(
        "\xEF\xBB\xBF" + PlaylistTextDecoder::decode(bytes).value_or(QString()).toUtf8(), base);
}

const PlaylistEntry *findByUrl(const QList<PlaylistEntry> &entries, QStringView url)
{
    for (const PlaylistEntry &entry : entries) {
        if (entry.url.text() == url)
            return &entry;
    }
    return nullptr;
}

} // namespace

class tst_PlaylistParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parses_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("expected");

        const auto row = [](const char *name, const char16_t *text, QStringList expected) {
            QTest::newRow(name) << QString::fromUtf16(text) << expected;
        };
        row("full description",
            u"#EXTM3U\n#EXTINF:-1 tvg-logo=\"http://l/x.png\" group-title=\"News\" "
            u"tvg-country=\"gb\",BBC News\nhttp://s/bbc.m3u8",
            {u"BBC News|http://s/bbc.m3u8|http://l/x.png|News|GB"_s});
        row("blank title falls back to tvg-name", u"#EXTINF:-1 tvg-name=\"Alpha\", \nhttp://s/a",
            {u"Alpha|http://s/a|-|-|-"_s});
        row("no comma: the line is the title", u"#EXTINF:-1 tvg-name=\"Alpha\"\nhttp://s/a",
            {u"#EXTINF:-1 tvg-name=\"Alpha\"|http://s/a|-|-|-"_s});
        row("commas inside the title survive", u"#EXTINF:-1,News, Weather & More\nhttp://s/a",
            {u"News, Weather & More|http://s/a|-|-|-"_s});
        row("a comma in an attribute ends the attributes",
            u"#EXTINF:-1 tvg-name=\"A,B\",Title\nhttp://s/a", {u"B\",Title|http://s/a|-|-|-"_s});
        row("only the first comma splits", u"#EXTINF:-1,,Name\nhttp://s/a",
            {u",Name|http://s/a|-|-|-"_s});
        row("attribute names ignore case",
            u"#EXTINF:-1 TVG-NAME=\"X\" Group-Title=\"G\", \nhttp://s/a",
            {u"X|http://s/a|-|G|-"_s});
        row("unquoted values are not attributes", u"#EXTINF:-1 group-title=News,Chan\nhttp://s/a",
            {u"Chan|http://s/a|-|-|-"_s});
        row("unclosed quote is no value", u"#EXTINF:-1 group-title=\"News,Chan\nhttp://s/a",
            {u"Chan|http://s/a|-|-|-"_s});
        row("blank attribute is no value", u"#EXTINF:-1 group-title=\"  \",C\nhttp://s/a",
            {u"C|http://s/a|-|-|-"_s});
        row("invalid logo is dropped", u"#EXTINF:-1 tvg-logo=\"http://l/a b.png\",C\nhttp://s/a",
            {u"C|http://s/a|-|-|-"_s});
        row("logo is not resolved", u"#EXTINF:-1 tvg-logo=\"logo.png\",C\nchunk/1.m3u8",
            {u"C|http://h/lists/chunk/1.m3u8|logo.png|-|-"_s});
        row("host when the path is empty", u"http://example.com",
            {u"example.com|http://example.com|-|-|-"_s});
        row("root path names itself", u"http://example.com/", {u"/|http://example.com/|-|-|-"_s});
        row("undecodable name falls back to host", u"http://h/%FF", {u"h|http://h/%FF|-|-|-"_s});
        row("Stream when nothing else", u"x-stream:", {u"Stream|x-stream:|-|-|-"_s});
        row("relative lines resolve", u"chunk/1.m3u8\n../live.ts",
            {u"1.m3u8|http://h/lists/chunk/1.m3u8|-|-|-"_s, u"live.ts|http://h/live.ts|-|-|-"_s});
        row("country list", u"#EXTINF:-1 tvg-country=\"us;ca\",C\nhttp://s/a",
            {u"C|http://s/a|-|-|US"_s});
        row("country list with leading separators",
            u"#EXTINF:-1 tvg-country=\";; CA US\",C\nhttp://s/a", {u"C|http://s/a|-|-|CA"_s});
        row("unusable tvg-country uses tvg-id",
            u"#EXTINF:-1 tvg-country=\"USA\" tvg-id=\"foo.fr\",C\nhttp://s/a",
            {u"C|http://s/a|-|-|FR"_s});
        row("unusable tvg-country never uses country",
            u"#EXTINF:-1 tvg-country=\"USA\" country=\"DE\",C\nhttp://s/a",
            {u"C|http://s/a|-|-|-"_s});
        row("id with quality suffix", u"#EXTINF:-1 tvg-id=\"BBCOne.uk@HD\",C\nhttp://s/a",
            {u"C|http://s/a|-|-|UK"_s});
        row("id of two characters", u"#EXTINF:-1 tvg-id=\"de\",C\nhttp://s/a",
            {u"C|http://s/a|-|-|DE"_s});
        row("id without country", u"#EXTINF:-1 tvg-id=\"abc\",C\nhttp://s/a",
            {u"C|http://s/a|-|-|-"_s});
        row("id starting with at-signs", u"#EXTINF:-1 tvg-id=\"@@x.fr@SD\",C\nhttp://s/a",
            {u"C|http://s/a|-|-|FR"_s});
        row("length in characters, not code units",
            u"#EXTINF:-1 tvg-country=\"e\u0301s\",C\nhttp://s/a", {u"C|http://s/a|-|-|E\u0301S"_s});
        row("invalid address keeps the description",
            u"#EXTINF:-1 group-title=\"G\",Named\nhttp://a b/\nhttp://s/ok",
            {u"Named|http://s/ok|-|G|-"_s});
        row("description applies to one address", u"#EXTINF:-1,A\nhttp://s/1\nhttp://s/2",
            {u"A|http://s/1|-|-|-"_s, u"2|http://s/2|-|-|-"_s});
        row("second description replaces the first",
            u"#EXTINF:-1 group-title=\"G1\",First\n#EXTINF:-1,Second\nhttp://s/a",
            {u"Second|http://s/a|-|-|-"_s});
        row("directives between description and address",
            u"#EXTINF:-1,Chan\n#EXTVLCOPT:http-user-agent=X\n#KODIPROP:inputstream=adaptive\n"
            u"#EXTGRP:Kino\nhttp://s/a",
            {u"Chan|http://s/a|-|-|-"_s});
        row("description prefix is case-sensitive", u"#extinf:-1,X\nhttp://s/a",
            {u"a|http://s/a|-|-|-"_s});
        row("bare #EXTINF is a comment", u"#EXTINF\nhttp://s/a", {u"a|http://s/a|-|-|-"_s});
        row("white space around lines", u"   #EXTINF:-1,  Spaced  \t\n\t http://s/a  \n\u3000\n",
            {u"Spaced|http://s/a|-|-|-"_s});
        row("Unicode line separators",
            u"#EXTINF:-1,A\u2028http://s/a\u0085#EXTINF:-1,B\u000bhttp://s/b",
            {u"A|http://s/a|-|-|-"_s, u"B|http://s/b|-|-|-"_s});
        row("header after a byte-order mark", u"\ufeff#EXTM3U\n#EXTINF:-1,A\nhttp://s/a",
            {u"A|http://s/a|-|-|-"_s});
        row("only comments", u"#EXTM3U\n# just a note\n#EXTVLCOPT:x", {});
        row("only descriptions", u"#EXTINF:-1,A\n#EXTINF:-1,B", {});
    }

    void parses()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, expected);
        QCOMPARE(describeAll(PlaylistParser::parse(text.toUtf8(), remoteBase())), expected);
    }

    void readsBytesAsTheirText_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("expected");

        const auto row = [](const char *name, QByteArray bytes, QStringList expected) {
            QTest::newRow(name) << bytes << expected;
        };
        row("UTF-8 names",
            "#EXTINF:-1 group-title=\"\xd0\x9d\xd0\xbe\xd0\xb2\xd0\xbe\xd1\x81\xd1\x82\xd0\xb8\","
            "\xe6\xbc\xa2\xe5\xad\x97 \xf0\x9f\x93\xba\nhttp://s/a",
            {u"\u6f22\u5b57 \U0001F4FA|http://s/a|-|\u041d\u043e\u0432\u043e\u0441\u0442\u0438|-"_s});
        row("one invalid byte makes every line Windows-1252",
            "#EXTINF:-1 group-title=\"K\xc3\xb6ln\",Caf\xe9 \x96 News\nhttp://s/a",
            {u"Caf\u00e9 \u2013 News|http://s/a|-|K\u00c3\u00b6ln|-"_s});
        row("overlong slash is no UTF-8",
            "#EXTINF:-1,A\xc0\xaf"
            "B\nhttp://s/a",
            {u"A\u00c0\u00afB|http://s/a|-|-|-"_s});
        row("truncated sequence at the end", "#EXTINF:-1,\xc3\xa9t\xc3\xa9\nhttp://s/a\n#\xe2\x80",
            {u"\u00c3\u00a9t\u00c3\u00a9|http://s/a|-|-|-"_s});
        row("byte-order mark before the first line", "\xef\xbb\xbfhttp://s/a\n",
            {u"a|http://s/a|-|-|-"_s});
        row("a second one is a character", "\xef\xbb\xbf\xef\xbb\xbfhttp://s/a\nhttp://s/b",
            {u"b|http://s/b|-|-|-"_s});
        row("byte-order marks inside a line stay",
            "#EXTINF:-1,\xef\xbb\xbf\xef\xbb\xbf"
            "A\nhttp://s/a",
            {u"\ufeff\ufeffA|http://s/a|-|-|-"_s});
        row("NUL bytes are characters", QByteArray("#EXTINF:-1,A\0B\nhttp://s/a\0\nhttp://s/b", 37),
            {QString(u"A"_s + QChar(0) + u"B|http://s/b|-|-|-"_s)});
        row("UTF-8 next line, line and paragraph separators break lines",
            "#EXTINF:-1,A\xc2\x85http://s/a\xe2\x80\xa8#EXTINF:-1,B\xe2\x80\xa9http://s/b",
            {u"A|http://s/a|-|-|-"_s, u"B|http://s/b|-|-|-"_s});
        row("their first bytes alone do not",
            "#EXTINF:-1,\xc2\xa9 A \xe2\x80\x94 \xe2\x80\xa6\nhttp://s/a",
            {u"\u00a9 A \u2014 \u2026|http://s/a|-|-|-"_s});
        row("in Windows-1252, 0x85 is an ellipsis",
            "#EXTINF:-1,A\x85"
            "B \xff\nhttp://s/a",
            {u"A\u2026B \u00ff|http://s/a|-|-|-"_s});
        row("Unicode spaces are trimmed",
            "#EXTINF:-1 group-title=\"\xe3\x80\x80G\xc2\xa0\",\xe2\x80\x83N\xe2\x80\xaf\n"
            "\xc2\xa0http://s/a\xe3\x80\x80",
            {u"N|http://s/a|-|G|-"_s});
        row("Windows-1252 no-break spaces are trimmed",
            "#EXTINF:-1,\xa0N\xe9\xa0\n\xa0http://s/a\xa0", {u"N\u00e9|http://s/a|-|-|-"_s});
        row("a non-ASCII byte in an address", "http://s/\xc3\xa9\nhttp://s/\xe9\nhttp://s/b",
            {u"b|http://s/b|-|-|-"_s});
        row("non-ASCII country codes",
            "#EXTINF:-1 tvg-country=\"\xc3\xa9s\",A\nhttp://s/a\n"
            "#EXTINF:-1 tvg-country=\"\xc3\xa9\",B\nhttp://s/b",
            {u"A|http://s/a|-|-|\u00c9S"_s, u"B|http://s/b|-|-|-"_s});
    }

    void readsBytesAsTheirText()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, expected);
        QCOMPARE(describeAll(PlaylistParser::parse(bytes, remoteBase())), expected);
        QCOMPARE(describeAll(parseDecoded(bytes, remoteBase())), expected);
    }

    void readsFilesABlockAtATime_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("count");

        constexpr qsizetype block = PlaylistReader::blockBytes;
        // A comment line of the given length, so that what follows starts there.
        const auto filler = [](qsizetype length) {
            return "#" + QByteArray(length - 2, 'x') + "\n";
        };
        const QByteArray channel = "#EXTINF:-1 group-title=\"G\",Name\nhttp://s/a\n";
        QTest::newRow("description ends a block, its address starts the next")
            << filler(block - 20) + "#EXTINF:-1,Name\r\nhttp://s/after/the/block/boundary\n"
            << 1;
        QTest::newRow("CR LF split by a block boundary")
            << filler(block - 10) + "http://s/a\r\nhttp://s/b\n"
            << 2;
        QTest::newRow("UTF-8 sequences across a block boundary")
            << filler(block - 14) + "#EXTINF:-1,\xc3\xa9\xc3\xa9\xe2\x80\xa8http://s/a\n"
            << 1;
        QTest::newRow("blank lines for two blocks between description and address")
            << "#EXTINF:-1 group-title=\"Held\",Held\n" + QByteArray(2 * block + 5, '\n') +
                   "http://s/a\n"
            << 1;
        QTest::newRow("a line longer than two blocks")
            << "#EXTINF:-1," + QByteArray(2 * block + 7, 'n') + "\nhttp://s/a\n" + channel << 2;
        QTest::newRow("one Windows-1252 byte in the last block decides for all")
            << "#EXTINF:-1,\xc3\xa9\nhttp://s/a\n" + channel.repeated(3 * block / channel.size()) +
                   "#EXTINF:-1,\xe9\nhttp://s/b"
            << int(3 * block / channel.size() + 2);
        // Held whole, a list this large is read in two halves at once; the middle falls inside a
        // long description, whose address must not start the second half.
        const QByteArray keyed = "#EXTINF:-1 tvg-id=\"a.id\" tvg-name=\"A\",Name\nhttp://s/a\n";
        const QByteArray half = keyed.repeated(PlaylistReader::splitBytes / 2 / keyed.size() + 1);
        QTest::newRow("two halves, the middle inside a description")
            << half + "#EXTINF:-1 tvg-id=\"mid\"," + QByteArray(2000, 'm') +
                   "\nhttp://s/middle\n#EXTINF:-1,Orphan\n" + half
            << int(2 * (half.size() / keyed.size()) + 1);
        // A file that large is read in two halves at once as well, each surveyed on its own: what
        // one half finds decides for both, and the text must come out as if read whole.
        const QByteArray named = "#EXTINF:-1 group-title=\"Caf\xc3\xa9\",Caf\xc3\xa9\nhttp://s/c\n";
        const QByteArray namedHalf = named.repeated(PlaylistReader::splitBytes / named.size());
        const int namedCount = int(namedHalf.size() / named.size());
        QTest::newRow("two halves, a Windows-1252 byte in the first only")
            << "#EXTINF:-1,\xe9\nhttp://s/first\n" + namedHalf + namedHalf << 2 * namedCount + 1;
        QTest::newRow("two halves, a NUL byte in the second only")
            << namedHalf + namedHalf + "http://s/last" + QByteArray(1, '\0') + "\n"
            << 0;
        QTest::newRow("two halves after a byte-order mark")
            << "\xef\xbb\xbfhttp://s/first\n" + namedHalf + namedHalf << 2 * namedCount + 1;
        QTest::newRow("a line at the middle too long to find the second half's start")
            << namedHalf + "#" + QByteArray(PlaylistReader::blockBytes / 4, 'x') + "\n" + namedHalf
            << 2 * namedCount;
        QTest::newRow("byte-order mark and no final line break")
            << "\xef\xbb\xbfhttp://s/a\n" + channel.repeated(block / channel.size()) + "http://s/z"
            << int(block / channel.size() + 2);
    }

    void readsFilesABlockAtATime()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, count);
        QTemporaryDir folder;
        const QString path = folder.filePath(u"list.m3u"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        file.close();
        const WebAddress base = WebAddress::fromLocalFile(path);
        const QStringList whole = describeAll(PlaylistReader::read(bytes, base).entries);
        QCOMPARE(whole.size(), count);
        QCOMPARE(describeAll(PlaylistReader::readFile(path).entries), whole);
        const QList<ChannelGuideKey> keys = PlaylistReader::read(bytes, base).guideKeys.toList();
        QCOMPARE(keys.size(), count);
        QCOMPARE(PlaylistReader::readFile(path).guideKeys.toList(), keys);

        // A buffer has no file behind it to read at two places: it is read in one pass, the
        // reference for the parts joined above.
        QBuffer buffer(&bytes);
        QVERIFY(buffer.open(QIODevice::ReadOnly));
        const PlaylistReadResult onePass =
            PlaylistReader::readDevice(buffer, base, PlaylistReader::maximumBytes);
        QCOMPARE(describeAll(onePass.entries), whole);
        QCOMPARE(onePass.guideKeys.toList(), keys);

        // A pipe cannot go back: it is read whole, and gives the same.
        int ends[2];
        QCOMPARE(pipe(ends), 0);
        std::thread writer([&bytes, in = ends[1]] {
            for (qsizetype written = 0; written < bytes.size();) {
                const ssize_t n =
                    ::write(in, bytes.constData() + written, size_t(bytes.size() - written));
                if (n <= 0)
                    break;
                written += n;
            }
            ::close(in);
        });
        QFile piped;
        QVERIFY(piped.open(ends[0], QIODevice::ReadOnly, QFileDevice::AutoCloseHandle));
        QVERIFY(piped.isSequential());
        const PlaylistReadResult fromPipe =
            PlaylistReader::readDevice(piped, base, PlaylistReader::maximumBytes);
        writer.join();
        QCOMPARE(describeAll(fromPipe.entries), whole);
    }

    void readsEveryListOfTheCorpus()
    {
        QStringList files;
        const auto collect = [&files](const QDir &root) {
            QDirIterator found(root.path(), {u"*.m3u"_s, u"*.m3u8"_s}, QDir::Files,
                               QDirIterator::Subdirectories);
            while (found.hasNext())
                files.append(found.next());
        };
        collect(QDir(testData(QString())));
        const qsizetype own = files.size();
        const std::optional<QDir> corpus = extraCorpus();
        if (corpus) {
            collect(*corpus);
            qInfo("%lld lists of the repository and %lld of the corpus at %s", qlonglong(own),
                  qlonglong(files.size() - own), qPrintable(corpus->path()));
        } else {
            qInfo("%lld lists of the repository; no extra corpus named (VELM_EXTRA_PLAYLISTS)",
                  qlonglong(own));
        }
        QVERIFY(own >= 10);

        QSet<QUuid> ids;
        qsizetype total = 0;
        for (const QString &path : std::as_const(files)) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QByteArray bytes = file.readAll();
            const WebAddress base = WebAddress::fromLocalFile(path);
            const QList<PlaylistEntry> entries = PlaylistParser::parse(bytes, base);
            // The bytes read in place give the channels of their decoded text, each under an id of
            // its own.
            QCOMPARE(describeAll(parseDecoded(bytes, base)), describeAll(entries));
            for (const PlaylistEntry &entry : entries) {
                QVERIFY2(!entry.name.isEmpty(), qPrintable(path));
                QCOMPARE(WebAddress::fromText(entry.url.text()), entry.url);
                QCOMPARE(entry.id.version(), QUuid::Random);
                ids.insert(entry.id);
            }
            total += entries.size();
        }
        QCOMPARE(ids.size(), total);
        QVERIFY(total > 5000);
    }

    void readsPlaylistsFromTheWild_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("url");      // one entry to look at
        QTest::addColumn<QString>("expected"); // describe() of that entry, url left out

        QTest::newRow("tab inside an attribute value")
            << u"m3u/iptv-org-history-oddities/us_moveonjoy_tab_in_attr.m3u"_s << 233
            << u"http://fl41.moveonjoy.com/AL_MOBILE_FOX/index.m3u8"_s
            << u"WALA FOX (Mobile AL)|-|-|US"_s;
        QTest::newRow("single-quoted attribute is not an attribute")
            << u"m3u/iptv-org-history-oddities/th_unbalanced_single_quote.m3u"_s << 61
            << u"https://edge6a.v2h-cdn.com/thairathhd/thairathHD.stream/playlist.m3u8"_s
            << u"Thairath TV (720p)|-|-|-"_s;
        QTest::newRow("bare #EXTINF without header")
            << u"m3u/iptv-org-history-oddities/dm_bare_extinf_no_comma.m3u"_s << 1
            << u"https://liveurestreamingcomlive.cdn.ypt.me/62ec67ea435c6.m3u8"_s
            << u"TDN TV (1080p) [Not 24/7]|-|-|DM"_s;
        QTest::newRow("space before the duration")
            << u"m3u/iptv-org-history-oddities/in_space_before_duration.m3u"_s << 365
            << u"http://103.199.161.254/Content/7smusic/Live/Channel(7smusic)/index.m3u8"_s
            << u"7S Music (576p) [Not 24/7]|-|-|IN"_s;
        QTest::newRow("two playlists pasted together")
            << u"m3u/iptv-org-history-oddities/ir_two_extm3u_headers.m3u"_s << 32
            << u"https://tv.iraniancongress.com/stream/tv.m3u8"_s
            << u"National Iranian Congress TV|-|-|IR"_s;
        QTest::newRow("stray text line keeps no description")
            << u"m3u/iptv-org-history-oddities/us_afrolandtv_non_url_line.m3u"_s << 22
            << u"https://stream.ads.ottera.tv/playlist.m3u8?content_livestream=1&network_id=11083"_s
            << u"playlist.m3u8|-|-|-"_s;
        QTest::newRow("lone CR, unquoted attributes, Windows-1252")
            << u"m3u/made/german-cp1252-mixed-breaks.m3u"_s << 10
            << u"https://tv.example/koeln/index.m3u8"_s << u"Stadt K\u00f6ln|-|REGIONAL|-"_s;
        QTest::newRow("no comma: the line is the title")
            << u"m3u/made/german-cp1252-mixed-breaks.m3u"_s << 10
            << u"https://tv.example/kueche.m3u8"_s
            << u"#EXTINF:-1 tvg-name=M\u00fcllers K\u00fcche group-title=\"KOCHEN\"|-|KOCHEN|-"_s;
        QTest::newRow("Windows-1252 letters")
            << u"m3u/made/slovak-cp1252.m3u"_s << 4
            << u"https://tv.example/sk/kosice/playlist.m3u8"_s
            << u"Ko\u0161ice:dnes|http://logos.example/kosice.png|SLOVENSKO|-"_s;
        QTest::newRow("relative playlist addresses")
            << u"m3u/iptv-org-2021-channels/index.m3u"_s << 161
            << QString(WebAddress::fromLocalFile(
                           testData(u"m3u/iptv-org-2021-channels/channels/af.m3u"_s))
                           .text())
            << u"Afghanistan|-|-|-"_s;
        QTest::newRow("peer fixture with a comma in a logo")
            << u"peer-fixtures/iptv-playlist-parser/base.m3u"_s << 6
            << u"http://livestream.htp.tv/hls-live/livepkgr/_definst_/H1/H1_HQ.m3u8"_s
            << u"Mic_.2KNN9OHw1p.png.pagespeed.ce.2KNN9OHw1p.png\" "
               u"tvg-url=\"http://195.154.221.171/epg/"
               u"guide.xml.gz\" tvg-rec=\"3\" group-title=\"Music\",Channel 1 (Tested)|"
               u"http://www.rtvchannel.com.au/wp-content/uploads/2017/04/xshow_08.png,"
               u"Mic_.2KNN9OHw1p.png.pagespeed.ce.2KNN9OHw1p.png|Music|-"_s;
    }

    void readsPlaylistsFromTheWild()
    {
        QFETCH(QString, file);
        QFETCH(int, count);
        QFETCH(QString, url);
        QFETCH(QString, expected);
        const QList<PlaylistEntry> entries = parseTestData(file);
        QCOMPARE(entries.size(), count);
        const PlaylistEntry *entry = findByUrl(entries, url);
        QVERIFY2(entry, qPrintable(url));
        QStringList fields = describe(*entry).split(u'|');
        fields.removeAt(fields.size() - 4); // the url, already matched
        QCOMPARE(fields.join(u'|'), expected);
    }

    void listsFromTheNetworkNameWebLogosOnly_data()
    {
        QTest::addColumn<int>("copies");
        QTest::addColumn<bool>("onePass");
        QTest::newRow("short list") << 1 << false;
        QTest::newRow("list read in two halves") << 2 << false;
        QTest::newRow("list read in one pass from a device") << 2 << true;
    }

    void listsFromTheNetworkNameWebLogosOnly()
    {
        QFETCH(int, copies);
        QFETCH(bool, onePass);
        const QByteArray logos = "#EXTINF:-1 tvg-logo=\"file:///dev/zero\",A\nhttp://s/a\n"
                                 "#EXTINF:-1 tvg-logo=\"HTTPS://l/b.png\",B\nhttp://s/b\n"
                                 "#EXTINF:-1 tvg-logo=\"logo.png\",C\nhttp://s/c\n";
        const QByteArray plain = "#EXTINF:-1,Plain\nhttp://s/plain\n";
        // The logos at the start and, for a list long enough to be cut, again in its second half.
        QByteArray text = logos;
        for (int copy = 1; copy < copies; ++copy)
            text += plain.repeated(PlaylistReader::splitBytes / plain.size()) + logos;
        const auto logosOf = [&](const WebAddress &base) {
            QBuffer buffer(&text);
            const PlaylistReadResult result =
                onePass && buffer.open(QIODevice::ReadOnly)
                    ? PlaylistReader::readDevice(buffer, base, PlaylistReader::maximumBytes)
                    : PlaylistReader::read(text, base);
            QStringList found;
            for (const PlaylistEntry &entry : result.entries) {
                if (entry.name != u"Plain")
                    found.append(entry.logoURL ? entry.logoURL->text() : u"-"_s);
            }
            return found;
        };
        QStringList webOnly;
        QStringList all;
        for (int copy = 0; copy < copies; ++copy) {
            webOnly << u"-"_s << u"HTTPS://l/b.png"_s << u"-"_s;
            all << u"file:///dev/zero"_s << u"HTTPS://l/b.png"_s << u"logo.png"_s;
        }
        QCOMPARE(logosOf(remoteBase()), webOnly);
        QCOMPARE(logosOf(WebAddress::fromLocalFile(u"/srv/lists/list.m3u"_s)), all);
    }

    void survivesHostileInput_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("count");

        const QByteArray longName(50 * 1024 * 1024, 'x');
        QTest::newRow("50 MB description line")
            << ("#EXTINF:-1 tvg-name=\"" + longName + "\nhttp://s/a") << 1;
        QTest::newRow("50 MB address line") << ("http://s/" + longName) << 1;
        QTest::newRow("50 MB of one attribute name")
            << ("#EXTINF:-1 " + QByteArray("tvg-logo").repeated(6 * 1024 * 1024) + "\nhttp://s/a")
            << 1;
        QTest::newRow("50 MB of line separators")
            << QByteArray("\xe2\x80\xa8").repeated(17 * 1024 * 1024) + "http://s/a" << 1;
        QTest::newRow("a million descriptions without addresses")
            << QByteArray("#EXTINF:-1 tvg-id=\"x.us\" group-title=\"G\",Name\n").repeated(1000000)
            << 0;
        QTest::newRow("a million blank lines") << QByteArray(" \t\r\n").repeated(1000000) << 0;
        QTest::newRow("unclosed quotes everywhere")
            << QByteArray("#EXTINF:-1 tvg-name=\"a tvg-logo=\"b group-title=\"c\nhttp://s/a\n")
                   .repeated(100000)
            << 100000;
    }

    void survivesHostileInput()
    {
        QFETCH(QByteArray, text);
        QFETCH(int, count);
        QCOMPARE(PlaylistParser::parse(text, remoteBase()).size(), count);
    }
};

QTEST_APPLESS_MAIN(tst_PlaylistParser)
#include "tst_PlaylistParser.moc"
