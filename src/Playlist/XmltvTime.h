#pragma once

#include <QByteArrayView>
#include <QtGlobal>

#include <optional>

// Times of programme guides (XMLTV): "YYYYMMDDhhmmss +hhmm". The seconds, the minutes or the
// whole clock time may be left out (as zero), the offset may be written with or without the
// space and with or without a colon, "Z" or no offset means UTC, and text after the offset is
// ignored. Pure; any thread.
namespace XmltvTime {
// Milliseconds since 1970 UTC, or nothing for a time that names no real moment (a 13th month,
// 25 o'clock, an offset beyond 18 hours, letters where digits belong).
std::optional<qint64> parse(QByteArrayView text);
} // namespace XmltvTime
