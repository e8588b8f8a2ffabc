#include "Playlist/ChannelFilter.h"
#include "Playlist/ChannelListModel.h"
#include "Playlist/ChannelSearchIndex.h"
#include "Playlist/PlaylistReader.h"

#include "TestData.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Text = std::optional<QString>;

PlaylistEntry entry(const QString &name, Text group = {}, Text country = {})
{
    return {QUuid::createUuid(), name,  *WebAddress::fromText(u"http://tv.example/news/1.m3u8"_s),
            std::nullopt,        group, country};
}

QStringList names(const QList<PlaylistEntry> &entries)
{
    QStringList result;
    for (const PlaylistEntry &each : entries)
        result.append(each.name);
    return result;
}

const QList<PlaylistEntry> &sample()
{
    static const QList<PlaylistEntry> entries = {entry(u"CNN"_s, u"News"_s, u"US"_s),
                                                 entry(u"Café TV"_s, u"Food"_s, u"FR"_s),
                                                 entry(u"lowercase us"_s, {}, u"us"_s),
                                                 entry(u"Sky Sport"_s, u"Sport"_s, u"GB"_s),
                                                 entry(u"No group"_s, {}, {}),
                                                 entry(u"Blank group"_s, u""_s, u""_s),
                                                 entry(u"ДОЖДЬ"_s, u"Новости"_s, u"RU"_s),
                                                 entry(u"BBC News"_s, u"News"_s, u"UK"_s)};
    return entries;
}

QList<PlaylistEntry> readList(const QString &path)
{
    return PlaylistReader::readFile(testData(path)).entries;
}

} // namespace

class tst_ChannelFilter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void filters_data()
    {
        QTest::addColumn<ChannelFilterCriteria>("criteria");
        QTest::addColumn<QStringList>("kept");
        const auto row = [](const char *name, const QString &search, Text country, Text category,
                            const QStringList &kept) {
            QTest::newRow(name) << ChannelFilterCriteria{search, country, category} << kept;
        };
        const QStringList all = names(sample());
        row("nothing chosen", u""_s, {}, {}, all);
        row("only spaces is no search", u" \t\n "_s, {}, {}, all);
        row("country is exact", u""_s, u"US"_s, {}, {u"CNN"_s});
        row("empty country code", u""_s, u""_s, {}, {u"Blank group"_s});
        row("category needs a group", u""_s, {}, u"News"_s, {u"CNN"_s, u"BBC News"_s});
        row("unknown category", u""_s, {}, u"Kids"_s, {});
        row("search in name or group", u" news "_s, {}, {}, {u"CNN"_s, u"BBC News"_s});
        row("letter case ignored", u"sKY"_s, {}, {}, {u"Sky Sport"_s});
        row("accents matter", u"cafe"_s, {}, {}, {});
        row("accents found", u"CAFÉ"_s, {}, {}, {u"Café TV"_s});
        row("cyrillic case folded", u"новости"_s, {}, {}, {u"ДОЖДЬ"_s});
        row("addresses not searched", u"tv.example"_s, {}, {}, {});
        row("country codes not searched", u"GB"_s, {}, {}, {});
        row("all three", u"news"_s, u"UK"_s, u"News"_s, {u"BBC News"_s});
    }

    void filters()
    {
        QFETCH(ChannelFilterCriteria, criteria);
        QFETCH(QStringList, kept);
        QCOMPARE(names(ChannelFilter::filtered(sample(), criteria)), kept);
        QList<PlaylistEntry> byIndex;
        for (int row : ChannelSearchIndex(sample()).matchingRows(criteria))
            byIndex.append(sample().at(row));
        QCOMPARE(names(byIndex), kept);
    }

    void ordersTheMenuChoices()
    {
        // By English name: France, Russia, UK (no name known), United Kingdom, United States, us.
        QCOMPARE(ChannelFilter::countryCodes(sample()),
                 (QStringList{u""_s, u"FR"_s, u"RU"_s, u"UK"_s, u"GB"_s, u"US"_s, u"us"_s}));
        QCOMPARE(ChannelFilter::categories(sample()),
                 (QStringList{u"Food"_s, u"News"_s, u"Sport"_s, u"Новости"_s}));
        // Letter case does not order: "apple" before "Banana" before "cherry".
        const QList<PlaylistEntry> mixed = {entry(u"1"_s, u"cherry"_s), entry(u"2"_s, u"Banana"_s),
                                            entry(u"3"_s, u"apple"_s), entry(u"4"_s, u"Banana"_s)};
        QCOMPARE(ChannelFilter::categories(mixed),
                 (QStringList{u"apple"_s, u"Banana"_s, u"cherry"_s}));
        QCOMPARE(ChannelSearchIndex(mixed).categories(), ChannelFilter::categories(mixed));
        QCOMPARE(ChannelSearchIndex(sample()).countryCodes(),
                 ChannelFilter::countryCodes(sample()));
    }

    void writesMetadataLines_data()
    {
        QTest::addColumn<PlaylistEntry>("channel");
        QTest::addColumn<QString>("networkRow");
        QTest::addColumn<Text>("savedLink");
        QTest::newRow("country and group")
            << entry(u"A"_s, u"Sport"_s, u"DE"_s) << u"Germany  \u00B7  Sport"_s
            << Text(u"Germany  \u00B7  Sport"_s);
        QTest::newRow("group only") << entry(u"A"_s, u"Sport"_s) << u"Sport"_s << Text(u"Sport"_s);
        QTest::newRow("country only")
            << entry(u"A"_s, {}, u"GB"_s) << u"United Kingdom"_s << Text(u"United Kingdom"_s);
        QTest::newRow("neither") << entry(u"A"_s) << u"Other"_s << Text();
        QTest::newRow("empty group") << entry(u"A"_s, u""_s) << u"Other"_s << Text();
        QTest::newRow("unknown code") << entry(u"A"_s, u"Kids"_s, u"XX"_s) << u"XX  \u00B7  Kids"_s
                                      << Text(u"XX  \u00B7  Kids"_s);
    }

    void writesMetadataLines()
    {
        QFETCH(PlaylistEntry, channel);
        QFETCH(QString, networkRow);
        QFETCH(Text, savedLink);
        QCOMPARE(ChannelFilter::networkRowMetadata(channel), networkRow);
        QCOMPARE(ChannelFilter::savedLinkMetadata(channel), savedLink);

        ChannelListModel network(ChannelListModel::Rows::networkChannels);
        ChannelListModel saved(ChannelListModel::Rows::savedLinks);
        network.setEntries({channel});
        saved.setEntries({channel});
        QCOMPARE(network.index(0).data(ChannelListModel::MetadataRole).toString(), networkRow);
        const QVariant line = saved.index(0).data(ChannelListModel::MetadataRole);
        QCOMPARE(line.isValid() ? Text(line.toString()) : Text(), savedLink);
    }

    void indexAgreesWithTheRuleOnRealLists_data()
    {
        QTest::addColumn<QStringList>("paths");
        QTest::addColumn<int>("copies"); // of the first list, before the others
        const QString channels2021 = u"m3u/iptv-org-2021-channels/us.m3u"_s;
        const QString cp1252 = u"m3u/made/all-tv-cp1252.m3u"_s;
        QTest::newRow("2021 channels") << QStringList{channels2021} << 1;
        QTest::newRow("2026 streams") << QStringList{u"m3u/iptv-org-2026-streams/in.m3u"_s} << 1;
        QTest::newRow("cp1252 list") << QStringList{cp1252} << 1;
        // Long enough to be indexed in halves, with countries and groups that first appear in
        // the second half, after others that the second half meets in another order.
        QTest::newRow("lists joined, indexed in halves")
            << QStringList{channels2021, cp1252, u"m3u/iptv-org-2021-channels/ch.m3u"_s}
            << int(ChannelSearchIndex::splitEntries / readList(channels2021).size() + 1);
    }

    void indexAgreesWithTheRuleOnRealLists()
    {
        QFETCH(QStringList, paths);
        QFETCH(int, copies);
        QList<PlaylistEntry> entries;
        for (int copy = 0; copy < copies; ++copy)
            entries += readList(paths.first());
        for (const QString &path : paths.sliced(1))
            entries += readList(path);
        QVERIFY(entries.size() > 500);
        const ChannelSearchIndex index(entries);
        QCOMPARE(index.countryCodes(), ChannelFilter::countryCodes(entries));
        QCOMPARE(index.categories(), ChannelFilter::categories(entries));

        QList<ChannelFilterCriteria> criteria;
        for (const QString &search : {u"news"_s, u"TV"_s, u"a"_s, u"ö"_s, u"É"_s, u"1"_s, u" hd "_s,
                                      u"sport\nhd"_s, u"zzzz"_s, u"("_s})
            criteria.append({search, std::nullopt, std::nullopt});
        // Names of a few real entries, in other letter cases, and their own country and group.
        for (qsizetype i = 0; i < entries.size(); i += entries.size() / 7) {
            const PlaylistEntry &each = entries.at(i);
            criteria.append({each.name.toUpper(), std::nullopt, std::nullopt});
            criteria.append({each.name.mid(1, 3).toLower(), each.countryCode, each.groupTitle});
            criteria.append({QString(), each.countryCode, std::nullopt});
        }
        for (const ChannelFilterCriteria &each : std::as_const(criteria)) {
            QList<PlaylistEntry> byIndex;
            for (int row : index.matchingRows(each))
                byIndex.append(entries.at(row));
            QVERIFY2(byIndex == ChannelFilter::filtered(entries, each), qPrintable(each.search));
        }
    }

    void longListsFilterOffTheMainThread()
    {
        const QList<PlaylistEntry> real = readList(u"m3u/iptv-org-2021-channels/us.m3u"_s);
        QList<PlaylistEntry> entries;
        while (entries.size() <= ChannelListModel::synchronousLimit * 2)
            entries.append(real);

        ChannelListModel model(ChannelListModel::Rows::networkChannels);
        QSignalSpy settled(&model, &ChannelListModel::rowsSettled);
        model.setEntries(entries);
        QVERIFY(model.isFiltering());
        QCOMPARE(model.rowCount(), 0); // the old (empty) list until the new one is ready
        // Typing on while the list is indexed: only the newest criteria are ever shown.
        for (const QString &typed : {u"n"_s, u"ne"_s, u"new"_s, u"news"_s})
            model.setChannelSearch(typed);
        model.setSelectedCategory(u"News"_s);
        QVERIFY(settled.wait(20000));
        QCOMPARE(settled.count(), 1);
        QVERIFY(!model.isFiltering());
        const ChannelFilterCriteria newest{u"news"_s, std::nullopt, u"News"_s};
        QCOMPARE(model.filteredEntries(), ChannelFilter::filtered(entries, newest));
        QCOMPARE(model.categories(), ChannelFilter::categories(real));

        model.clearFilters();
        QVERIFY(settled.wait(20000));
        QCOMPARE(model.filteredCount(), entries.size());
    }

    void findsLegacyPunctuation()
    {
        // An en dash of a Windows-1252 list is one, not a control character, so it can be searched.
        const QList<PlaylistEntry> legacy = readList(u"m3u/made/german-cp1252-mixed-breaks.m3u"_s);
        QCOMPARE(names(ChannelFilter::filtered(legacy, {u"Nachrichten \u2013 "_s, {}, {}})),
                 QStringList{u"Nachrichten \u2013 Live"_s});
    }
};

QTEST_GUILESS_MAIN(tst_ChannelFilter)
#include "tst_ChannelFilter.moc"
