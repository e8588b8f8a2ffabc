#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

class QLocalServer;
class QLocalSocket;

// How a launch of the player reaches the player that already runs for the same user: a local
// socket where the running player listens, and a launch hands its files and addresses over
// instead of opening a second window.
//
// A hand-off is one line of JSON, {"directory": …, "sources": […]} (relative paths are taken from
// the directory of the launch), answered "ok" once the sources are accepted.
class InstanceChannel : public QObject
{
    Q_OBJECT

public:
    enum class HandOff
    {
        delivered,
        noPlayer, // nobody listens: this launch becomes the player
        noAnswer, // a player listens but did not take the sources in time
    };

    // One socket per user and home folder, in the user's runtime folder: players with different
    // homes keep different settings and saved links, so they stay apart. Empty where no folder
    // is safely the user's: each launch then has a window of its own.
    static QString defaultPath();
    // Blocks for at most timeoutMs; needs no application object, so that a launch that hands
    // over ends before any window system is touched.
    static HandOff handOff(const QString &path, const QStringList &sources,
                           const QString &workingDirectory, int timeoutMs = 5000);

    explicit InstanceChannel(QObject *parent = nullptr);
    ~InstanceChannel() override;

    // Listens at path, taking the place of a player that ended without closing its socket. False
    // when another player answers there (one that started at the same moment), or when the socket
    // cannot be made.
    bool listen(const QString &path);

Q_SIGNALS:
    void openRequested(const QStringList &sources, const QString &workingDirectory);

private:
    void accept();
    void readRequest(QLocalSocket *socket);

    QLocalServer *m_server;
};
