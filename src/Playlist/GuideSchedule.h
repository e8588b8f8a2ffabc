#pragma once

#include "Playlist/GuideProgramme.h"
#include "Playlist/PlaylistEntry.h"

#include <QHash>
#include <QList>
#include <QUuid>

#include <optional>
#include <vector>

// What is on, and when, for the channels of one playlist: the programmes its guides gave each
// channel, looked up by the channel's id. Pure and cheap to copy (its lists are shared), so it is
// built on a worker thread and handed to the window whole.
class GuideSchedule
{
public:
    GuideSchedule() = default;
    explicit GuideSchedule(const QList<PlaylistEntry> &entries);

    // A guide's programmes for each entry, in the entries' order. A channel keeps what an earlier
    // guide gave it; one that has none yet takes this guide's, so the guides named first win and
    // the programmes of two guides never interleave.
    void addGuide(const QList<QList<GuideProgramme>> &programmes);

    bool isEmpty() const { return m_programmes.isEmpty(); }
    qsizetype channelCount() const { return m_programmes.size(); }
    bool hasProgrammes(const QUuid &channel) const { return m_programmes.contains(channel); }
    // The programme on the channel at the time (milliseconds since 1970 UTC).
    std::optional<GuideProgramme> onAt(const QUuid &channel, qint64 time) const;
    // The first programme that starts after the time.
    std::optional<GuideProgramme> nextAfter(const QUuid &channel, qint64 time) const;
    // The programmes that are on at some moment of [from, until), in order.
    QList<GuideProgramme> between(const QUuid &channel, qint64 from, qint64 until) const;
    // The first moment after the time at which a programme of any channel starts or ends.
    std::optional<qint64> nextChangeAfter(qint64 time) const;

    // Frees the programmes of channels, at least count of them unless fewer are left, for a
    // schedule that is let go of a step at a time. Returns whether any are left.
    bool freeProgrammes(qsizetype count);

private:
    // The index of the first programme of list that ends after time.
    static qsizetype firstEndingAfter(const QList<GuideProgramme> &list, qint64 time);

    QList<QUuid> m_ids;
    QHash<QUuid, QList<GuideProgramme>> m_programmes;
    std::vector<qint64> m_changes; // sorted, each once
};
