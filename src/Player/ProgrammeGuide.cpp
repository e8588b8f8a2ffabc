#include "Player/ProgrammeGuide.h"

#include "Base/BackgroundRelease.h"
#include "Base/BackgroundTask.h"
#include "Player/PlayerTexts.h"
#include "Playlist/GuideCache.h"
#include "Playlist/GuideReader.h"
#include "Playlist/InflatingDevice.h"

#include <QDateTime>
#include <QFile>
#include <QSettings>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {
// A compressed guide may not inflate beyond this: a few kilobytes must not become an endless file.
constexpr qint64 maxInflatedBytes = qint64(8) << 30;
constexpr qint64 clockTickMs = 60'000;

std::optional<WebAddress> guideAddress(const QString &text)
{
    const std::optional<WebAddress> address = WebAddress::fromText(text.trimmed());
    if (!address || !(address->isWebAddress() || address->isLocalFile()))
        return std::nullopt;
    return address;
}
} // namespace

struct ProgrammeGuide::Reading
{
    GuideSchedule schedule;
    qsizetype guidesRead = 0;
    QString problem; // the first guide's failure or fault, if any
};

ProgrammeGuide::ProgrammeGuide(std::shared_ptr<NetworkThread> network, QObject *parent)
    : QObject(parent), m_network(std::move(network))
{
    m_userGuide = guideAddress(QSettings().value(addressSettingsKey.toString()).toString());
    m_readers.setMaxThreadCount(1);
    m_readers.setThreadPriority(QThread::IdlePriority);
    m_clock.setSingleShot(true);
    m_clock.setTimerType(Qt::PreciseTimer);
    connect(&m_clock, &QTimer::timeout, this, [this] {
        Q_EMIT clockAdvanced();
        armClock();
    });
    m_refreshTimer.setInterval(
        std::chrono::duration_cast<std::chrono::milliseconds>(GuideCache::refreshInterval));
    connect(&m_refreshTimer, &QTimer::timeout, this, [this] { load(false); });
}

ProgrammeGuide::~ProgrammeGuide()
{
    if (m_cancelled)
        *m_cancelled = true;
    m_readers.waitForDone();
}

qint64 ProgrammeGuide::now()
{
    return QDateTime::currentMSecsSinceEpoch();
}

QString ProgrammeGuide::statusName() const
{
    switch (m_status) {
    case Status::none:
        return u"none"_s;
    case Status::loading:
        return u"loading"_s;
    case Status::ready:
        return u"ready"_s;
    case Status::partial:
        return u"partial"_s;
    case Status::failed:
        return u"failed"_s;
    }
    return {};
}

QString ProgrammeGuide::addressText() const
{
    return m_userGuide ? QString::fromUtf8(m_userGuide->bytes()) : QString();
}

bool ProgrammeGuide::setAddressText(const QString &text)
{
    std::optional<WebAddress> address;
    if (!text.trimmed().isEmpty()) {
        address = guideAddress(text);
        if (!address)
            return false;
    }
    if (address == m_userGuide)
        return true;
    m_userGuide = address;
    QSettings settings;
    if (address)
        settings.setValue(addressSettingsKey.toString(), addressText());
    else
        settings.remove(addressSettingsKey.toString());
    Q_EMIT addressChanged();
    load(false);
    return true;
}

void ProgrammeGuide::setPlaylist(const QList<PlaylistEntry> &entries, const ChannelGuideKeys &keys,
                                 const QList<WebAddress> &headerGuides)
{
    m_entries = entries;
    m_keys = keys;
    m_headerGuides = headerGuides;
    dropSchedule();
    load(false);
}

void ProgrammeGuide::dropSchedule()
{
    m_clock.stop();
    if (m_schedule.isEmpty())
        return;
    // A schedule of thousands of channels is let go of on a worker thread, a step at a time.
    releaseInSteps(std::exchange(m_schedule, {}),
                   [](GuideSchedule &doomed) { return doomed.freeProgrammes(releaseStep); });
    Q_EMIT scheduleChanged();
}

void ProgrammeGuide::refresh()
{
    load(true);
}

void ProgrammeGuide::setStatus(Status status)
{
    if (status == m_status)
        return;
    m_status = status;
    Q_EMIT statusChanged();
}

void ProgrammeGuide::load(bool force)
{
    // Whatever the last load still does is dropped: its downloads stop, its reading ends early.
    ++m_generation;
    if (m_cancelled)
        *m_cancelled = true;
    m_cancelled = std::make_shared<std::atomic_bool>(false);
    m_downloads.clear();

    QList<WebAddress> guides;
    if (m_userGuide)
        guides.append(*m_userGuide);
    for (const WebAddress &guide : std::as_const(m_headerGuides))
        if (!guides.contains(guide))
            guides.append(guide);
    if (m_entries.isEmpty() || guides.isEmpty()) {
        m_refreshTimer.stop();
        dropSchedule();
        setStatus(Status::none);
        return;
    }
    setStatus(Status::loading);
    m_refreshTimer.start();
    m_fetched = QList<std::pair<QString, QString>>(guides.size());
    m_pending = guides.size();
    const int generation = m_generation;
    for (qsizetype i = 0; i < guides.size(); ++i) {
        auto *download =
            new GuideDownload(GuideCache(GuideCache::defaultFolder()), guides[i], m_limits, force);
        connect(
            download, &GuideDownload::finished, this,
            [this, generation, i](const QString &path, const QString &failure) {
                downloaded(generation, i, path, failure);
            },
            Qt::QueuedConnection);
        m_downloads.emplace_back(m_network, download, [download](QNetworkAccessManager &manager) {
            download->start(manager);
        });
    }
}

void ProgrammeGuide::downloaded(int generation, qsizetype index, const QString &path,
                                const QString &failure)
{
    if (generation != m_generation)
        return;
    m_fetched[index] = {path, failure};
    if (--m_pending == 0)
        read(generation);
}

void ProgrammeGuide::read(int generation)
{
    const qint64 time = now();
    const qint64 from = time - std::chrono::milliseconds(keptBefore).count();
    const qint64 until = time + std::chrono::milliseconds(keptAfter).count();
    runInBackground(
        m_readers, this,
        [entries = m_entries, keys = m_keys, fetched = m_fetched, from, until,
         cancelled = m_cancelled] {
            // The channels are indexed for the first guide there is: when every download failed,
            // as when a list names a guide that is gone, that work is not done at all.
            std::optional<GuideReader> reader;
            const auto readerOfChannels = [&]() -> const GuideReader & {
                if (!reader) {
                    QList<GuideReader::Channel> channels;
                    channels.reserve(entries.size());
                    for (qsizetype i = 0; i < entries.size(); ++i) {
                        const ChannelGuideKey key = keys.at(i);
                        channels.append({key.tvgID, key.tvgName, entries[i].name});
                    }
                    reader.emplace(channels, from, until);
                }
                return *reader;
            };
            Reading reading{GuideSchedule(entries), 0, {}};
            for (const auto &[path, failure] : fetched) {
                if (path.isEmpty()) {
                    if (reading.problem.isEmpty())
                        reading.problem = failure;
                    continue;
                }
                QFile file(path);
                if (!file.open(QIODevice::ReadOnly)) {
                    if (reading.problem.isEmpty())
                        reading.problem = file.errorString();
                    continue;
                }
                InflatingDevice guide(file, maxInflatedBytes);
                guide.open(QIODevice::ReadOnly);
                GuideReader::Result result = readerOfChannels().read(guide, cancelled.get());
                if (*cancelled)
                    break;
                reading.schedule.addGuide(result.programmes);
                if (!result.complete && reading.problem.isEmpty())
                    reading.problem = result.error;
                // A guide that broke off still counts when it gave something before.
                const bool gaveSome =
                    std::any_of(result.programmes.cbegin(), result.programmes.cend(),
                                [](const auto &list) { return !list.isEmpty(); });
                if (result.complete || gaveSome)
                    ++reading.guidesRead;
            }
            return reading;
        },
        [this, generation](Reading reading) { publish(generation, std::move(reading)); });
}

void ProgrammeGuide::publish(int generation, Reading reading)
{
    if (generation != m_generation)
        return;
    dropSchedule();
    m_schedule = std::move(reading.schedule);
    Q_EMIT scheduleChanged();
    armClock();
    if (reading.guidesRead == 0) {
        setStatus(Status::failed);
        Q_EMIT notice(PlayerTexts::guideFailed.toString().arg(reading.problem));
    } else if (!reading.problem.isEmpty()) {
        setStatus(Status::partial);
        Q_EMIT notice(PlayerTexts::guidePartlyRead.toString());
    } else {
        setStatus(Status::ready);
    }
}

void ProgrammeGuide::armClock()
{
    if (m_schedule.isEmpty())
        return;
    const qint64 time = now();
    qint64 wait = clockTickMs - time % clockTickMs;
    if (const std::optional<qint64> change = m_schedule.nextChangeAfter(time))
        wait = std::min(wait, *change - time + 1);
    m_clock.start(int(std::max<qint64>(wait, 1)));
}
