#pragma once

#include "Base/WebAddress.h"
#include "Playlist/ChannelGuideKeys.h"
#include "Playlist/GuideDownload.h"
#include "Playlist/GuideSchedule.h"
#include "Playlist/NetworkJob.h"
#include "Playlist/PlaylistEntry.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QThreadPool>
#include <QTimer>

#include <atomic>
#include <memory>
#include <optional>
#include <vector>

class NetworkThread;

// The programme guide of the network playlist: the guides its header names, after the one the
// user set, downloaded into the cache and read off the main thread, keeping only the playlist's
// channels over [now − 3 h, now + 36 h]. A new playlist cancels the guide of the last one; a guide
// that cannot be had never holds up the channels. It announces every programme boundary (and each
// minute, for progress) so that what is shown as on now follows the clock without reloading.
// Main thread.
class ProgrammeGuide : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString guideStatus READ statusName NOTIFY statusChanged)
    Q_PROPERTY(QString guideAddress READ addressText NOTIFY addressChanged)

public:
    enum class Status
    {
        none,
        loading,
        ready,
        partial,
        failed
    };

    static constexpr std::chrono::hours keptBefore{3};
    static constexpr std::chrono::hours keptAfter{36};
    static constexpr std::chrono::seconds downloadTimeout{30};
    static constexpr QStringView addressSettingsKey = u"guideAddress";

    // Guides are fetched on the network thread given.
    explicit ProgrammeGuide(std::shared_ptr<NetworkThread> network, QObject *parent = nullptr);
    ~ProgrammeGuide() override;

    // The playlist's channels, how guides may know them, and the guides its header names.
    void setPlaylist(const QList<PlaylistEntry> &entries, const ChannelGuideKeys &keys,
                     const QList<WebAddress> &headerGuides);
    // The user's own guide, kept in the settings and read before the playlist's; blank text
    // clears it. False, and nothing changes, when the text is no http, https or file address.
    bool setAddressText(const QString &text);
    QString addressText() const;
    // Asks every guide's server again now, however recently it was fetched.
    void refresh();
    void setDownloadLimits(GuideDownload::Limits limits) { m_limits = limits; }

    Status status() const { return m_status; }
    QString statusName() const;
    const GuideSchedule &schedule() const { return m_schedule; }
    // Milliseconds since 1970 UTC: the clock everything shown as "now" follows.
    static qint64 now();

Q_SIGNALS:
    void statusChanged();
    void addressChanged();
    void scheduleChanged();
    // A programme started or ended somewhere, or a minute went by.
    void clockAdvanced();
    // A message for the user that the guide was only partly read or could not be had: told once
    // per load and never as a dialog.
    void notice(const QString &message);

private:
    struct Reading;

    // Reads the guides again; what is shown stays until the new reading replaces it.
    void load(bool force);
    void dropSchedule();
    void downloaded(int generation, qsizetype index, const QString &path, const QString &failure);
    void read(int generation);
    void publish(int generation, Reading reading);
    void setStatus(Status status);
    void armClock();

    std::shared_ptr<NetworkThread> m_network;
    QList<PlaylistEntry> m_entries;
    ChannelGuideKeys m_keys;
    QList<WebAddress> m_headerGuides;
    std::optional<WebAddress> m_userGuide;
    GuideDownload::Limits m_limits{downloadTimeout};

    int m_generation = 0;
    std::shared_ptr<std::atomic_bool> m_cancelled;
    std::vector<NetworkJob> m_downloads;
    QList<std::pair<QString, QString>> m_fetched; // per guide: body path, or failure
    qsizetype m_pending = 0;

    // Reading a guide takes seconds of CPU: it runs only when the window and the playlist's own
    // work leave a core idle, on a thread of its own.
    QThreadPool m_readers;
    GuideSchedule m_schedule;
    Status m_status = Status::none;
    QTimer m_clock;
    QTimer m_refreshTimer;
};
