#pragma once

#include "Playlist/GuideProgramme.h"

#include <QDateTime>
#include <QLocale>
#include <QString>

// Programme times as the user's locale writes a clock time: "20:00", or "8:00 PM".
namespace GuideTimeText {
inline QString time(qint64 msecsSinceEpoch)
{
    return QLocale().toString(QDateTime::fromMSecsSinceEpoch(msecsSinceEpoch).time(),
                              QLocale::ShortFormat);
}

// "20:00 – 21:00"
inline QString span(const GuideProgramme &programme)
{
    return time(programme.start) + QStringLiteral(" \u2013 ") + time(programme.stop);
}
} // namespace GuideTimeText
