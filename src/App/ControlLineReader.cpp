#include "App/ControlLineReader.h"

#include <algorithm>

QList<ControlLineReader::Line> ControlLineReader::feed(QByteArrayView bytes)
{
    QList<Line> lines;
    m_pending.append(bytes);
    qsizetype start = 0;
    for (qsizetype end; (end = m_pending.indexOf('\n', std::max(start, m_scanned))) >= 0;
         start = end + 1) {
        const qsizetype length = end - start;
        if (m_discarding)
            m_discarding = false; // the end of a line already refused
        else if (length > maximumLineLength)
            lines.append({{}, true});
        else
            lines.append({m_pending.sliced(start, length), false});
    }
    m_pending.remove(0, start);
    m_scanned = m_pending.size();
    if (m_pending.size() > maximumLineLength) {
        m_pending.clear();
        m_scanned = 0;
        if (!m_discarding)
            lines.append({{}, true});
        m_discarding = true;
    }
    return lines;
}
