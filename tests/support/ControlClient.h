#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QStringList>
#include <QTest>

// One connection to the application's control socket, read without blocking the test's own
// event loop (its HTTP server answers the application meanwhile).
class ControlClient
{
public:
    bool connectTo(const QString &path)
    {
        m_socket.abort();
        return QTest::qWaitFor(
            [&] {
                m_socket.connectToServer(path);
                return m_socket.waitForConnected(100);
            },
            20000);
    }

    QJsonObject sendLine(const QByteArray &line)
    {
        m_socket.write(line + '\n');
        return nextReply();
    }

    QJsonObject request(const QJsonArray &command)
    {
        const int id = ++m_lastID;
        const QJsonObject reply =
            sendLine(QJsonDocument(QJsonObject{{QStringLiteral("command"), command},
                                               {QStringLiteral("request_id"), id}})
                         .toJson(QJsonDocument::Compact));
        return reply.value(QStringLiteral("request_id")).toInt() == id ? reply : QJsonObject{};
    }

    QJsonValue data(const QJsonArray &command)
    {
        const QJsonObject reply = request(command);
        return reply.value(QStringLiteral("error")) == QStringLiteral("success")
                   ? reply.value(QStringLiteral("data"))
                   : QJsonValue();
    }

    QJsonObject nextReply()
    {
        for (;;) {
            if (!QTest::qWaitFor([&] { return m_socket.canReadLine(); }, 30000))
                return {};
            const QJsonObject line = QJsonDocument::fromJson(m_socket.readLine()).object();
            if (!line.contains(QStringLiteral("event")))
                return line;
            events.append(line.value(QStringLiteral("event")).toString());
        }
    }

    QStringList events;

private:
    QLocalSocket m_socket;
    int m_lastID = 0;
};
