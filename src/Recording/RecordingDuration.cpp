#include "Recording/RecordingDuration.h"

#include "Recording/RecordingTexts.h"

#include <QByteArray>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace {

struct Unit
{
    QStringView suffix;
    double seconds;
};

// Longer spellings first: "2hours" must not stop at its final "s" or its "h".
constexpr std::array<Unit, 10> units{{{u"hours", 3600},
                                      {u"hour", 3600},
                                      {u"hrs", 3600},
                                      {u"hr", 3600},
                                      {u"h", 3600},
                                      {u"minutes", 60},
                                      {u"minute", 60},
                                      {u"mins", 60},
                                      {u"min", 60},
                                      {u"m", 60}}};

constexpr double shortest = 1;
constexpr double longest = 999 * 3600;

// The whole text as one decimal number, a leading "+" allowed; nothing for anything else.
std::optional<double> wholeNumber(QStringView text)
{
    if (text.startsWith(u'+'))
        text = text.mid(1);
    if (text.isEmpty() || text.startsWith(u'+') || text.startsWith(u'-'))
        return std::nullopt;
    for (const QChar c : text) {
        if (c.unicode() > 0x7f)
            return std::nullopt;
    }
    const QByteArray ascii = text.toLatin1();
    double value = 0;
    const auto [end, error] = std::from_chars(ascii.data(), ascii.data() + ascii.size(), value);
    if (error != std::errc() || end != ascii.data() + ascii.size())
        return std::nullopt;
    return value;
}

QString twoDigits(long long value)
{
    return QString::number(value).rightJustified(2, u'0');
}

} // namespace

std::optional<double> parseRecordingDuration(QStringView text)
{
    QString normalized = text.toString().toLower();
    normalized.replace(u',', u'.');
    normalized.remove(u' ');
    const auto unit = std::find_if(units.begin(), units.end(), [&](const Unit &candidate) {
        return normalized.endsWith(candidate.suffix);
    });
    if (unit == units.end())
        return std::nullopt;
    const std::optional<double> number =
        wholeNumber(QStringView(normalized).chopped(unit->suffix.size()));
    if (!number || !std::isfinite(*number))
        return std::nullopt;
    const double seconds = *number * unit->seconds;
    if (!(seconds >= shortest && seconds <= longest))
        return std::nullopt;
    return seconds;
}

QString formatDuration(double seconds)
{
    const long long whole =
        std::isfinite(seconds) && seconds > 0 ? static_cast<long long>(std::trunc(seconds)) : 0;
    const long long hours = whole / 3600;
    const long long minutes = whole % 3600 / 60;
    const long long rest = whole % 60;
    if (hours > 0)
        return QString::number(hours) + u':' + twoDigits(minutes) + u':' + twoDigits(rest);
    return twoDigits(minutes) + u':' + twoDigits(rest);
}

QString recordingPanelText(double elapsed, std::optional<double> stopAfter)
{
    QString text = RecordingTexts::panelRecording.toString() + formatDuration(elapsed);
    if (stopAfter) {
        text += RecordingTexts::panelLeft;
        text += formatDuration(std::max(*stopAfter - elapsed, 0.0));
    }
    return text;
}
