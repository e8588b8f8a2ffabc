#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QSet>
#include <QString>

#include <functional>

class MprisPlayerAdaptor;
class PlayerModel;

// The player on the session bus as an MPRIS2 media player, so that media keys, the desktop's
// player widgets and tools such as playerctl see and drive it. Announces each change of what
// clients show with PropertiesChanged, and jumps of the position with Seeked.
class MprisService : public QObject
{
    Q_OBJECT

public:
    struct Actions
    {
        std::function<void()> raise;
        std::function<void(const QString &)> open;
    };

    MprisService(PlayerModel &model, Actions actions, QObject *parent = nullptr);
    ~MprisService() override;

    // Takes "org.mpris.MediaPlayer2.velmplayerpro", or a name of this process's own beside it when
    // another player holds it. False without a session bus.
    bool publish();

private:
    // Properties of the player interface whose values clients show.
    void markChanged(std::initializer_list<const char *> names);
    void announceChanges();
    // A position that moved other than by playing is a seek, whoever asked for it.
    void watchPosition();

    PlayerModel &m_model;
    MprisPlayerAdaptor *m_player;
    QString m_serviceName;
    QSet<QString> m_changed;
    double m_lastPosition = 0;
    QElapsedTimer m_sinceLastPosition;
};
