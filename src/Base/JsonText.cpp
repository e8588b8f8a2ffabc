#include "Base/JsonText.h"

void JsonText::appendString(QByteArray &out, QStringView text)
{
    static constexpr char hexDigits[] = "0123456789abcdef";
    out.append('"');
    qsizetype plainStart = 0;
    const auto flushPlain = [&](qsizetype end) {
        if (end > plainStart)
            out.append(text.sliced(plainStart, end - plainStart).toUtf8());
    };
    const auto isPaired = [&text](qsizetype i) {
        const QChar c = text[i];
        return c.isHighSurrogate() ? i + 1 < text.size() && text[i + 1].isLowSurrogate()
                                   : i > 0 && text[i - 1].isHighSurrogate();
    };
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        // A surrogate without its other half has no UTF-8 form: it is written as an escape, so
        // that it reads back as it was instead of as "?".
        const bool loneSurrogate = QChar::isSurrogate(c) && !isPaired(i);
        if (c >= 0x20 && c != u'"' && c != u'\\' && c != u'/' && !loneSurrogate)
            continue;
        flushPlain(i);
        plainStart = i + 1;
        switch (c) {
        case u'"':
            out.append("\\\"");
            break;
        case u'\\':
            out.append("\\\\");
            break;
        case u'/':
            out.append("\\/");
            break;
        case u'\b':
            out.append("\\b");
            break;
        case u'\f':
            out.append("\\f");
            break;
        case u'\n':
            out.append("\\n");
            break;
        case u'\r':
            out.append("\\r");
            break;
        case u'\t':
            out.append("\\t");
            break;
        default:
            out.append("\\u");
            for (const int shift : {12, 8, 4, 0})
                out.append(hexDigits[(c >> shift) & 0xF]);
        }
    }
    flushPlain(text.size());
    out.append('"');
}

QByteArray JsonText::quoted(QStringView text)
{
    QByteArray out;
    appendString(out, text);
    return out;
}
