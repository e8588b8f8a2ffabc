#include "Playlist/GuideAddresses.h"
#include "Playlist/GuideReader.h"
#include "Playlist/GuideSchedule.h"
#include "Playlist/InflatingDevice.h"
#include "Playlist/PlaylistReader.h"
#include "Playlist/XmltvTime.h"

#include <QBuffer>
#include <QDateTime>
#include <QStringEncoder>
#include <QTest>

#include <zlib.h>

using namespace Qt::StringLiterals;

namespace {

qint64 utc(const char *iso)
{
    return QDateTime::fromString(QString::fromLatin1(iso), Qt::ISODate).toMSecsSinceEpoch();
}

// A guide of the shape public guides have: channels first, then programmes.
const QByteArray guide = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE tv SYSTEM "xmltv.dtd">
<tv generator-info-name="test">
  <channel id="bbc1.uk"><display-name lang="en">BBC One</display-name><icon src="x.png"/></channel>
  <channel id="arte.de"><display-name>Arte</display-name><display-name>ARTE HD</display-name></channel>
  <channel id="rai1.it"><display-name>Rai 1</display-name></channel>
  <channel id="other"><display-name>Somewhere Else</display-name></channel>
  <programme start="20261123060000 +0000" stop="20261123070000 +0000" channel="bbc1.uk"><title>Ended Before</title></programme>
  <programme start="20261123180000 +0000" stop="20261123190000 +0000" channel="BBC1.UK">
    <title lang="en">News</title><sub-title>Evening</sub-title><desc>What happened.</desc>
    <credits><presenter>Someone</presenter></credits><category>News</category><category>Talk</category>
  </programme>
  <programme start="20261123190000 +0000" stop="20261124010000 +0000" channel="bbc1.uk"><title>Across Midnight</title></programme>
  <programme start="20261125120000 +0000" stop="20261125130000 +0000" channel="bbc1.uk"><title>After The Window</title></programme>
  <programme start="20261123193000 +0100" channel="arte.de"><title>Open End</title></programme>
  <programme start="20261123200000 +0100" stop="20261123210000 +0100" channel="arte.de"><title>Documentary</title></programme>
  <programme start="20261123210000 +0100" channel="arte.de"><title>Last Without Stop</title></programme>
  <programme start="2026-11-23" stop="20261123210000 +0100" channel="arte.de"><title>Wrong Date</title></programme>
  <programme start="20261123180000 +0000" stop="20261123190000 +0000" channel="rai1.it"><title>Rai By Name</title></programme>
  <programme start="20261123180000 +0000" stop="20261123190000 +0000" channel="undeclared.fr"><title>Undeclared</title></programme>
  <programme start="20261123180000 +0000" stop="20261123190000 +0000" channel="nobody"><title>Unknown Channel</title></programme>
  <programme start="20261123180000 +0000" stop="20261123190000 +0000" channel="other"><title>Elsewhere</title></programme>
</tv>
)";

// Now 2026-11-23 18:30 UTC: the window runs from 15:30 to 36 hours on.
const qint64 now = utc("2026-11-23T18:30:00Z");

// The bytes as one gzip member, as guides are served.
QByteArray gzipped(const QByteArray &bytes)
{
    z_stream stream{};
    deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    QByteArray out(int(deflateBound(&stream, uLong(bytes.size()))), Qt::Uninitialized);
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(bytes.constData()));
    stream.avail_in = uInt(bytes.size());
    stream.next_out = reinterpret_cast<Bytef *>(out.data());
    stream.avail_out = uInt(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(qsizetype(stream.total_out));
    deflateEnd(&stream);
    return out;
}

GuideReader::Result read(const QByteArray &bytes, const QList<GuideReader::Channel> &channels,
                         qint64 maxSize = 1 << 20)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    InflatingDevice inflated(buffer, maxSize);
    inflated.open(QIODevice::ReadOnly);
    return GuideReader(channels, now - 3 * 3600'000LL, now + 36 * 3600'000LL).read(inflated);
}

QStringList titles(const QList<GuideProgramme> &programmes)
{
    QStringList result;
    for (const GuideProgramme &programme : programmes)
        result.append(programme.title);
    return result;
}

} // namespace

class tst_ProgrammeGuide : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsGuideTimes_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<qint64>("expected"); // 0: no time

        QTest::newRow("offset east") << "20261123193000 +0100"_ba << utc("2026-11-23T18:30:00Z");
        QTest::newRow("offset west, half hour")
            << "20261123193000 -0530"_ba << utc("2026-11-24T01:00:00Z");
        QTest::newRow("no offset is UTC") << "20261123193000"_ba << utc("2026-11-23T19:30:00Z");
        QTest::newRow("Z") << "20261123193000 Z"_ba << utc("2026-11-23T19:30:00Z");
        QTest::newRow("no space, colon")
            << "20261123193000+01:00"_ba << utc("2026-11-23T18:30:00Z");
        QTest::newRow("no seconds") << "202611231930 +0000"_ba << utc("2026-11-23T19:30:00Z");
        QTest::newRow("date only") << "20261123"_ba << utc("2026-11-23T00:00:00Z");
        QTest::newRow("into the next year")
            << "20261231233000 -0100"_ba << utc("2027-01-01T00:30:00Z");
        QTest::newRow("29 February") << "20280229120000 +0000"_ba << utc("2028-02-29T12:00:00Z");
        // The night European clocks go forward: 01:30 CET and 03:30 CEST are an hour apart.
        QTest::newRow("before summer time")
            << "20260329013000 +0100"_ba << utc("2026-03-29T00:30:00Z");
        QTest::newRow("after summer time")
            << "20260329033000 +0200"_ba << utc("2026-03-29T01:30:00Z");
        for (const char *wrong :
             {"", "2026-11-23 19:30", "20261323193000 +0000", "20261123253000", "20260230120000",
              "2026112319300 +0000", "abcd1123193000", "20261123193000 +2500", "20261123193000 CET",
              "20261123193000 +01"})
            QTest::addRow("wrong: \"%s\"", wrong) << QByteArray(wrong) << qint64(0);
    }

    void readsGuideTimes()
    {
        QFETCH(QByteArray, text);
        QFETCH(qint64, expected);
        QCOMPARE(XmltvTime::parse(text).value_or(0), expected);
    }

    void findsTheGuidesAPlaylistNames_data()
    {
        QTest::addColumn<QByteArray>("playlist");
        QTest::addColumn<QStringList>("expected");

        QTest::newRow("a list, as public lists write it")
            << "#EXTM3U x-tvg-url=\"https://a/guide.xml.gz, https://b/epg.xml\"\n#EXTINF:-1,A\nhttp://a/1\n"_ba
            << QStringList{u"https://a/guide.xml.gz"_s, u"https://b/epg.xml"_s};
        QTest::newRow("the other spelling, and both, in the order written")
            << "#EXTM3U url-tvg=\"https://b/epg.xml\" tvg-shift=\"0\" X-TVG-URL=\"https://a/g.xml\"\n"_ba
            << QStringList{u"https://b/epg.xml"_s, u"https://a/g.xml"_s};
        QTest::newRow("relative, resolved like channel lines")
            << "#EXTM3U x-tvg-url=\"guide.xml,../epg/all.xml.gz\"\r\n"_ba
            << QStringList{u"http://lists.example/tv/guide.xml"_s,
                           u"http://lists.example/epg/all.xml.gz"_s};
        QTest::newRow("each once, blanks and bad ones left out")
            << "\xEF\xBB\xBF\n#EXTM3U x-tvg-url=\"https://a/g.xml, ,https://a/g.xml,http://bad host/\"\n"_ba
            << QStringList{u"https://a/g.xml"_s};
        QTest::newRow("a longer name that ends the same")
            << "#EXTM3U my-x-tvg-url=\"https://a/g.xml\"\n"_ba << QStringList{};
        QTest::newRow("no closing quote")
            << "#EXTM3U x-tvg-url=\"https://a/g.xml\n"_ba << QStringList{};
        QTest::newRow("not in the header")
            << "#EXTINF:-1 x-tvg-url=\"https://a/g.xml\",A\nhttp://a/1\n"_ba << QStringList{};
    }

    void findsTheGuidesAPlaylistNames()
    {
        QFETCH(QByteArray, playlist);
        QFETCH(QStringList, expected);
        const WebAddress base = *WebAddress::fromText(u"http://lists.example/tv/list.m3u"_s);
        QStringList found;
        for (const WebAddress &address : GuideAddresses::fromPlaylist(playlist, base))
            found.append(address.text());
        QCOMPARE(found, expected);
    }

    void keepsWhatTheListCanShow()
    {
        const GuideReader::Result result =
            read(guide, {{u"BBC1.UK"_s, {}, u"BBC One HD"_s},
                         {{}, u"ARTE HD"_s, u"Arte Deutschland"_s},
                         {{}, {}, u"rai 1"_s},
                         {u"undeclared.fr"_s, {}, u"Undeclared FR"_s},
                         // An id the guide does not know: the name decides.
                         {u"missing.id"_s, {}, u"Somewhere Else"_s},
                         // An id the guide knows: the name that another guide channel has does not
                         // count.
                         {u"rai1.it"_s, {}, u"Somewhere Else"_s},
                         {u"nothing"_s, {}, u"Not In The Guide"_s}});
        QVERIFY(result.complete);
        QCOMPARE(result.programmes.size(), 7);
        QCOMPARE(titles(result.programmes[0]), QStringList({u"News"_s, u"Across Midnight"_s}));
        const GuideProgramme &news = result.programmes[0][0];
        QCOMPARE(news.subTitle, u"Evening"_s);
        QCOMPARE(news.description, u"What happened."_s);
        QCOMPARE(news.category, u"News"_s);
        QVERIFY(news.isOnAt(now));
        QCOMPARE(result.programmes[0][1].stop, utc("2026-11-24T01:00:00Z"));
        // Without a stop a programme runs to the next one; the last one has no known end.
        QCOMPARE(titles(result.programmes[1]), QStringList({u"Open End"_s, u"Documentary"_s}));
        QCOMPARE(result.programmes[1][0].stop, utc("2026-11-23T19:00:00Z"));
        QCOMPARE(titles(result.programmes[2]), QStringList({u"Rai By Name"_s}));
        QCOMPARE(titles(result.programmes[3]), QStringList({u"Undeclared"_s}));
        QCOMPARE(titles(result.programmes[4]), QStringList({u"Elsewhere"_s}));
        QCOMPARE(titles(result.programmes[5]), QStringList({u"Rai By Name"_s}));
        QVERIFY(result.programmes[6].isEmpty());
    }

    void schedulesAPlaylistFromItsGuides()
    {
        // The channels as a playlist names them, matched through the keys the reader keeps; a
        // list from the network names no local guide.
        const PlaylistReadResult list = PlaylistReader::read(
            "\xef\xbb\xbf#EXTM3U "
            "url-tvg=\"epg/a.xml.gz,file:///dev/zero,https://b.example/b.xml\"\n"
            "#EXTINF:-1 tvg-id=\"BBC1.UK\" tvg-name=\"BBC\",BBC One HD\nhttp://s/bbc\n"
            "#EXTINF:-1 tvg-name=\"ARTE HD\",Arte\nhttp://s/arte\n"
            "#EXTINF:-1 tvg-id=\"later.fr\",Later\nhttp://s/later\n"
            "http://s/plain\n",
            *WebAddress::fromText(u"http://h/lists/tv.m3u"));
        QCOMPARE(list.guideAddresses,
                 (QList<WebAddress>{*WebAddress::fromText(u"http://h/lists/epg/a.xml.gz"),
                                    *WebAddress::fromText(u"https://b.example/b.xml")}));
        QCOMPARE(list.guideKeys.toList(),
                 (QList<ChannelGuideKey>{
                     {u"BBC1.UK"_s, u"BBC"_s}, {{}, u"ARTE HD"_s}, {u"later.fr"_s, {}}, {}}));
        QList<GuideReader::Channel> channels;
        for (qsizetype i = 0; i < list.entries.size(); ++i)
            channels.append(
                {list.guideKeys.at(i).tvgID, list.guideKeys.at(i).tvgName, list.entries[i].name});
        // The second guide fills only the channel the first left empty.
        const QByteArray second =
            R"(<tv><programme start="20261123180000 +0000" stop="20261123190000 +0000" channel="later.fr"><title>From B</title></programme>
<programme start="20261123180000 +0000" stop="20261123200000 +0000" channel="bbc1.uk"><title>Not Taken</title></programme></tv>)";
        GuideSchedule schedule(list.entries);
        schedule.addGuide(read(guide, channels).programmes);
        schedule.addGuide(read(second, channels).programmes);
        const QUuid bbc = list.entries[0].id, arte = list.entries[1].id, later = list.entries[2].id;
        QCOMPARE(schedule.onAt(bbc, now)->title, u"News"_s);
        QCOMPARE(schedule.nextAfter(bbc, now)->title, u"Across Midnight"_s);
        // At a boundary the next programme is on; the one ending there is over.
        QCOMPARE(schedule.onAt(bbc, utc("2026-11-23T19:00:00Z"))->title, u"Across Midnight"_s);
        QCOMPARE(schedule.onAt(later, now)->title, u"From B"_s);
        QCOMPARE(titles(schedule.between(arte, now, utc("2026-11-23T20:30:00Z"))),
                 QStringList({u"Open End"_s, u"Documentary"_s}));
        QVERIFY(!schedule.onAt(arte, utc("2026-11-23T21:00:00Z")));
        QVERIFY(!schedule.hasProgrammes(list.entries[3].id));
        QCOMPARE(schedule.nextChangeAfter(now), utc("2026-11-23T19:00:00Z"));
        QCOMPARE(schedule.nextChangeAfter(utc("2026-11-24T01:00:00Z")), std::nullopt);

        // Let go of a step at a time: a copy that shares the programmes only drops them, leaving
        // the other whole; held alone, whole channels go until none is left.
        GuideSchedule copy = schedule;
        QVERIFY(!copy.freeProgrammes(1));
        QVERIFY(copy.isEmpty());
        QCOMPARE(schedule.onAt(bbc, now)->title, u"News"_s);
        QCOMPARE(schedule.channelCount(), 3);
        QVERIFY(schedule.freeProgrammes(1));
        QCOMPARE(schedule.channelCount(), 2);
        QVERIFY(!schedule.freeProgrammes(100));
        QVERIFY(schedule.isEmpty());
    }

    void keepsWhatCameBeforeAFault_data()
    {
        QTest::addColumn<QByteArray>("xml");
        QTest::addColumn<QStringList>("kept");
        QTest::addColumn<bool>("complete");

        const QByteArray start = guide.left(guide.indexOf("<programme start=\"20261123190000"));
        QTest::newRow("cut short")
            << start + "<programme start=\"2026" << QStringList{u"News"_s} << false;
        QTest::newRow("malformed further on")
            << start + "<programme channel=\"bbc1.uk\" start=\"20261123190000\" <title>" +
                   guide.sliced(guide.indexOf("<programme start=\"20261123190000"))
            << QStringList{u"News"_s} << false;
        QTest::newRow("a description of pages, cut")
            << start +
                   "<programme start=\"20261123190000 +0000\" stop=\"20261123200000 +0000\" "
                   "channel=\"bbc1.uk\"><title>Long</title><desc>" +
                   QByteArray(5000, 'x') + "</desc></programme></tv>"
            << QStringList{u"News"_s, u"Long"_s} << true;
        QTest::newRow("not a guide")
            << "<html><body>Not found</body></html>"_ba << QStringList{} << true;
        QTest::newRow("not XML") << "\x1f\x8b\x08\x00 binary"_ba << QStringList{} << false;
    }

    void keepsWhatCameBeforeAFault()
    {
        QFETCH(QByteArray, xml);
        QFETCH(QStringList, kept);
        QFETCH(bool, complete);
        const GuideReader::Result result = read(xml, {{u"bbc1.uk"_s, {}, {}}});
        QCOMPARE(result.complete, complete);
        QCOMPARE(result.error.isEmpty(), complete);
        QCOMPARE(titles(result.programmes.value(0)), kept);
        for (const GuideProgramme &programme : result.programmes.value(0))
            QVERIFY(programme.description.size() <= GuideReader::maxDescriptionLength);
    }

    void readsTheEncodingAGuideDeclares_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("title"); // empty: the guide cannot be read

        const auto guideIn = [](const QByteArray &declaration, const QByteArray &title) {
            return declaration +
                   "<tv><programme start=\"20261123180000 +0000\" stop=\"20261123190000 +0000\" "
                   "channel=\"bbc1.uk\"><title>" +
                   title + "</title></programme></tv>";
        };
        QTest::newRow("windows-1252")
            << guideIn("<?xml version=\"1.0\" encoding=\"windows-1252\"?>", "Caf\xE9 \x80 5")
            << u"Caf\u00E9 \u20AC 5"_s;
        QTest::newRow("ISO-8859-1")
            << guideIn("<?xml version='1.0' encoding='ISO-8859-1'?>", "Caf\xE9 \x80 5")
            << u"Caf\u00E9 \u0080 5"_s;
        QTest::newRow("UTF-8 with a byte order mark")
            << guideIn("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>", "Caf\xC3\xA9")
            << u"Caf\u00E9"_s;
        QStringEncoder toUtf16(QStringConverter::Utf16LE, QStringEncoder::Flag::WriteBom);
        QTest::newRow("UTF-16") << QByteArray(toUtf16(QString::fromUtf8(
                                       guideIn("<?xml version=\"1.0\" encoding=\"UTF-16\"?>",
                                               "\xE7\x95\xAA\xE7\xB5\x84"))))
                                << u"\u756A\u7D44"_s;
        // Two bytes a character, and the 51st split between the first two blocks of 256 KiB.
        const QByteArray declaration = "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>";
        const qsizetype titleAt = guideIn(declaration, {}).indexOf("</title>");
        const QByteArray padding(256 * 1024 - 101 - titleAt, ' ');
        QByteArray shiftJis;
        for (int i = 0; i < 60; ++i)
            shiftJis += "\x94\xD4\x91\x67";
        QTest::newRow("Shift_JIS, across blocks")
            << guideIn(declaration + padding, shiftJis) << QString(u"\u756A\u7D44"_s).repeated(60);
        // A stray byte is one character the less, not the end of the guide; the block it is in
        // ends inside a character, which stays whole.
        const QByteArray utf8 = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
        QTest::newRow("UTF-8 with a stray byte") << guideIn(utf8, "Caf\xE9 5") << u"Caf\uFFFD 5"_s;
        const QByteArray stray =
            guideIn(utf8 + QByteArray(256 * 1024 - 62 - guideIn(utf8, {}).indexOf("</title>"), ' '),
                    "\xE9" + QByteArray("\xC3\xA9").repeated(60));
        QTest::newRow("UTF-8 with a stray byte, a character across blocks")
            << stray << u"\uFFFD"_s + QString(u"\u00E9"_s).repeated(60);
        QTest::newRow("an encoding nobody knows")
            << guideIn("<?xml version=\"1.0\" encoding=\"x-no-such\"?>", "A") << QString();
    }

    void readsTheEncodingAGuideDeclares()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, title);
        const GuideReader::Result result = read(bytes, {{u"bbc1.uk"_s, {}, {}}});
        QCOMPARE(titles(result.programmes.value(0)),
                 title.isEmpty() ? QStringList() : QStringList{title});
        QCOMPARE(result.complete, !title.isEmpty());
        QCOMPARE(result.error.isEmpty(), !title.isEmpty());
    }

    void readsCompressedGuides_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("kept");
        QTest::addColumn<bool>("complete");

        const QByteArray whole = gzipped(guide);
        QTest::newRow("plain") << guide << 2 << true;
        QTest::newRow("gzip") << whole << 2 << true;
        const qsizetype half = guide.indexOf("<programme start=\"20261123190000");
        QTest::newRow("two gzip members")
            << gzipped(guide.left(half)) + gzipped(guide.sliced(half)) << 2 << true;
        QTest::newRow("gzip, padded with zeros") << whole + QByteArray(512, '\0') << 2 << true;
        QTest::newRow("gzip, cut short")
            << gzipped(guide.left(half)) + gzipped(guide.sliced(half)).left(40) << 1 << false;
        // A few kilobytes that would inflate past the limit: stopped there.
        QTest::newRow("inflates too far")
            << gzipped(guide.left(half) + QByteArray(8 << 20, ' ') + guide.sliced(half)) << 1
            << false;
    }

    void readsCompressedGuides()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, kept);
        QFETCH(bool, complete);
        const GuideReader::Result result = read(bytes, {{u"bbc1.uk"_s, {}, {}}});
        QCOMPARE(result.programmes.value(0).size(), kept);
        QCOMPARE(result.complete, complete);
    }
};

QTEST_APPLESS_MAIN(tst_ProgrammeGuide)
#include "tst_ProgrammeGuide.moc"
