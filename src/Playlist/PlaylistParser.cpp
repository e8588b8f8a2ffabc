#include "Playlist/PlaylistParser.h"

#include "Playlist/CharScan.h"
#include "Playlist/RandomUuidSource.h"

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

// True when text ends with lowerName, ignoring the case of ASCII letters. Attribute names are
// ASCII and hold no letter that Unicode case folding maps from a non-ASCII one, so this is the
// full case-insensitive comparison for them.
bool endsWithIgnoringCase(QStringView text, QLatin1StringView lowerName)
{
    if (text.size() < lowerName.size())
        return false;
    // From the last letter backwards: other attribute names almost always differ there.
    const QStringView tail = text.last(lowerName.size());
    for (qsizetype i = tail.size() - 1; i >= 0; --i) {
        if (asciiLower(tail[i].unicode()) != lowerName[i].unicode())
            return false;
    }
    return true;
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
    const qsizetype comma = CharScan::indexOf(description, u',');
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
    QString entryName(const WebAddress &address, std::optional<QStringView> tvgName) const;

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
    const PlaylistParser::Attributes attributes =
        m_description ? PlaylistParser::attributes(*m_description) : PlaylistParser::Attributes{};
    PlaylistEntry entry{
        m_uuids.next(), entryName(address, attributes.tvgName), address, {}, {}, {}};
    if (attributes.tvgLogo)
        entry.logoURL = WebAddress::fromText(*attributes.tvgLogo);
    if (attributes.groupTitle)
        entry.groupTitle = m_pool.intern(*attributes.groupTitle);
    // A present but unusable tvg-country falls back to the channel id, never to "country".
    entry.countryCode = PlaylistParser::normalizedCountryCode(
        attributes.tvgCountry ? attributes.tvgCountry : attributes.country, m_pool);
    if (!entry.countryCode)
        entry.countryCode = PlaylistParser::inferredCountryCode(attributes.tvgID, m_pool);
    m_entries.append(std::move(entry));
    m_description.reset();
}

QString PlaylistParserRun::entryName(const WebAddress &address,
                                     std::optional<QStringView> tvgName) const
{
    if (m_description) {
        const QStringView titleText = title(*m_description);
        if (!titleText.isEmpty())
            return titleText.toString();
        if (tvgName)
            return tvgName->toString();
    }
    if (auto last = address.lastPathComponent(); last && !last->isEmpty())
        return *std::move(last);
    if (auto host = address.host())
        return *std::move(host);
    return QStringLiteral("Stream");
}

QList<PlaylistEntry> PlaylistParser::parse(QStringView text, const WebAddress &base)
{
    PlaylistParserRun run(base);
    const char16_t *const end = text.utf16() + text.size();
    const char16_t *lineStart = text.utf16();
    for (const char16_t *c = CharScan::nextLineBreakCandidate(lineStart, end); c != end;
         c = CharScan::nextLineBreakCandidate(c + 1, end)) {
        if (isNewline(*c)) {
            run.readLine(QStringView(lineStart, c));
            lineStart = c + 1;
        }
    }
    run.readLine(QStringView(lineStart, end));
    return run.takeEntries();
}

PlaylistParser::Attributes PlaylistParser::attributes(QStringView line)
{
    struct Wanted
    {
        QLatin1StringView name;
        std::optional<QStringView> Attributes::*value;
    };
    static constexpr Wanted wanted[] = {
        {QLatin1StringView("tvg-name"), &Attributes::tvgName},
        {QLatin1StringView("tvg-logo"), &Attributes::tvgLogo},
        {QLatin1StringView("group-title"), &Attributes::groupTitle},
        {QLatin1StringView("tvg-country"), &Attributes::tvgCountry},
        {QLatin1StringView("country"), &Attributes::country},
        {QLatin1StringView("tvg-id"), &Attributes::tvgID},
    };
    constexpr unsigned allDecided = (1u << std::size(wanted)) - 1;

    // "name=\"" occurs exactly where a quote follows "=" and the text before the "=" ends with
    // the name, so every attribute's first occurrence is found walking the quotes in order.
    Attributes found;
    unsigned decided = 0;
    qsizetype quote = CharScan::indexOf(line, u'"');
    while (quote >= 0 && decided != allDecided) {
        const qsizetype close = CharScan::indexOf(line, u'"', quote + 1);
        if (quote > 0 && line[quote - 1] == u'=') {
            const QStringView before = line.first(quote - 1);
            for (size_t i = 0; i < std::size(wanted); ++i) {
                if ((decided & (1u << i)) || !endsWithIgnoringCase(before, wanted[i].name))
                    continue;
                decided |= 1u << i;
                const QStringView value =
                    close < 0 ? QStringView() : line.sliced(quote + 1, close - quote - 1).trimmed();
                if (!value.isEmpty())
                    found.*wanted[i].value = value;
            }
        }
        quote = close;
    }
    return found;
}

std::optional<QString> PlaylistParser::countryCode(QStringView candidate, StringPool &pool)
{
    // Two ASCII characters, by far the usual case, are upper-cased without allocating.
    if (candidate.size() == 2 && candidate[0].unicode() < 0x80 && candidate[1].unicode() < 0x80) {
        const auto upper = [](QChar c) {
            return (c >= u'a' && c <= u'z') ? char16_t(c.unicode() - 32) : c.unicode();
        };
        const char16_t code[2] = {upper(candidate[0]), upper(candidate[1])};
        return pool.intern(QStringView(code, 2));
    }
    const QString upper = candidate.toString().toUpper();
    return characterCount(upper) == 2 ? std::optional(pool.intern(upper)) : std::nullopt;
}

std::optional<QString> PlaylistParser::normalizedCountryCode(std::optional<QStringView> value,
                                                             StringPool &pool)
{
    if (!value)
        return std::nullopt;
    const auto isSeparator = [](QChar c) { return c == u',' || c == u';' || c == u' '; };
    qsizetype start = 0;
    while (start < value->size() && isSeparator(value->at(start)))
        ++start;
    qsizetype end = start;
    while (end < value->size() && !isSeparator(value->at(end)))
        ++end;
    if (start == end)
        return std::nullopt;
    return countryCode(value->sliced(start, end - start), pool);
}

std::optional<QString> PlaylistParser::inferredCountryCode(std::optional<QStringView> channelID,
                                                           StringPool &pool)
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
    return countryCode(last, pool);
}
