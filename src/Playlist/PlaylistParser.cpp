#include "Playlist/PlaylistParser.h"

#include "Playlist/RandomUuidSource.h"
#include "Playlist/StringPool.h"

#include <QTextBoundaryFinder>

namespace {

constexpr QLatin1StringView descriptionPrefix("#EXTINF:");

// The platform's newline set: line feed, vertical tab, form feed, carriage return, next line and
// the Unicode line and paragraph separators.
bool isNewline(char16_t c)
{
    return (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029;
}

char16_t asciiLower(char16_t c)
{
    return (c >= u'A' && c <= u'Z') ? char16_t(c + 32) : c;
}

// Index of lowerNeedle in text, ignoring the case of ASCII letters (attribute names are ASCII and
// contain no letter that Unicode folds from a non-ASCII one).
qsizetype indexOfIgnoringCase(QStringView text, QLatin1StringView lowerNeedle)
{
    const qsizetype last = text.size() - lowerNeedle.size();
    const char16_t first = lowerNeedle.front().unicode();
    for (qsizetype i = 0; i <= last; ++i) {
        if (asciiLower(text[i].unicode()) != first)
            continue;
        qsizetype j = 1;
        while (j < lowerNeedle.size() &&
               asciiLower(text[i + j].unicode()) == lowerNeedle[j].unicode())
            ++j;
        if (j == lowerNeedle.size())
            return i;
    }
    return -1;
}

QStringView leftTrimmed(QStringView text)
{
    qsizetype start = 0;
    while (start < text.size() && text[start].isSpace())
        ++start;
    return text.sliced(start);
}

// The title rule: the text after the first comma when there is any, else the text before it.
QStringView title(QStringView description)
{
    const qsizetype comma = description.indexOf(u',');
    if (comma < 0)
        return description.trimmed();
    const QStringView after = description.sliced(comma + 1);
    return (after.isEmpty() ? description.first(comma) : after).trimmed();
}

// Lengths are counted in user-perceived characters, as a reader would count them.
qsizetype characterCount(QStringView text)
{
    bool simple = true;
    for (const QChar c : text)
        simple = simple && c.unicode() < 0x300;
    if (simple)
        return text.size();
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text.data(), text.size());
    qsizetype count = 0;
    while (finder.toNextBoundary() > 0)
        ++count;
    return count;
}

} // namespace

// One pass of the parser: the state that lives from one line to the next.
class PlaylistParserRun
{
public:
    explicit PlaylistParserRun(const WebAddress &base) : m_base(base) {}

    void readLine(QStringView line);
    QList<PlaylistEntry> takeEntries() { return std::move(m_entries); }

private:
    void addEntry(const WebAddress &address);
    QString entryName(const WebAddress &address) const;
    std::optional<QString> interned(const std::optional<QString> &text);
    std::optional<QString> interned(std::optional<QStringView> text);

    const WebAddress &m_base;
    // The last description line since the previous address line; it applies to the next one.
    std::optional<QStringView> m_description;
    QList<PlaylistEntry> m_entries;
    StringPool m_pool;
    RandomUuidSource m_uuids;
};

void PlaylistParserRun::readLine(QStringView line)
{
    // The title keeps trailing white space until it is split off, so a description ending in ", "
    // has an empty title rather than the whole line as title.
    const QStringView description = leftTrimmed(line);
    if (description.isEmpty())
        return;
    if (description.startsWith(descriptionPrefix)) {
        m_description = description;
        return;
    }
    if (description.startsWith(u'#'))
        return;
    if (const auto address = WebAddress::fromText(description.trimmed(), m_base))
        addEntry(*address);
}

void PlaylistParserRun::addEntry(const WebAddress &address)
{
    PlaylistEntry entry{m_uuids.next(), entryName(address), address, {}, {}, {}};
    if (m_description) {
        const QStringView line = *m_description;
        if (const auto logo = PlaylistParser::attribute(QLatin1StringView("tvg-logo"), line))
            entry.logoURL = WebAddress::fromText(*logo);
        entry.groupTitle =
            interned(PlaylistParser::attribute(QLatin1StringView("group-title"), line));
        // A present but unusable tvg-country falls back to the channel id, never to "country".
        const auto tvgCountry = PlaylistParser::attribute(QLatin1StringView("tvg-country"), line);
        std::optional<QString> country = PlaylistParser::normalizedCountryCode(
            tvgCountry ? tvgCountry
                       : PlaylistParser::attribute(QLatin1StringView("country"), line));
        if (!country)
            country = PlaylistParser::inferredCountryCode(
                PlaylistParser::attribute(QLatin1StringView("tvg-id"), line));
        entry.countryCode = interned(country);
    }
    m_entries.append(std::move(entry));
    m_description.reset();
}

QString PlaylistParserRun::entryName(const WebAddress &address) const
{
    if (m_description) {
        const QStringView titleText = title(*m_description);
        if (!titleText.isEmpty())
            return titleText.toString();
        if (const auto name =
                PlaylistParser::attribute(QLatin1StringView("tvg-name"), *m_description))
            return name->toString();
    }
    if (auto last = address.lastPathComponent(); last && !last->isEmpty())
        return *std::move(last);
    if (auto host = address.host())
        return *std::move(host);
    return QStringLiteral("Stream");
}

std::optional<QString> PlaylistParserRun::interned(const std::optional<QString> &text)
{
    return text ? std::optional(m_pool.intern(*text)) : std::nullopt;
}

std::optional<QString> PlaylistParserRun::interned(std::optional<QStringView> text)
{
    return text ? std::optional(m_pool.intern(*text)) : std::nullopt;
}

QList<PlaylistEntry> PlaylistParser::parse(QStringView text, const WebAddress &base)
{
    PlaylistParserRun run(base);
    const char16_t *chars = text.utf16();
    qsizetype lineStart = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (isNewline(chars[i])) {
            run.readLine(text.sliced(lineStart, i - lineStart));
            lineStart = i + 1;
        }
    }
    run.readLine(text.sliced(lineStart));
    return run.takeEntries();
}

std::optional<QStringView> PlaylistParser::attribute(QLatin1StringView name, QStringView line)
{
    // The first place where the name, in any letter case, is followed by an equals sign and a
    // double quote; a plain substring search, so "country" also matches inside "tvg-country".
    qsizetype from = 0;
    while (true) {
        const qsizetype found = indexOfIgnoringCase(line.sliced(from), name);
        if (found < 0)
            return std::nullopt;
        const QStringView rest = line.sliced(from + found + name.size());
        if (rest.startsWith(u"=\"")) {
            const QStringView quoted = rest.sliced(2);
            const qsizetype close = quoted.indexOf(u'"');
            if (close < 0)
                return std::nullopt;
            const QStringView value = quoted.first(close).trimmed();
            return value.isEmpty() ? std::nullopt : std::optional(value);
        }
        from += found + 1;
    }
}

std::optional<QString> PlaylistParser::countryCode(QStringView candidate)
{
    const QString upper = candidate.toString().toUpper();
    return characterCount(upper) == 2 ? std::optional(upper) : std::nullopt;
}

std::optional<QString> PlaylistParser::normalizedCountryCode(std::optional<QStringView> value)
{
    if (!value)
        return std::nullopt;
    qsizetype start = 0;
    while (start < value->size() && QStringView(u",; ").contains(value->at(start)))
        ++start;
    qsizetype end = start;
    while (end < value->size() && !QStringView(u",; ").contains(value->at(end)))
        ++end;
    if (start == end)
        return std::nullopt;
    return countryCode(value->sliced(start, end - start));
}

std::optional<QString> PlaylistParser::inferredCountryCode(std::optional<QStringView> channelID)
{
    if (!channelID)
        return std::nullopt;
    // The first piece of the id split at at-signs with empty pieces dropped.
    QStringView id = *channelID;
    while (id.startsWith(u'@'))
        id = id.sliced(1);
    if (const qsizetype at = id.indexOf(u'@'); at >= 0)
        id = id.first(at);
    while (id.endsWith(u'.'))
        id.chop(1);
    const QStringView last = id.sliced(id.lastIndexOf(u'.') + 1);
    if (last.isEmpty())
        return std::nullopt;
    return countryCode(last);
}
