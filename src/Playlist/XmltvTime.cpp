#include "Playlist/XmltvTime.h"

#include <QDate>

namespace {

// The number in text[from, from + count), all digits; -1 otherwise.
int digits(QByteArrayView text, qsizetype from, qsizetype count)
{
    if (from + count > text.size())
        return -1;
    int value = 0;
    for (qsizetype i = from; i < from + count; ++i) {
        const char c = text[i];
        if (c < '0' || c > '9')
            return -1;
        value = value * 10 + (c - '0');
    }
    return value;
}

// Seconds east of UTC written at the start of text ("+0100", "-05:30", "Z"); nothing when text
// starts with something else. Empty text is UTC.
std::optional<int> offsetSeconds(QByteArrayView text)
{
    if (text.isEmpty() || text.front() == 'Z')
        return 0;
    if (text.front() != '+' && text.front() != '-')
        return std::nullopt;
    const int sign = text.front() == '-' ? -1 : 1;
    const qsizetype minutesAt = text.size() > 3 && text[3] == ':' ? 4 : 3;
    const int hours = digits(text, 1, 2);
    const int minutes = digits(text, minutesAt, 2);
    if (hours < 0 || minutes < 0 || hours > 18 || minutes > 59)
        return std::nullopt;
    return sign * (hours * 3600 + minutes * 60);
}

} // namespace

std::optional<qint64> XmltvTime::parse(QByteArrayView text)
{
    text = text.trimmed();
    qsizetype clockDigits = 0;
    while (8 + clockDigits < text.size() && clockDigits < 6 && text[8 + clockDigits] >= '0' &&
           text[8 + clockDigits] <= '9')
        ++clockDigits;
    if (clockDigits % 2 != 0)
        return std::nullopt;
    const int year = digits(text, 0, 4);
    const int month = digits(text, 4, 2);
    const int day = digits(text, 6, 2);
    if (year < 0 || month < 0 || day < 0)
        return std::nullopt;
    const QDate date(year, month, day);
    const int hour = clockDigits >= 2 ? digits(text, 8, 2) : 0;
    const int minute = clockDigits >= 4 ? digits(text, 10, 2) : 0;
    const int second = clockDigits >= 6 ? digits(text, 12, 2) : 0;
    if (!date.isValid() || hour > 23 || minute > 59 || second > 59)
        return std::nullopt;
    const std::optional<int> offset = offsetSeconds(text.sliced(8 + clockDigits).trimmed());
    if (!offset)
        return std::nullopt;
    const qint64 days = QDate(1970, 1, 1).daysTo(date);
    const qint64 seconds = days * 86400 + hour * 3600 + minute * 60 + second - *offset;
    return seconds * 1000;
}
