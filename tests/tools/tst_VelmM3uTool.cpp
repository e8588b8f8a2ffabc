#include "Playlist/PlaylistJson.h"

#include "ProcessRunner.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

ProcessResult tool(const QStringList &arguments, const QByteArray &input = {})
{
    return runProcess(QStringLiteral(VELM_M3U_TOOL), arguments, input);
}

QStringList namesAndUrls(const QByteArray &json)
{
    const std::optional<QList<PlaylistEntry>> entries = PlaylistJson::decodeList(json.trimmed());
    QStringList lines;
    for (const PlaylistEntry &entry : entries.value_or(QList<PlaylistEntry>{}))
        lines.append(entry.name + u' ' + entry.url.text());
    return lines;
}

} // namespace

class tst_VelmM3uTool : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }

    void parsesFilesRelativeToThemselves()
    {
        const QString path =
            write(u"my list.m3u"_s, "#EXTM3U\r\n#EXTINF:-1 group-title=\"Caf\xe9\",Caf\xe9 TV\r\n"
                                    "chunks/1.m3u8\r\nhttp://s/live.ts\r\n");
        const ProcessResult result = tool({u"parse"_s, path});
        QVERIFY(result.finished);
        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.err.isEmpty());
        const QString folder = WebAddress::fromLocalFile(m_dir->path()).text();
        QCOMPARE(namesAndUrls(result.out),
                 (QStringList{u"Caf\u00e9 TV "_s + folder + u"/chunks/1.m3u8"_s,
                              u"live.ts http://s/live.ts"_s}));
        QVERIFY(result.out.contains("\"groupTitle\":\"Caf\xc3\xa9\"")); // Latin-1 in, UTF-8 out
    }

    void parsesStandardInputAgainstBase()
    {
        const ProcessResult result =
            tool({u"parse"_s, u"-"_s, u"--base"_s, u"https://h/p/list.m3u"_s},
                 "#EXTINF:-1,A\n../a.ts\n");
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(namesAndUrls(result.out), QStringList{u"A https://h/a.ts"_s});
    }

    void reportsUnusableInput_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QByteArray>("message");

        QTest::newRow("no entries") << QStringList{u"parse"_s, u"<empty>"_s} << QByteArray() << 3
                                    << QByteArray("No playable address was found in the playlist.");
        QTest::newRow("missing file") << QStringList{u"parse"_s, u"<missing>"_s} << QByteArray()
                                      << 2 << QByteArray("cannot read");
        QTest::newRow("folder") << QStringList{u"parse"_s, u"<folder>"_s} << QByteArray() << 2
                                << QByteArray("is a directory");
        QTest::newRow("standard input without base")
            << QStringList{u"parse"_s, u"-"_s} << QByteArray("x") << 2
            << QByteArray("needs --base");
        QTest::newRow("relative base") << QStringList{u"parse"_s, u"-"_s, u"--base"_s, u"a/b"_s}
                                       << QByteArray("x") << 2 << QByteArray("no absolute address");
        QTest::newRow("not text") << QStringList{u"parse"_s, u"-"_s, u"--base"_s, u"http://h/"_s}
                                  << QByteArray("\x1F\x8B\x08\x00http://h/a.ts\n", 17) << 2
                                  << QByteArray("This file is not an M3U playlist.");
        QTest::newRow("guide without channels") << QStringList{u"guide"_s, u"<guide>"_s}
                                                << QByteArray() << 2 << QByteArray("CHANNEL_ID");
        QTest::newRow("guide cut short") << QStringList{u"guide"_s, u"<cut guide>"_s, u"a"_s}
                                         << QByteArray() << 2 << QByteArray("the guide broke off");
        QTest::newRow("unknown command") << QStringList{u"frobnicate"_s} << QByteArray() << 2
                                         << QByteArray("unknown command: frobnicate");
    }

    void reportsUnusableInput()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, input);
        QFETCH(int, exitCode);
        QFETCH(QByteArray, message);
        const QString empty = write(u"empty.m3u"_s, "#EXTM3U\n#EXTINF:-1,Nothing after me\n");
        arguments.replaceInStrings(u"<empty>"_s, empty);
        arguments.replaceInStrings(u"<missing>"_s, m_dir->filePath(u"missing.m3u"_s));
        arguments.replaceInStrings(u"<folder>"_s, m_dir->path());
        arguments.replaceInStrings(u"<guide>"_s, write(u"guide.xml"_s, "<tv></tv>"));
        arguments.replaceInStrings(u"<cut guide>"_s, write(u"cut.xml"_s, "<tv><programme start="));
        const ProcessResult result = tool(arguments, input);
        QVERIFY(result.finished);
        QCOMPARE(result.exitCode, exitCode);
        QVERIFY(result.out.isEmpty() || arguments.first() == u"guide");
        QVERIFY2(result.err.contains(message), result.err.constData());
    }

    void classifies_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QByteArray>("json");

        QTest::newRow("youtube")
            << u"https://youtu.be/?list=PL1"_s << 0
            << QByteArray(R"({"kind":"youtube","videoID":null,"playlistID":"PL1","id":"|PL1"})");
        QTest::newRow("okru")
            << u"https://m.ok.ru/video/12"_s << 0
            << QByteArray(
                   R"({"kind":"okru","videoID":"12","embedURL":"https:\/\/ok.ru\/videoembed\/12?autoplay=1&nochat=1"})");
        QTest::newRow("playlist")
            << u"[x](http://h/get.php?type=m3u_plus)"_s << 0
            << QByteArray(R"({"kind":"playlist","url":"http:\/\/h\/get.php?type=m3u_plus"})");
        QTest::newRow("live stream")
            << u" <https://h/live.M3U8> "_s << 0
            << QByteArray(R"({"kind":"stream","url":"https:\/\/h\/live.M3U8","live":true})");
        QTest::newRow("invalid")
            << u"ftp://h/a.m3u"_s << 1
            << QByteArray(R"({"kind":"invalid","message":"Enter a valid HTTP or HTTPS address."})");
    }

    void classifies()
    {
        QFETCH(QString, address);
        QFETCH(int, exitCode);
        QFETCH(QByteArray, json);
        const ProcessResult result = tool({u"classify"_s, address});
        QCOMPARE(result.exitCode, exitCode);
        QCOMPARE(result.out, json + '\n');
    }

    void summarises_data()
    {
        QTest::addColumn<QByteArray>("list");
        QTest::addColumn<QByteArray>("summary");

        QTest::newRow("a short list")
            << QByteArray("#EXTINF:-1 tvg-logo=\"http://l/1.png\" group-title=\"News\" "
                          "tvg-id=\"a.us\",A\nhttp://s/a\n"
                          "#EXTINF:-1 group-title=\"News\" tvg-country=\"CA\",B\nhttp://s/b\n"
                          "#EXTINF:-1 group-title=\"Kids\" tvg-country=\"us\",C\nhttp://s/c\n"
                          "http://s/d\n")
            << QByteArray("Entries:            4\n"
                          "Distinct countries: 2\n"
                          "Distinct groups:    2\n"
                          "Without logo:       3\n"
                          "Without group:      1\n"
                          "Without country:    1\n");
        // Large enough to be read in two halves at once, each keeping strings of its own: a group
        // or country met in both halves is still one.
        const QByteArray pair =
            "#EXTINF:-1 group-title=\"News\" tvg-country=\"CA\",A\nhttp://s/a\n"
            "#EXTINF:-1 group-title=\"Kids\" tvg-country=\"ca\",B\nhttp://s/b\n";
        const int pairs = 40000;
        QTest::newRow("a list read in two halves")
            << pair.repeated(pairs)
            << QByteArray("Entries:            " + QByteArray::number(2 * pairs) +
                          "\n"
                          "Distinct countries: 1\n"
                          "Distinct groups:    2\n"
                          "Without logo:       " +
                          QByteArray::number(2 * pairs) +
                          "\n"
                          "Without group:      0\n"
                          "Without country:    0\n");
    }

    void summarises()
    {
        QFETCH(QByteArray, list);
        QFETCH(QByteArray, summary);
        const ProcessResult result = tool({u"stats"_s, write(u"s.m3u"_s, list)});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.out, summary);
    }

    void countsAGuidesProgrammes()
    {
        const QString path = write(
            u"guide.xml"_s,
            "<tv><channel id=\"a\"><display-name>A</display-name></channel>"
            "<programme start=\"20261123180000 +0000\" stop=\"20261123190000 +0000\" channel=\"A\">"
            "<title>One</title></programme>"
            "<programme start=\"19991231230000 +0000\" stop=\"20000101010000 +0000\" channel=\"a\">"
            "<title>Any time</title></programme>"
            "<programme start=\"20261123180000\" stop=\"20261123190000\" channel=\"b\">"
            "<title>Not asked for</title></programme></tv>");
        const ProcessResult result = tool({u"guide"_s, path, u"a"_s, u"c"_s});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.out, QByteArray("Channels with programmes: 1\n"
                                        "Programmes:               2\n"));
    }

private:
    QString write(const QString &name, const QByteArray &bytes);

    std::unique_ptr<QTemporaryDir> m_dir;
};

QString tst_VelmM3uTool::write(const QString &name, const QByteArray &bytes)
{
    QFile file(m_dir->filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return {};
    return file.fileName();
}

QTEST_GUILESS_MAIN(tst_VelmM3uTool)
#include "tst_VelmM3uTool.moc"
