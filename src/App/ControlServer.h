#pragma once

#include "App/ControlLineReader.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QLocalServer>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>

#include <memory>

class AppNotifier;
class ControlCommands;
class QLocalSocket;

// The control socket: a local socket where scripts and remote controls send one JSON object per
// line, {"command": [NAME, ARGS…], "request_id": N}, and get one line back for each,
// {"request_id": N, "error": "success" or a message, "data": …}. A line that is not such an object
// gets an error line; the connection stays open. Notifications go to the clients that asked for
// them with "enable_event" as {"event": NAME}.
class ControlServer : public QObject
{
    Q_OBJECT

public:
    // Events are the notifier's notifications.
    ControlServer(ControlCommands &commands, AppNotifier &notifier, QObject *parent = nullptr);
    ~ControlServer() override;

    // Listens at path, replacing a socket file left there by an earlier run. Returns the
    // reason of a failure.
    std::optional<QString> listen(const QString &path);

private:
    // A connected client. Shared, so that one whose socket closes while its lines are handled
    // (a reply's flush can tell of the close at once) lives until that handling has ended.
    struct Client
    {
        QPointer<QLocalSocket> socket;
        ControlLineReader lines;
        QSet<QString> events;
    };

    void accept();
    void forget(QLocalSocket *socket);
    void readLines(Client &client);
    void handleLine(Client &client, const QByteArray &line);
    bool handleEventChoice(Client &client, const QJsonArray &command, const QJsonValue &requestID);
    void sendEvent(const QString &name);
    static void send(QLocalSocket *socket, const QJsonObject &object);
    static void sendReply(QLocalSocket *socket, const QJsonValue &requestID, const QString &error,
                          const QJsonValue &data);

    ControlCommands &m_commands;
    QLocalServer m_server;
    QList<std::shared_ptr<Client>> m_clients;
};
