#include "App/ControlServer.h"

#include "App/ControlCommands.h"
#include "Base/AppNotifier.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QLocalSocket>

using namespace Qt::StringLiterals;

namespace {
const QString allEvents = u"all"_s;
const QStringList eventNames = {AppNotifier::playerSurfaceClickedName.toString(),
                                AppNotifier::playerMouseMovedName.toString()};
} // namespace

ControlServer::ControlServer(ControlCommands &commands, AppNotifier &notifier, QObject *parent)
    : QObject(parent), m_commands(commands)
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, &ControlServer::accept);
    connect(&notifier, &AppNotifier::playerSurfaceClicked, this,
            [this] { sendEvent(AppNotifier::playerSurfaceClickedName.toString()); });
    connect(&notifier, &AppNotifier::playerMouseMoved, this,
            [this] { sendEvent(AppNotifier::playerMouseMovedName.toString()); });
}

ControlServer::~ControlServer()
{
    // Replies written just before the application quits still reach their clients.
    for (const std::shared_ptr<Client> &client : std::as_const(m_clients)) {
        if (client->socket) {
            client->socket->disconnect(this);
            if (client->socket->bytesToWrite() > 0)
                client->socket->waitForBytesWritten(1000);
        }
    }
}

std::optional<QString> ControlServer::listen(const QString &path)
{
    QLocalServer::removeServer(path);
    if (!m_server.listen(path))
        return m_server.errorString();
    return std::nullopt;
}

void ControlServer::accept()
{
    while (QLocalSocket *socket = m_server.nextPendingConnection()) {
        auto client = std::make_shared<Client>();
        client->socket = socket;
        m_clients.append(client);
        connect(socket, &QLocalSocket::readyRead, this,
                [this, weak = std::weak_ptr<Client>(client)] {
                    // Held for the whole handling, even if the client leaves meanwhile.
                    if (const std::shared_ptr<Client> held = weak.lock())
                        readLines(*held);
                });
        connect(socket, &QLocalSocket::disconnected, this, [this, socket] { forget(socket); });
    }
}

void ControlServer::forget(QLocalSocket *socket)
{
    m_clients.removeIf(
        [socket](const std::shared_ptr<Client> &client) { return client->socket == socket; });
    // Later, never inside the signal: the socket may be in the middle of a write or a read.
    socket->deleteLater();
}

void ControlServer::readLines(Client &client)
{
    if (!client.socket)
        return;
    for (const ControlLineReader::Line &line : client.lines.feed(client.socket->readAll())) {
        if (line.tooLong)
            sendReply(client.socket, 0, u"line too long"_s, {});
        else
            handleLine(client, line.text);
    }
}

void ControlServer::handleLine(Client &client, const QByteArray &line)
{
    if (line.trimmed().isEmpty())
        return;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(line, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        sendReply(client.socket, 0, u"invalid JSON"_s, {});
        return;
    }
    const QJsonObject request = document.object();
    const QJsonValue requestID = request.value(u"request_id"_s).isUndefined()
                                     ? QJsonValue(0)
                                     : request.value(u"request_id"_s);
    if (!request.value(u"command"_s).isArray()) {
        sendReply(client.socket, requestID, u"no command array"_s, {});
        return;
    }
    const QJsonArray command = request.value(u"command"_s).toArray();
    if (handleEventChoice(client, command, requestID))
        return;
    m_commands.run(command, [socket = client.socket, requestID](const QString &failure,
                                                                const QJsonValue &data) {
        sendReply(socket, requestID, failure, data);
    });
}

bool ControlServer::handleEventChoice(Client &client, const QJsonArray &command,
                                      const QJsonValue &requestID)
{
    const QString name = command.at(0).toString();
    if (name != u"enable_event" && name != u"disable_event")
        return false;
    const QString event = command.at(1).toString();
    if (command.size() != 2 || (event != allEvents && !eventNames.contains(event))) {
        sendReply(client.socket, requestID, u"invalid parameter"_s, {});
        return true;
    }
    const QStringList chosen = event == allEvents ? eventNames : QStringList{event};
    for (const QString &each : chosen) {
        if (name == u"enable_event")
            client.events.insert(each);
        else
            client.events.remove(each);
    }
    sendReply(client.socket, requestID, {}, {});
    return true;
}

void ControlServer::sendEvent(const QString &name)
{
    // A copy: a client may leave while its event is written.
    const QList<std::shared_ptr<Client>> clients = m_clients;
    for (const std::shared_ptr<Client> &client : clients) {
        if (client->events.contains(name))
            send(client->socket, QJsonObject{{u"event"_s, name}});
    }
}

void ControlServer::sendReply(QLocalSocket *socket, const QJsonValue &requestID,
                              const QString &error, const QJsonValue &data)
{
    send(socket, QJsonObject{{u"request_id"_s, requestID},
                             {u"error"_s, error.isEmpty() ? u"success"_s : error},
                             {u"data"_s, data.isUndefined() ? QJsonValue() : data}});
}

void ControlServer::send(QLocalSocket *socket, const QJsonObject &object)
{
    // A client that left before its answer was ready gets none.
    if (!socket || socket->state() != QLocalSocket::ConnectedState)
        return;
    socket->write(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
    socket->flush();
}
