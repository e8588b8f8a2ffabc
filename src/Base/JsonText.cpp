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
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c >= 0x20 && c != u'"' && c != u'\\' && c != u'/')
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
            out.append("\\u00");
            out.append(hexDigits[c >> 4]);
            out.append(hexDigits[c & 0xF]);
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
