#pragma once

#include <QString>
#include <QtGlobal>

// One programme of a guide. Times are milliseconds since 1970 UTC.
struct GuideProgramme
{
    qint64 start = 0;
    qint64 stop = 0;
    QString title;
    QString subTitle;
    QString description;
    QString category;

    bool isOnAt(qint64 time) const { return start <= time && time < stop; }
    friend bool operator==(const GuideProgramme &, const GuideProgramme &) = default;
};
