#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>
#include <QVariantMap>

#include <functional>
#include <optional>

class PlayerModel;

// The player's controls over MPRIS2 (org.mpris.MediaPlayer2.Player), which media keys and the
// desktop's player widgets use. Every call goes to the player model, as the window's controls do;
// Next and Previous are the skip steps forwards and back. Times are microseconds.
class MprisPlayerAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
    Q_PROPERTY(QString PlaybackStatus READ playbackStatus)
    Q_PROPERTY(double Rate READ rate WRITE setRate)
    Q_PROPERTY(double MinimumRate READ rate)
    Q_PROPERTY(double MaximumRate READ rate)
    Q_PROPERTY(QVariantMap Metadata READ metadata)
    Q_PROPERTY(double Volume READ volume WRITE setVolume)
    Q_PROPERTY(qlonglong Position READ position)
    Q_PROPERTY(bool CanGoNext READ canSeek)
    Q_PROPERTY(bool CanGoPrevious READ canSeek)
    Q_PROPERTY(bool CanPlay READ hasMedia)
    Q_PROPERTY(bool CanPause READ hasMedia)
    Q_PROPERTY(bool CanSeek READ canSeek)
    Q_PROPERTY(bool CanControl READ canControl)

public:
    // open: what the command line does with a file or an address.
    MprisPlayerAdaptor(QObject *host, PlayerModel &model,
                       std::function<void(const QString &)> open);

    // "Playing", "Paused" or "Stopped".
    QString playbackStatus() const;
    double rate() const { return 1; }
    // The player plays at its own pace only.
    void setRate(double) {}
    QVariantMap metadata() const;
    double volume() const;
    void setVolume(double volume);
    qlonglong position() const;
    bool hasMedia() const;
    // Media with a known end: live streams and media still opening cannot be sought.
    bool canSeek() const;
    bool canControl() const { return true; }

    // The id of what plays: one for each load, so a client can tell loads apart.
    QDBusObjectPath trackId() const;

public Q_SLOTS:
    void Next();
    void Previous();
    void Pause();
    void PlayPause();
    void Stop();
    void Play();
    void Seek(qlonglong offset);
    void SetPosition(const QDBusObjectPath &trackId, qlonglong position);
    void OpenUri(const QString &uri);

Q_SIGNALS:
    void Seeked(qlonglong position);

private:
    // The logo of the channel that plays, when the loaded list has one.
    std::optional<QString> channelLogo() const;

    PlayerModel &m_model;
    std::function<void(const QString &)> m_open;
};
