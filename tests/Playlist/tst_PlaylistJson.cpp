#include "Playlist/PlaylistJson.h"
#include "Playlist/PlaylistParser.h"

#include "TestData.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

PlaylistEntry fullEntry()
{
    return {QUuid::fromString(u"e621e1f8-c36c-495a-93fc-0c247a3e6e5f"),
            u"Say \"Hi\" / \U0001F642\n\u0001"_s,
            *WebAddress::fromText(u"https://h/p?q=1"),
            WebAddress::fromText(u"file:///l/x.png"),
            u"News"_s,
            u"GB"_s};
}

PlaylistEntry minimalEntry()
{
    return {QUuid::fromString(u"00000000-0000-4000-8000-00000000000A"),
            u"B"_s,
            *WebAddress::fromText(u"http://b"),
            {},
            {},
            {}};
}

} // namespace

class tst_PlaylistJson : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesTheStoredBytes()
    {
        const QByteArray expected =
            "[{\"id\":\"E621E1F8-C36C-495A-93FC-0C247A3E6E5F\","
            "\"name\":\"Say \\\"Hi\\\" \\/ \xF0\x9F\x99\x82\\n\\u0001\","
            "\"url\":\"https:\\/\\/h\\/p?q=1\",\"logoURL\":\"file:\\/\\/\\/l\\/x.png\","
            "\"groupTitle\":\"News\",\"countryCode\":\"GB\"},"
            "{\"id\":\"00000000-0000-4000-8000-00000000000A\",\"name\":\"B\",\"url\":\"http:\\/\\/"
            "b\"}]";
        QCOMPARE(PlaylistJson::encode(QList<PlaylistEntry>{fullEntry(), minimalEntry()}), expected);
        QCOMPARE(PlaylistJson::encode(QList<PlaylistEntry>{}), QByteArray("[]"));
    }

    void roundTripsRealPlaylists()
    {
        const QString file = u"m3u/iptv-org-2021-channels/us.m3u"_s;
        const QList<PlaylistEntry> entries =
            PlaylistParser::parse(readTestData(file), WebAddress::fromLocalFile(testData(file)));
        QVERIFY(entries.size() > 3000);
        const std::optional<QList<PlaylistEntry>> decoded =
            PlaylistJson::decodeList(PlaylistJson::encode(entries));
        QVERIFY(decoded);
        QCOMPARE(*decoded, entries);
        // Names of every kind of text come back as they were, whatever the socket or a file gave.
        QList<PlaylistEntry> edgeEntries{fullEntry(), minimalEntry()};
        for (const QString &name :
             {u"\ufeffLeading mark"_s, u"\ufeff\ufeffTwo marks"_s,
              QString(u"lone "_s + QChar(0xD800)), QString(QChar(0xDC00) + u" low first"_s),
              u"pair \U0001F600 and \u2028 separator"_s}) {
            edgeEntries.append(minimalEntry());
            edgeEntries.last().name = name;
            edgeEntries.last().groupTitle = name;
            // Alone too: a list in the written form is read by the fast reader, not Qt's.
            const QList<PlaylistEntry> alone{edgeEntries.last()};
            QVERIFY2(PlaylistJson::decodeList(PlaylistJson::encode(alone)) == alone,
                     PlaylistJson::encode(alone).constData());
        }
        QCOMPARE(PlaylistJson::decodeList(PlaylistJson::encode(edgeEntries)), edgeEntries);
    }

    void decodesStrictly_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<int>("count"); // -1: the whole list is rejected

        const QByteArray id = "\"id\":\"E621E1F8-C36C-495A-93FC-0C247A3E6E5F\"";
        const QByteArray minimal = "{" + id + ",\"name\":\"A\",\"url\":\"http:\\/\\/a\"";
        const auto list = [&](const QByteArray &extra) { return "[" + minimal + extra + "}]"; };
        QTest::newRow("minimal") << list("") << 1;
        QTest::newRow("empty list") << QByteArray("[]") << 0;
        QTest::newRow("unknown key ignored") << list(",\"rating\":5") << 1;
        QTest::newRow("null optional is absent")
            << list(",\"logoURL\":null,\"groupTitle\":null") << 1;
        QTest::newRow("lower-case id")
            << QByteArray("[{\"id\":\"e621e1f8-c36c-495a-93fc-0c247a3e6e5f\","
                          "\"name\":\"A\",\"url\":\"a\"}]")
            << 1;
        QTest::newRow("missing id") << QByteArray("[{\"name\":\"A\",\"url\":\"http://a\"}]") << -1;
        QTest::newRow("missing url") << QByteArray("[{" + id + ",\"name\":\"A\"}]") << -1;
        QTest::newRow("id not a UUID")
            << QByteArray("[{\"id\":\"xyz\",\"name\":\"A\",\"url\":\"a\"}]") << -1;
        QTest::newRow("id in braces")
            << QByteArray("[{\"id\":\"{E621E1F8-C36C-495A-93FC-0C247A3E6E5F}\",\"name\":\"A\","
                          "\"url\":\"a\"}]")
            << -1;
        QTest::newRow("invalid url")
            << QByteArray("[{" + id + ",\"name\":\"A\",\"url\":\"http://a b\"}]") << -1;
        QTest::newRow("logo of the wrong kind") << list(",\"logoURL\":5") << -1;
        QTest::newRow("invalid logo") << list(",\"logoURL\":\"a b\"") << -1;
        QTest::newRow("country of the wrong kind") << list(",\"countryCode\":true") << -1;
        QTest::newRow("one bad record spoils the list")
            << ("[" + minimal + "}," + "{\"name\":\"B\"}]") << -1;
        QTest::newRow("element not an object") << QByteArray("[1]") << -1;
        QTest::newRow("damaged") << list("").chopped(1) << -1;
        // The forms a hand or another tool may give, read alike by both readers.
        QTest::newRow("white space between tokens")
            << QByteArray("\n[ {\t" + id + " ,\r\n \"name\" : \"A\" , \"url\":\"a\" } ]\n") << 1;
        QTest::newRow("escapes")
            << list(",\"groupTitle\":\"\\u00e9\\ud83d\\ude00\\n\\\"\\\\\\/\\b\\f\\r\\t\"") << 1;
        QTest::newRow("duplicate key") << list(",\"name\":\"B\"") << 1;
        QTest::newRow("empty object") << QByteArray("[{}]") << -1;
        QTest::newRow("byte-order mark first") << "\xEF\xBB\xBF" + list("") << -1;
        QTest::newRow("invalid UTF-8 in a name") << list(",\"groupTitle\":\"\xC3\x28\"") << -1;
        // Qt's reader lets these two pass; so does the store.
        QTest::newRow("control character in a name") << list(",\"groupTitle\":\"a\x01\"") << 1;
        QTest::newRow("text after the array") << list("") + " x" << -1;
        QTest::newRow("two arrays") << list("") + list("") << -1;
        QTest::newRow("unknown escape") << list(",\"groupTitle\":\"\\x41\"") << 1;
        QTest::newRow("short unicode escape") << list(",\"groupTitle\":\"\\u00\"") << -1;
    }

    void decodesStrictly()
    {
        QFETCH(QByteArray, json);
        QFETCH(int, count);
        const std::optional<QList<PlaylistEntry>> decoded = PlaylistJson::decodeList(json);
        QCOMPARE(decoded ? int(decoded->size()) : -1, count);
        QCOMPARE(decoded, PlaylistJson::decodeDocument(json));
    }
};

QTEST_APPLESS_MAIN(tst_PlaylistJson)
#include "tst_PlaylistJson.moc"
