#include "Base/WebAddress.h"

#include <QStringDecoder>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>

namespace {

// The five components of RFC 3986 appendix B, as views into the address text.
struct Components
{
    std::optional<QByteArrayView> scheme;
    std::optional<QByteArrayView> authority;
    QByteArrayView path;
    std::optional<QByteArrayView> query;
    std::optional<QByteArrayView> fragment;
};

bool isAlpha(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isHexDigit(char c)
{
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// unreserved, gen-delims and sub-delims of RFC 3986, as a table indexed by ASCII code; "%" is
// checked with its two hex digits. Parsing millions of playlist lines makes this a hot loop.
constexpr auto allowedCharacters = [] {
    std::array<bool, 128> table{};
    for (char c = 'a'; c <= 'z'; ++c)
        table[size_t(c)] = table[size_t(c - 'a' + 'A')] = true;
    for (char c = '0'; c <= '9'; ++c)
        table[size_t(c)] = true;
    for (const char c : std::string_view("-._~:/?#[]@!$&'()*+,;="))
        table[size_t(c)] = true;
    return table;
}();

bool isAllowedCharacter(char16_t c)
{
    return c < 0x80 && allowedCharacters[c];
}

#if defined(__SSE2__)
// How many leading units of [from, end), in whole blocks of eight, are plain address characters
// (allowed, and not "%"); they are copied to out as bytes.
qsizetype copyPlainBlocks(const char16_t *from, const char16_t *end, char *out)
{
    const auto equals = [](__m128i units, char c) {
        return _mm_cmpeq_epi16(units, _mm_set1_epi16(c));
    };
    const char16_t *p = from;
    for (; end - p >= 8; p += 8) {
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
        // Outside "!".."~": saturating subtraction is zero for units <= 0x20 and >= 0x7F.
        __m128i bad = _mm_or_si128(
            _mm_cmpeq_epi16(_mm_subs_epu16(units, _mm_set1_epi16(0x20)), _mm_setzero_si128()),
            _mm_cmpeq_epi16(_mm_subs_epu16(_mm_set1_epi16(0x7E), units), _mm_setzero_si128()));
        for (const char c : {'"', '%', '<', '>', '\\', '^', '`', '{', '|', '}'})
            bad = _mm_or_si128(bad, equals(units, c));
        if (_mm_movemask_epi8(bad) != 0)
            break;
        _mm_storel_epi64(reinterpret_cast<__m128i *>(out + (p - from)),
                         _mm_packus_epi16(units, units));
    }
    return p - from;
}
#endif

// The text as ASCII bytes, or nothing when it holds a character that no address may hold.
std::optional<QByteArray> allowedAscii(QStringView text)
{
    QByteArray ascii(text.size(), Qt::Uninitialized);
    char *out = ascii.data();
    const char16_t *chars = text.utf16();
    const qsizetype size = text.size();
    qsizetype i = 0;
    while (i < size) {
#if defined(__SSE2__)
        i += copyPlainBlocks(chars + i, chars + size, out + i);
        if (i == size)
            break;
#endif
        const char16_t c = chars[i];
        if (c == u'%') {
            if (i + 2 >= size || chars[i + 1] >= 0x80 || chars[i + 2] >= 0x80 ||
                !isHexDigit(char(chars[i + 1])) || !isHexDigit(char(chars[i + 2])))
                return std::nullopt;
        } else if (!isAllowedCharacter(c)) {
            return std::nullopt;
        }
        out[i++] = char(c);
    }
    return ascii;
}

// Whether the bytes are text an address may be, as allowedAscii decides for characters.
bool allowedBytes(QByteArrayView bytes)
{
    const qsizetype size = bytes.size();
    for (qsizetype i = 0; i < size; ++i) {
        const char c = bytes[i];
        if (c == '%') {
            if (i + 2 >= size || !isHexDigit(bytes[i + 1]) || !isHexDigit(bytes[i + 2]))
                return false;
        } else if (uchar(c) >= 0x80 || !isAllowedCharacter(char16_t(uchar(c)))) {
            return false;
        }
    }
    return true;
}

// The text before the first ":" when no "/", "?" or "#" comes before it and it is not empty.
std::optional<QByteArrayView> schemeOf(QByteArrayView text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == ':')
            return i > 0 ? std::optional(text.first(i)) : std::nullopt;
        if (c == '/' || c == '?' || c == '#')
            break;
    }
    return std::nullopt;
}

Components split(QByteArrayView text)
{
    Components parts;
    qsizetype pos = 0;
    parts.scheme = schemeOf(text);
    if (parts.scheme)
        pos = parts.scheme->size() + 1;
    if (text.sliced(pos).startsWith("//")) {
        pos += 2;
        qsizetype end = pos;
        while (end < text.size() && text[end] != '/' && text[end] != '?' && text[end] != '#')
            ++end;
        parts.authority = text.sliced(pos, end - pos);
        pos = end;
    }
    qsizetype end = pos;
    while (end < text.size() && text[end] != '?' && text[end] != '#')
        ++end;
    parts.path = text.sliced(pos, end - pos);
    pos = end;
    if (pos < text.size() && text[pos] == '?') {
        ++pos;
        end = pos;
        while (end < text.size() && text[end] != '#')
            ++end;
        parts.query = text.sliced(pos, end - pos);
        pos = end;
    }
    if (pos < text.size() && text[pos] == '#')
        parts.fragment = text.sliced(pos + 1);
    return parts;
}

bool isValidScheme(QByteArrayView scheme)
{
    if (scheme.isEmpty() || !isAlpha(scheme[0]))
        return false;
    for (const char c : scheme) {
        if (!isAlpha(c) && !isDigit(c) && c != '+' && c != '-' && c != '.')
            return false;
    }
    return true;
}

// The host of "userinfo@host:port", with the brackets of an IP literal; nothing when the
// authority breaks the RFC 3986 grammar.
std::optional<QByteArrayView> hostOfAuthority(QByteArrayView authority)
{
    const qsizetype at = authority.indexOf('@');
    if (at >= 0) {
        const QByteArrayView userInfo = authority.first(at);
        if (userInfo.contains('[') || userInfo.contains(']'))
            return std::nullopt;
        authority = authority.sliced(at + 1);
        if (authority.contains('@'))
            return std::nullopt;
    }
    qsizetype hostEnd = 0;
    if (authority.startsWith('[')) {
        hostEnd = authority.indexOf(']') + 1;
        if (hostEnd == 0 || authority.first(hostEnd).sliced(1).contains('['))
            return std::nullopt;
    } else {
        hostEnd = authority.indexOf(':');
        if (hostEnd < 0)
            hostEnd = authority.size();
        if (authority.first(hostEnd).contains('[') || authority.first(hostEnd).contains(']'))
            return std::nullopt;
    }
    const QByteArrayView port = authority.sliced(hostEnd);
    if (!port.isEmpty() && port[0] != ':')
        return std::nullopt;
    for (const char c : port.sliced(std::min<qsizetype>(1, port.size()))) {
        if (!isDigit(c))
            return std::nullopt;
    }
    return authority.first(hostEnd);
}

// The components of text if it follows the RFC 3986 grammar of a URI reference.
std::optional<Components> validComponents(QByteArrayView text)
{
    if (text.isEmpty())
        return std::nullopt;
    const Components parts = split(text);
    if (parts.scheme && !isValidScheme(*parts.scheme))
        return std::nullopt;
    // Without a valid scheme a colon may not stand in the first path segment (RFC 3986 4.2).
    if (!parts.scheme && !parts.authority) {
        const qsizetype slash = parts.path.indexOf('/');
        if (parts.path.first(slash < 0 ? parts.path.size() : slash).contains(':'))
            return std::nullopt;
    }
    if (parts.authority && !hostOfAuthority(*parts.authority))
        return std::nullopt;
    if (parts.fragment && parts.fragment->contains('#'))
        return std::nullopt;
    // Brackets belong to an IP literal host only; most addresses have none at all.
    const auto hasBracket = [](QByteArrayView piece) {
        return piece.contains('[') || piece.contains(']');
    };
    if (hasBracket(text) && (hasBracket(parts.path) || (parts.query && hasBracket(*parts.query)) ||
                             (parts.fragment && hasBracket(*parts.fragment))))
        return std::nullopt;
    return parts;
}

// RFC 3986 section 5.2.4.
QByteArray removeDotSegments(QByteArrayView input)
{
    QByteArray output;
    output.reserve(input.size());
    const auto dropLastSegment = [&output] {
        const qsizetype slash = output.lastIndexOf('/');
        output.truncate(slash < 0 ? 0 : slash);
    };
    while (!input.isEmpty()) {
        if (input.startsWith("../")) {
            input = input.sliced(3);
        } else if (input.startsWith("./")) {
            input = input.sliced(2);
        } else if (input.startsWith("/./")) {
            input = input.sliced(2);
        } else if (input == "/.") {
            output.append('/');
            input = {};
        } else if (input.startsWith("/../")) {
            input = input.sliced(3);
            dropLastSegment();
        } else if (input == "/..") {
            dropLastSegment();
            output.append('/');
            input = {};
        } else if (input == "." || input == "..") {
            input = {};
        } else {
            qsizetype end = input.indexOf('/', 1);
            if (end < 0)
                end = input.size();
            output.append(input.first(end));
            input = input.sliced(end);
        }
    }
    return output;
}

QByteArray mergePaths(const Components &base, QByteArrayView relativePath)
{
    if (base.authority && base.path.isEmpty())
        return "/" + relativePath.toByteArray();
    const qsizetype slash = base.path.lastIndexOf('/');
    return base.path.first(slash + 1).toByteArray() + relativePath.toByteArray();
}

// RFC 3986 section 5.3.
QByteArray recompose(const Components &parts)
{
    QByteArray text;
    if (parts.scheme)
        text += parts.scheme->toByteArray() + ':';
    if (parts.authority)
        text += "//" + parts.authority->toByteArray();
    else if (parts.path.startsWith("//"))
        // Without an authority, a path that starts with "//" would read back as one (a playlist at
        // "http:/.//evil.example/" must not send its lines to that host): "/." keeps it a path.
        text += "/.";
    text += parts.path.toByteArray();
    if (parts.query)
        text += '?' + parts.query->toByteArray();
    if (parts.fragment)
        text += '#' + parts.fragment->toByteArray();
    return text;
}

QString decodedOrRaw(QByteArrayView encoded)
{
    return WebAddress::percentDecoded(encoded).value_or(QString::fromLatin1(encoded));
}

} // namespace

std::optional<WebAddress> WebAddress::fromText(QStringView text)
{
    return fromText(text, WebAddress());
}

std::optional<WebAddress> WebAddress::fromAscii(QByteArrayView bytes)
{
    return fromAscii(bytes, WebAddress());
}

std::optional<WebAddress> WebAddress::fromText(QStringView text, const WebAddress &base)
{
    std::optional<QByteArray> ascii = allowedAscii(text);
    return ascii ? resolved(std::move(*ascii), base) : std::nullopt;
}

std::optional<WebAddress> WebAddress::fromAscii(QByteArrayView bytes, const WebAddress &base)
{
    return allowedBytes(bytes) ? resolved(bytes.toByteArray(), base) : std::nullopt;
}

std::optional<WebAddress> WebAddress::resolved(QByteArray ascii, const WebAddress &base)
{
    const std::optional<Components> parsed = validComponents(ascii);
    if (!parsed)
        return std::nullopt;
    // Only an absolute base (one with a scheme) resolves anything: against a relative one, the
    // dot segments could climb out of it and leave a first segment that reads as a scheme.
    if (parsed->scheme || base.isNull() || !base.hasScheme())
        return WebAddress(std::move(ascii));

    const Components &ref = *parsed;
    const Components baseParts = split(base.m_text);
    Components target;
    QByteArray path; // owns the path bytes that target.path points into
    target.scheme = baseParts.scheme;
    target.fragment = ref.fragment;
    if (ref.authority) {
        target.authority = ref.authority;
        path = removeDotSegments(ref.path);
        target.query = ref.query;
    } else {
        target.authority = baseParts.authority;
        if (ref.path.isEmpty()) {
            path = baseParts.path.toByteArray();
            target.query = ref.query ? ref.query : baseParts.query;
        } else {
            path = removeDotSegments(ref.path.startsWith('/') ? ref.path
                                                              : mergePaths(baseParts, ref.path));
            target.query = ref.query;
        }
    }
    target.path = path;
    return WebAddress(recompose(target));
}

WebAddress WebAddress::fromLocalFile(const QString &absolutePath)
{
    // Everything a path segment may hold literally stays as it is; the rest is percent-encoded.
    return WebAddress("file://" + absolutePath.toUtf8().toPercentEncoding("!$&'()*+,;=:@/"));
}

std::optional<QString> WebAddress::percentDecoded(QByteArrayView encoded)
{
    const QByteArray bytes = QByteArray::fromPercentEncoding(encoded.toByteArray());
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    QString decoded = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return decoded;
}

bool WebAddress::hasScheme() const
{
    return schemeOf(m_text).has_value();
}

QString WebAddress::scheme() const
{
    const auto scheme = schemeOf(m_text);
    return scheme ? QString::fromLatin1(*scheme) : QString();
}

// Compared as bytes, without making strings: a network list asks isWebAddress() of every logo.
bool WebAddress::isLocalFile() const
{
    return hasSchemeAmong({"file"});
}

bool WebAddress::isWebAddress() const
{
    return hasSchemeAmong({"http", "https"});
}

bool WebAddress::hasSchemeAmong(std::initializer_list<QByteArrayView> names) const
{
    const std::optional<QByteArrayView> scheme = schemeOf(m_text);
    return scheme && std::any_of(names.begin(), names.end(), [&scheme](QByteArrayView name) {
               return scheme->compare(name, Qt::CaseInsensitive) == 0;
           });
}

std::optional<QString> WebAddress::host() const
{
    const auto authority = split(m_text).authority;
    if (!authority)
        return std::nullopt;
    const std::optional<QByteArrayView> host = hostOfAuthority(*authority);
    if (!host || host->isEmpty())
        return std::nullopt;
    return decodedOrRaw(host->startsWith('[') ? host->sliced(1, host->size() - 2) : *host);
}

QString WebAddress::path() const
{
    return decodedOrRaw(split(m_text).path);
}

QStringList WebAddress::pathComponents() const
{
    const QString decoded = path();
    QStringList components;
    if (decoded.startsWith(u'/'))
        components.append(QStringLiteral("/"));
    for (const QStringView piece : QStringView(decoded).split(u'/', Qt::SkipEmptyParts))
        components.append(piece.toString());
    return components;
}

std::optional<QString> WebAddress::lastPathComponent() const
{
    const QByteArrayView path = split(m_text).path;
    qsizetype end = path.size();
    while (end > 1 && path[end - 1] == '/')
        --end;
    if (end == 1 && path[0] == '/')
        return QStringLiteral("/");
    const QByteArrayView trimmed = path.first(end);
    return percentDecoded(trimmed.sliced(trimmed.lastIndexOf('/') + 1));
}

QString WebAddress::pathExtension() const
{
    const std::optional<QString> last = lastPathComponent();
    if (!last)
        return {};
    const qsizetype dot = last->lastIndexOf(u'.');
    return dot > 0 ? last->sliced(dot + 1) : QString();
}

std::optional<QString> WebAddress::query() const
{
    const auto query = split(m_text).query;
    if (!query)
        return std::nullopt;
    return decodedOrRaw(*query);
}

QList<WebAddress::QueryItem> WebAddress::queryItems() const
{
    const auto query = split(m_text).query;
    QList<QueryItem> items;
    if (!query)
        return items;
    QByteArrayView rest = *query;
    while (true) {
        const qsizetype ampersand = rest.indexOf('&');
        const QByteArrayView piece = ampersand < 0 ? rest : rest.first(ampersand);
        const qsizetype equals = piece.indexOf('=');
        if (equals < 0)
            items.append({decodedOrRaw(piece), std::nullopt});
        else
            items.append(
                {decodedOrRaw(piece.first(equals)), decodedOrRaw(piece.sliced(equals + 1))});
        if (ampersand < 0)
            return items;
        rest = rest.sliced(ampersand + 1);
    }
}

QString WebAddress::toLocalFile() const
{
    return path();
}
