#include "Playlist/PlaylistParser.h"

#include "Playlist/PlaylistParserRun.h"

#include <QTextBoundaryFinder>

namespace {

char asciiLower(char c)
{
    return (c >= 'A' && c <= 'Z') ? char(c + 32) : c;
}

// True when text ends with lowerName, ignoring the case of ASCII letters. Attribute names are
// ASCII and hold no letter that Unicode case folding maps from a non-ASCII one, so this is the
// full case-insensitive comparison for them (and no byte of a longer UTF-8 sequence is ASCII).
bool endsWithIgnoringCase(QByteArrayView text, QLatin1StringView lowerName)
{
    if (text.size() < lowerName.size())
        return false;
    // From the last letter backwards: other attribute names almost always differ there.
    const QByteArrayView tail = text.last(lowerName.size());
    for (qsizetype i = tail.size() - 1; i >= 0; --i) {
        if (asciiLower(tail[i]) != lowerName[i].toLatin1())
            return false;
    }
    return true;
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

QList<PlaylistEntry> PlaylistParser::parse(QByteArrayView bytes, const WebAddress &base)
{
    PlaylistTextSurvey survey;
    survey.add(bytes);
    return parse(bytes, base, survey);
}

QList<PlaylistEntry> PlaylistParser::parse(QByteArrayView bytes, const WebAddress &base,
                                           const PlaylistTextSurvey &survey)
{
    PlaylistParserRun run(base, survey.encoding(), survey.channelCapacity());
    run.readBlock(PlaylistTextDecoder::textBytes(bytes, survey.encoding()));
    return run.takeEntries();
}

PlaylistParser::Attributes PlaylistParser::attributes(QByteArrayView line, const EncodedText &text)
{
    struct Wanted
    {
        QLatin1StringView name;
        std::optional<QByteArrayView> Attributes::*value;
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
    qsizetype quote = line.indexOf('"');
    while (quote >= 0 && decided != allDecided) {
        const qsizetype close = line.indexOf('"', quote + 1);
        if (quote > 0 && line[quote - 1] == '=') {
            const QByteArrayView before = line.first(quote - 1);
            for (size_t i = 0; i < std::size(wanted); ++i) {
                if ((decided & (1u << i)) || !endsWithIgnoringCase(before, wanted[i].name))
                    continue;
                decided |= 1u << i;
                const QByteArrayView value =
                    close < 0 ? QByteArrayView()
                              : text.trimmed(line.sliced(quote + 1, close - quote - 1));
                if (!value.isEmpty())
                    found.*wanted[i].value = value;
            }
        }
        quote = close;
    }
    return found;
}

std::optional<QString> PlaylistParser::countryCode(QByteArrayView candidate,
                                                   const EncodedText &text, StringPool &pool)
{
    // Two ASCII characters, by far the usual case, are upper-cased without converting anything.
    // The pool's keys are the codes' UTF-8 bytes.
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    if (candidate.size() == 2 && isAscii(candidate[0]) && isAscii(candidate[1])) {
        const auto upper = [](char c) { return (c >= 'a' && c <= 'z') ? char(c - 32) : c; };
        const char code[2] = {upper(candidate[0]), upper(candidate[1])};
        return pool.intern(QByteArrayView(code, 2),
                           [&code] { return QString::fromLatin1(code, 2); });
    }
    const QString upper = text.toString(candidate).toUpper();
    if (characterCount(upper) != 2)
        return std::nullopt;
    return pool.intern(upper.toUtf8(), [&upper] { return upper; });
}

std::optional<QString> PlaylistParser::normalizedCountryCode(std::optional<QByteArrayView> value,
                                                             const EncodedText &text,
                                                             StringPool &pool)
{
    if (!value)
        return std::nullopt;
    const auto isSeparator = [](char c) { return c == ',' || c == ';' || c == ' '; };
    qsizetype start = 0;
    while (start < value->size() && isSeparator(value->at(start)))
        ++start;
    qsizetype end = start;
    while (end < value->size() && !isSeparator(value->at(end)))
        ++end;
    if (start == end)
        return std::nullopt;
    return countryCode(value->sliced(start, end - start), text, pool);
}

std::optional<QString> PlaylistParser::inferredCountryCode(std::optional<QByteArrayView> channelID,
                                                           const EncodedText &text,
                                                           StringPool &pool)
{
    if (!channelID)
        return std::nullopt;
    // The first piece of the id split at at-signs with empty pieces dropped.
    QByteArrayView id = *channelID;
    while (id.startsWith('@'))
        id = id.sliced(1);
    if (const qsizetype at = id.indexOf('@'); at >= 0)
        id = id.first(at);
    while (id.endsWith('.'))
        id.chop(1);
    const QByteArrayView last = id.sliced(id.lastIndexOf('.') + 1);
    if (last.isEmpty())
        return std::nullopt;
    return countryCode(last, text, pool);
}
