#include "Base/JsonText.h"

namespace {

constexpr char hexDigits[] = "0123456789abcdef";

char *writeUnicodeEscape(char *out, char16_t c)
{
    *out++ = '\\';
    *out++ = 'u';
    for (const int shift : {12, 8, 4, 0})
        *out++ = hexDigits[(c >> shift) & 0xF];
    return out;
}

// The escape of an ASCII character that JSON text may not hold as it is; nothing for the rest.
const char *shortEscape(char16_t c)
{
    switch (c) {
    case u'"':
        return "\\\"";
    case u'\\':
        return "\\\\";
    case u'/':
        return "\\/";
    case u'\b':
        return "\\b";
    case u'\f':
        return "\\f";
    case u'\n':
        return "\\n";
    case u'\r':
        return "\\r";
    case u'\t':
        return "\\t";
    default:
        return nullptr;
    }
}

} // namespace

void JsonText::appendString(QByteArray &out, QStringView text)
{
    // Written straight into room made for the longest possible result (every unit a six-byte
    // escape), which is then cut to what was written: a million links are encoded without one
    // allocation per string.
    const qsizetype start = out.size();
    out.resize(start + text.size() * 6 + 2);
    char *at = out.data() + start;
    *at++ = '"';
    const char16_t *units = text.utf16();
    const qsizetype size = text.size();
    for (qsizetype i = 0; i < size; ++i) {
        const char16_t c = units[i];
        if (c >= 0x20 && c < 0x80 && c != u'"' && c != u'\\' && c != u'/') {
            *at++ = char(c);
        } else if (c < 0x80) {
            if (const char *escape = shortEscape(c)) {
                *at++ = escape[0];
                *at++ = escape[1];
            } else {
                at = writeUnicodeEscape(at, c);
            }
        } else if (c < 0x800) {
            *at++ = char(0xC0 | (c >> 6));
            *at++ = char(0x80 | (c & 0x3F));
        } else if (QChar::isHighSurrogate(c) && i + 1 < size &&
                   QChar::isLowSurrogate(units[i + 1])) {
            const char32_t code = QChar::surrogateToUcs4(c, units[++i]);
            *at++ = char(0xF0 | (code >> 18));
            *at++ = char(0x80 | ((code >> 12) & 0x3F));
            *at++ = char(0x80 | ((code >> 6) & 0x3F));
            *at++ = char(0x80 | (code & 0x3F));
        } else if (QChar::isSurrogate(c)) {
            // A surrogate without its other half has no UTF-8 form: it is written as an escape, so
            // that it reads back as it was instead of as "?".
            at = writeUnicodeEscape(at, c);
        } else {
            *at++ = char(0xE0 | (c >> 12));
            *at++ = char(0x80 | ((c >> 6) & 0x3F));
            *at++ = char(0x80 | (c & 0x3F));
        }
    }
    *at++ = '"';
    out.truncate(at - out.constData());
}

void JsonText::appendAscii(QByteArray &out, QByteArrayView text)
{
    const qsizetype start = out.size();
    out.resize(start + text.size() * 6 + 2);
    char *at = out.data() + start;
    *at++ = '"';
    for (const char c : text) {
        const char16_t unit = uchar(c);
        if (unit >= 0x20 && unit < 0x80 && c != '"' && c != '\\' && c != '/') {
            *at++ = c;
        } else if (unit >= 0x80) { // read as Latin-1, as WebAddress::text() does
            *at++ = char(0xC0 | (unit >> 6));
            *at++ = char(0x80 | (unit & 0x3F));
        } else if (const char *escape = shortEscape(unit)) {
            *at++ = escape[0];
            *at++ = escape[1];
        } else {
            at = writeUnicodeEscape(at, unit);
        }
    }
    *at++ = '"';
    out.truncate(at - out.constData());
}

QByteArray JsonText::quoted(QStringView text)
{
    QByteArray out;
    appendString(out, text);
    return out;
}
