#include "App/MprisPlayerAdaptor.h"

#include "Player/PlayerModel.h"
#include "Player/PlayerTiming.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double microseconds = 1e6;
// MPRIS's id for "nothing plays".
const QString noTrack = QStringLiteral("/org/mpris/MediaPlayer2/TrackList/NoTrack");

} // namespace

MprisPlayerAdaptor::MprisPlayerAdaptor(QObject *host, PlayerModel &model,
                                       std::function<void(const QString &)> open)
    : QDBusAbstractAdaptor(host), m_model(model), m_open(std::move(open))
{}

bool MprisPlayerAdaptor::hasMedia() const
{
    return m_model.currentURL() || m_model.youtubeContent() || m_model.okVideoContent();
}

QString MprisPlayerAdaptor::playbackStatus() const
{
    if (m_model.isPlaying())
        return QStringLiteral("Playing");
    return hasMedia() ? QStringLiteral("Paused") : QStringLiteral("Stopped");
}

bool MprisPlayerAdaptor::canSeek() const
{
    return hasMedia() && !m_model.isLiveStream() && std::isfinite(m_model.duration()) &&
           m_model.duration() > 0;
}

QDBusObjectPath MprisPlayerAdaptor::trackId() const
{
    if (!hasMedia())
        return QDBusObjectPath(noTrack);
    return QDBusObjectPath(QStringLiteral("/app/velmplayerpro/track/") +
                           m_model.mediaLoadID().toString(QUuid::Id128));
}

std::optional<QString> MprisPlayerAdaptor::channelLogo() const
{
    const PlaylistEntry *playing = m_model.playingEntry();
    if (!playing || !playing->logoURL)
        return std::nullopt;
    return playing->logoURL->text();
}

QVariantMap MprisPlayerAdaptor::metadata() const
{
    QVariantMap data{{QStringLiteral("mpris:trackid"), QVariant::fromValue(trackId())}};
    if (!hasMedia())
        return data;
    data.insert(QStringLiteral("xesam:title"), m_model.title());
    if (canSeek())
        data.insert(QStringLiteral("mpris:length"),
                    qlonglong(std::llround(m_model.duration() * microseconds)));
    if (const std::optional<WebAddress> &url = m_model.currentURL())
        data.insert(QStringLiteral("xesam:url"), url->text());
    if (const std::optional<QString> logo = channelLogo())
        data.insert(QStringLiteral("mpris:artUrl"), *logo);
    return data;
}

double MprisPlayerAdaptor::volume() const
{
    return m_model.volume();
}

void MprisPlayerAdaptor::setVolume(double volume)
{
    if (std::isfinite(volume))
        m_model.setVolume(std::clamp(volume, 0.0, 1.0));
}

qlonglong MprisPlayerAdaptor::position() const
{
    const double seconds = m_model.currentTime();
    return std::isfinite(seconds) ? qlonglong(std::llround(seconds * microseconds)) : 0;
}

void MprisPlayerAdaptor::Next()
{
    if (canSeek())
        m_model.skip(PlayerTiming::mediaKeySkip);
}

void MprisPlayerAdaptor::Previous()
{
    if (canSeek())
        m_model.skip(-PlayerTiming::mediaKeySkip);
}

void MprisPlayerAdaptor::Pause()
{
    if (m_model.isPlaying())
        m_model.togglePlayback();
}

void MprisPlayerAdaptor::PlayPause()
{
    if (hasMedia())
        m_model.togglePlayback();
}

void MprisPlayerAdaptor::Stop()
{
    m_model.stop();
}

void MprisPlayerAdaptor::Play()
{
    if (hasMedia() && !m_model.isPlaying())
        m_model.togglePlayback();
}

void MprisPlayerAdaptor::Seek(qlonglong offset)
{
    if (canSeek())
        m_model.skip(double(offset) / microseconds);
}

void MprisPlayerAdaptor::SetPosition(const QDBusObjectPath &track, qlonglong position)
{
    // A position for a track that no longer plays, or outside this one, is ignored.
    const double seconds = double(position) / microseconds;
    if (canSeek() && track == trackId() && seconds >= 0 && seconds <= m_model.duration())
        m_model.seek(seconds);
}

void MprisPlayerAdaptor::OpenUri(const QString &uri)
{
    m_open(uri);
}
