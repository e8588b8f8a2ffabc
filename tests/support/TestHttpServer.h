#pragma once

#include <QByteArray>
#include <QFile>
#include <QHash>
#include <QHostAddress>
#include <QPointer>
#include <QRegularExpression>
#include <QSslConfiguration>
#include <QSslServer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

// What the test server answers to one request.
struct TestHttpReply
{
    int status = 200;
    QByteArray reason = "OK";
    QByteArray body;
    QByteArray contentType = "application/octet-stream";
    std::chrono::milliseconds delay{0}; // before anything is sent
    bool neverAnswer = false;           // accept, read the request, then stay silent
    // With a length: the body is that many zero bytes, written as fast as the client reads.
    qint64 endlessLength = 0;
    bool announceLength = true; // false: no Content-Length, the body ends when the socket closes
    // With an interval: the body goes out in pieces of pieceSize bytes, one per interval.
    std::chrono::milliseconds pieceInterval{0};
    qsizetype pieceSize = 1024;
    // Byte ranges answered with 206, as media elements expect of a web server serving files.
    bool acceptRanges = false;
    QByteArray extraHeaders; // complete header lines, each ending in CRLF

    static TestHttpReply of(int status, QByteArray reason, QByteArray body,
                            QByteArray contentType = "text/plain")
    {
        TestHttpReply reply;
        reply.status = status;
        reply.reason = std::move(reason);
        reply.body = std::move(body);
        reply.contentType = std::move(contentType);
        return reply;
    }

    static TestHttpReply file(const QString &path, QByteArray contentType)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return of(404, "Not Found", {});
        TestHttpReply reply = of(200, "OK", file.readAll(), std::move(contentType));
        reply.acceptRanges = true;
        return reply;
    }
};

// An HTTP/1.1 server on 127.0.0.1 for tests, or HTTPS with a TLS configuration: one reply per
// connection (Connection: close), every request head recorded. Runs on the test's event loop.
class TestHttpServer : public QObject
{
public:
    using Handler = std::function<TestHttpReply(const QByteArray &path)>;

    explicit TestHttpServer(const std::optional<QSslConfiguration> &tls = std::nullopt)
    {
        if (tls) {
            auto *server = new QSslServer(this);
            server->setSslConfiguration(*tls);
            m_server = server;
        } else {
            m_server = new QTcpServer(this);
        }
        // A TLS connection becomes pending only after its handshake, later than newConnection.
        const auto acceptPending = [this] {
            while (QTcpSocket *socket = m_server->nextPendingConnection())
                accept(socket);
        };
        QObject::connect(m_server, &QTcpServer::newConnection, this, acceptPending);
        QObject::connect(m_server, &QTcpServer::pendingConnectionAvailable, this, acceptPending);
        m_server->listen(QHostAddress::LocalHost);
    }

    QString url(const QString &path) const
    {
        return QStringLiteral("%1://127.0.0.1:%2%3")
            .arg(qobject_cast<QSslServer *>(m_server) ? QStringLiteral("https")
                                                      : QStringLiteral("http"))
            .arg(m_server->serverPort())
            .arg(path);
    }
    quint16 port() const { return m_server->serverPort(); }

    void route(const QByteArray &path, const TestHttpReply &reply) { m_routes[path] = reply; }
    // Asked for every path without a fixed route.
    void setHandler(Handler handler) { m_handler = std::move(handler); }
    const QList<QByteArray> &requestHeads() const { return m_requestHeads; }
    int requestCount(const QByteArray &path) const { return m_counts.value(path); }
    // Connections accepted that neither side has closed yet.
    int openConnections() const { return m_open; }

private:
    void accept(QTcpSocket *socket)
    {
        auto head = std::make_shared<QByteArray>();
        ++m_open;
        QObject::connect(socket, &QTcpSocket::disconnected, this, [this] { --m_open; });
        QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket, head] {
            if (head->endsWith("\r\n\r\n"))
                return;
            *head += socket->readAll();
            if (head->contains("\r\n\r\n"))
                respond(socket, *head);
        });
    }

    void respond(QTcpSocket *socket, const QByteArray &head)
    {
        m_requestHeads.append(head);
        const QList<QByteArray> requestLine = head.left(head.indexOf("\r\n")).split(' ');
        QByteArray path = requestLine.value(1);
        ++m_counts[path];
        TestHttpReply reply;
        if (m_routes.contains(path))
            reply = m_routes.value(path);
        else if (m_handler)
            reply = m_handler(path);
        else
            reply = TestHttpReply::of(404, "Not Found", {});
        if (reply.neverAnswer)
            return;
        if (reply.acceptRanges)
            reply = rangeOf(reply, head);
        const QPointer<QTcpSocket> guard(socket);
        QTimer::singleShot(reply.delay, socket, [guard, reply] {
            if (guard)
                send(guard, reply);
        });
    }

    static TestHttpReply rangeOf(TestHttpReply reply, const QByteArray &head)
    {
        reply.extraHeaders += "Accept-Ranges: bytes\r\n";
        static const QRegularExpression range(QStringLiteral("\r\nrange: *bytes=(\\d+)-(\\d*)\r\n"),
                                              QRegularExpression::CaseInsensitiveOption);
        const QRegularExpressionMatch match = range.match(QString::fromLatin1(head));
        const qint64 size = reply.body.size();
        if (!match.hasMatch() || match.captured(1).toLongLong() >= size)
            return reply;
        const qint64 first = match.captured(1).toLongLong();
        const qint64 last = match.captured(2).isEmpty()
                                ? size - 1
                                : std::min(match.captured(2).toLongLong(), size - 1);
        reply.status = 206;
        reply.reason = "Partial Content";
        reply.extraHeaders += "Content-Range: bytes " + QByteArray::number(first) + '-' +
                              QByteArray::number(last) + '/' + QByteArray::number(size) + "\r\n";
        reply.body = reply.body.mid(first, last - first + 1);
        return reply;
    }

    static void send(QTcpSocket *socket, const TestHttpReply &reply)
    {
        const qint64 length = reply.endlessLength > 0 ? reply.endlessLength : reply.body.size();
        socket->write("HTTP/1.1 " + QByteArray::number(reply.status) + ' ' + reply.reason + "\r\n" +
                      "Content-Type: " + reply.contentType + "\r\n" +
                      (reply.announceLength
                           ? "Content-Length: " + QByteArray::number(length) + "\r\n"
                           : QByteArray()) +
                      reply.extraHeaders + "Connection: close\r\n\r\n");
        if (reply.endlessLength > 0)
            streamZeros(socket, reply.endlessLength);
        else if (reply.pieceInterval.count() > 0)
            sendInPieces(socket, reply.body, reply.pieceInterval, reply.pieceSize);
        else {
            socket->write(reply.body);
            socket->disconnectFromHost();
        }
    }

    static void streamZeros(QTcpSocket *socket, qint64 length)
    {
        auto left = std::make_shared<qint64>(length);
        const auto refill = [socket, left] {
            static const QByteArray zeros(256 * 1024, '\0');
            while (*left > 0 && socket->bytesToWrite() < zeros.size()) {
                const qint64 n = std::min<qint64>(*left, zeros.size());
                socket->write(zeros.constData(), n);
                *left -= n;
            }
            if (*left == 0)
                socket->disconnectFromHost();
        };
        QObject::connect(socket, &QTcpSocket::bytesWritten, socket, refill);
        refill();
    }

    static void sendInPieces(QTcpSocket *socket, const QByteArray &body,
                             std::chrono::milliseconds interval, qsizetype pieceSize)
    {
        auto sent = std::make_shared<qsizetype>(0);
        auto *timer = new QTimer(socket);
        QObject::connect(timer, &QTimer::timeout, socket, [socket, body, sent, pieceSize, timer] {
            socket->write(body.mid(*sent, pieceSize));
            *sent += pieceSize;
            if (*sent >= body.size()) {
                timer->stop();
                socket->disconnectFromHost();
            }
        });
        timer->start(interval);
    }

    QTcpServer *m_server;
    QHash<QByteArray, TestHttpReply> m_routes;
    Handler m_handler;
    QList<QByteArray> m_requestHeads;
    QHash<QByteArray, int> m_counts;
    int m_open = 0;
};
