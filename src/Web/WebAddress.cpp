#include "Web/WebAddress.h"

#include <QStringDecoder>

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

// unreserved, gen-delims and sub-delims of RFC 3986; "%" is checked with its two hex digits.
bool isAllowedCharacter(char16_t c)
{
    if (c >= 0x80)
        return false;
    const auto a = char(c);
    if (isAlpha(a) || isDigit(a))
        return true;
    switch (a) {
    case '-':
    case '.':
    case '_':
    case '~': // unreserved
    case ':':
    case '/':
    case '?':
    case '#':
    case '[':
    case ']':
    case '@': // gen-delims
    case '!':
    case '$':
    case '&':
    case '\'':
    case '(':
    case ')':
    case '*':
    case '+':
    case ',':
    case ';':
    case '=': // sub-delims
        return true;
    default:
        return false;
    }
}

// The text as ASCII bytes, or nothing when it holds a character that no address may hold.
std::optional<QByteArray> allowedAscii(QStringView text)
{
    QByteArray ascii(text.size(), Qt::Uninitialized);
    char *out = ascii.data();
    const char16_t *chars = text.utf16();
    const qsizetype size = text.size();
    for (qsizetype i = 0; i < size; ++i) {
        const char16_t c = chars[i];
        if (c == u'%') {
            if (i + 2 >= size || chars[i + 1] >= 0x80 || chars[i + 2] >= 0x80 ||
                !isHexDigit(char(chars[i + 1])) || !isHexDigit(char(chars[i + 2])))
                return std::nullopt;
        } else if (!isAllowedCharacter(c)) {
            return std::nullopt;
        }
        out[i] = char(c);
    }
    return ascii;
}

Components split(QByteArrayView text)
{
    Components parts;
    qsizetype pos = 0;
    const qsizetype delimiter = [&] {
        for (qsizetype i = 0; i < text.size(); ++i) {
            const char c = text[i];
            if (c == ':' || c == '/' || c == '?' || c == '#')
                return i;
        }
        return text.size();
    }();
    if (delimiter > 0 && delimiter < text.size() && text[delimiter] == ':') {
        parts.scheme = text.first(delimiter);
        pos = delimiter + 1;
    }
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

struct HostPort
{
    QByteArrayView host; // with the brackets of an IP literal
    std::optional<QByteArrayView> port;
};

// Splits "userinfo@host:port"; nothing when the authority breaks the RFC 3986 grammar.
std::optional<HostPort> splitAuthority(QByteArrayView authority)
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
    HostPort result;
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
    result.host = authority.first(hostEnd);
    const QByteArrayView rest = authority.sliced(hostEnd);
    if (!rest.isEmpty()) {
        if (rest[0] != ':')
            return std::nullopt;
        result.port = rest.sliced(1);
        for (const char c : *result.port) {
            if (!isDigit(c))
                return std::nullopt;
        }
    }
    return result;
}

bool isValidReference(QByteArrayView text)
{
    if (text.isEmpty())
        return false;
    const Components parts = split(text);
    if (parts.scheme && !isValidScheme(*parts.scheme))
        return false;
    // Without a valid scheme a colon may not stand in the first path segment (RFC 3986 4.2).
    if (!parts.scheme && !parts.authority) {
        const qsizetype slash = parts.path.indexOf('/');
        if (parts.path.first(slash < 0 ? parts.path.size() : slash).contains(':'))
            return false;
    }
    if (parts.authority && !splitAuthority(*parts.authority))
        return false;
    const auto hasBracket = [](QByteArrayView piece) {
        return piece.contains('[') || piece.contains(']');
    };
    if (hasBracket(parts.path) || (parts.query && hasBracket(*parts.query)))
        return false;
    if (parts.fragment && (hasBracket(*parts.fragment) || parts.fragment->contains('#')))
        return false;
    return true;
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
    std::optional<QByteArray> ascii = allowedAscii(text);
    if (!ascii || !isValidReference(*ascii))
        return std::nullopt;
    return WebAddress(std::move(*ascii));
}

std::optional<WebAddress> WebAddress::fromText(QStringView text, const WebAddress &base)
{
    std::optional<WebAddress> reference = fromText(text);
    if (!reference || base.isNull())
        return reference;
    const Components ref = split(reference->m_text);
    if (ref.scheme)
        return reference;

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
    return split(m_text).scheme.has_value();
}

QString WebAddress::scheme() const
{
    const auto scheme = split(m_text).scheme;
    return scheme ? QString::fromLatin1(*scheme) : QString();
}

bool WebAddress::isLocalFile() const
{
    return scheme().compare(u"file", Qt::CaseInsensitive) == 0;
}

std::optional<QString> WebAddress::host() const
{
    const auto authority = split(m_text).authority;
    if (!authority)
        return std::nullopt;
    const auto hostPort = splitAuthority(*authority);
    if (!hostPort || hostPort->host.isEmpty())
        return std::nullopt;
    QByteArrayView host = hostPort->host;
    if (host.startsWith('['))
        host = host.sliced(1, host.size() - 2);
    return decodedOrRaw(host);
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
