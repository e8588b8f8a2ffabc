#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

// Splits what a control-socket client sends into lines, however the bytes arrive. Each byte is
// searched for a line break once, so a long line sent in many small pieces costs linear time, and
// no line longer than the limit is ever handed out or held: it comes out once as too long, as
// soon as it passes the limit, and the rest of it up to its line break is dropped.
class ControlLineReader
{
public:
    // Lines longer than this are refused instead of growing the buffer without end.
    static constexpr qsizetype maximumLineLength = 1 << 20;

    struct Line
    {
        QByteArray text; // without its line break; empty when too long
        bool tooLong = false;
    };

    // The lines that these bytes complete, in order.
    QList<Line> feed(QByteArrayView bytes);

private:
    QByteArray m_pending;
    qsizetype m_scanned = 0; // m_pending holds no line break before this
    bool m_discarding = false;
};
