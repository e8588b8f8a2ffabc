#include "Playlist/GuideSchedule.h"

#include <algorithm>

GuideSchedule::GuideSchedule(const QList<PlaylistEntry> &entries)
{
    m_ids.reserve(entries.size());
    for (const PlaylistEntry &entry : entries)
        m_ids.append(entry.id);
}

void GuideSchedule::addGuide(const QList<QList<GuideProgramme>> &programmes)
{
    const qsizetype count = std::min(programmes.size(), m_ids.size());
    for (qsizetype i = 0; i < count; ++i) {
        if (programmes[i].isEmpty() || m_programmes.contains(m_ids[i]))
            continue;
        m_programmes.insert(m_ids[i], programmes[i]);
        for (const GuideProgramme &programme : programmes[i]) {
            m_changes.push_back(programme.start);
            m_changes.push_back(programme.stop);
        }
    }
    std::sort(m_changes.begin(), m_changes.end());
    m_changes.erase(std::unique(m_changes.begin(), m_changes.end()), m_changes.end());
}

qsizetype GuideSchedule::firstEndingAfter(const QList<GuideProgramme> &list, qint64 time)
{
    // Programmes of one channel follow each other, so their stops rise with their starts.
    return std::partition_point(list.begin(), list.end(),
                                [time](const GuideProgramme &p) { return p.stop <= time; }) -
           list.begin();
}

std::optional<GuideProgramme> GuideSchedule::onAt(const QUuid &channel, qint64 time) const
{
    const auto found = m_programmes.constFind(channel);
    if (found == m_programmes.cend())
        return std::nullopt;
    const qsizetype at = firstEndingAfter(*found, time);
    if (at < found->size() && found->at(at).isOnAt(time))
        return found->at(at);
    return std::nullopt;
}

std::optional<GuideProgramme> GuideSchedule::nextAfter(const QUuid &channel, qint64 time) const
{
    const auto found = m_programmes.constFind(channel);
    if (found == m_programmes.cend())
        return std::nullopt;
    for (qsizetype at = firstEndingAfter(*found, time); at < found->size(); ++at)
        if (found->at(at).start > time)
            return found->at(at);
    return std::nullopt;
}

QList<GuideProgramme> GuideSchedule::between(const QUuid &channel, qint64 from, qint64 until) const
{
    QList<GuideProgramme> shown;
    const auto found = m_programmes.constFind(channel);
    if (found == m_programmes.cend())
        return shown;
    for (qsizetype at = firstEndingAfter(*found, from);
         at < found->size() && found->at(at).start < until; ++at)
        shown.append(found->at(at));
    return shown;
}

std::optional<qint64> GuideSchedule::nextChangeAfter(qint64 time) const
{
    const auto next = std::upper_bound(m_changes.begin(), m_changes.end(), time);
    if (next == m_changes.end())
        return std::nullopt;
    return *next;
}

bool GuideSchedule::freeProgrammes(qsizetype count)
{
    // Programmes another copy of the schedule still holds only lose a reference, at once.
    if (!m_programmes.isDetached()) {
        m_programmes = {};
        return false;
    }
    qsizetype freed = 0;
    for (auto channel = m_programmes.begin(); channel != m_programmes.end() && freed < count;) {
        freed += channel->size();
        channel = m_programmes.erase(channel);
    }
    return !m_programmes.isEmpty();
}
