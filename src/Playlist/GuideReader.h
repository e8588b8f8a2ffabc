#pragma once

#include "Playlist/GuideProgramme.h"

#include <QHash>
#include <QList>
#include <QString>

#include <atomic>

class QIODevice;

// Reads a programme guide (XMLTV) as a stream, keeping only what a loaded channel list can show:
// programmes of its channels that overlap a window of time. Guides of hundreds of megabytes pass
// through without being held; pure apart from reading its device, so it runs on any thread.
class GuideReader
{
public:
    // A channel of the list as a guide may know it.
    struct Channel
    {
        QString tvgID;
        QString tvgName;
        QString name;
    };

    struct Result
    {
        // For each channel given, its programmes in order of start.
        QList<QList<GuideProgramme>> programmes;
        // False when the guide broke off (malformed or cut short): what came before is kept.
        bool complete = true;
        QString error;
    };

    // Texts longer than these are cut: a guide's descriptions can run to pages.
    static constexpr qsizetype maxTitleLength = 200;
    static constexpr qsizetype maxDescriptionLength = 1000;

    // window: programmes that end after windowStart and start before windowEnd are kept.
    GuideReader(const QList<Channel> &channels, qint64 windowStart, qint64 windowEnd);

    // Reads device to its end, or until cancelled becomes true (the result is then incomplete).
    Result read(QIODevice &device, const std::atomic_bool *cancelled = nullptr) const;

private:
    class Run;

    // A channel of the list takes the guide's channel that its tvg-id names (any letter case); one
    // whose tvg-id names none takes those with a display name equal to its tvg-name or its name.
    // Programmes of channels the guide never declared go to the list's channels of that id that
    // took no declared channel.
    QHash<QString, QList<int>> m_byID;
    QHash<QString, QList<int>> m_byName;
    qsizetype m_channelCount;
    qint64 m_windowStart;
    qint64 m_windowEnd;
};
