#pragma once

#include <QByteArray>
#include <QFile>
#include <QHash>
#include <QHostAddress>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>

// What the test server answers to one request.
struct TestHttpReply
{
    int status = 200;
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

    static TestHttpReply file(const QString &path, QByteArray contentType)
    {
        QFile file(path);
        TestHttpReply reply;
        if (!file.open(QIODevice::ReadOnly))
            reply.status = 404;
        reply.body = file.readAll();
        reply.contentType = std::move(contentType);
        return reply;
    }
};

// An HTTP/1.1 server on 127.0.0.1 for tests: one reply per connection (Connection: close), byte
// ranges of plain bodies honoured, every request head recorded. Runs on the test's event loop.
class TestHttpServer : public QObject
{
public:
    using Handler = std::function<TestHttpReply(const QByteArray &path)>;

    TestHttpServer()
    {
        QObject::connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection())
                accept(socket);
        });
        m_server.listen(QHostAddress::LocalHost);
    }

    QString url(const QString &path) const
    {
        return QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path);
    }
    quint16 port() const { return m_server.serverPort(); }

    void route(const QByteArray &path, const TestHttpReply &reply) { m_routes[path] = reply; }
    // Asked for every path without a fixed route.
    void setHandler(Handler handler) { m_handler = std::move(handler); }
    const QList<QByteArray> &requestHeads() const { return m_requestHeads; }
    int requestCount(const QByteArray &path) const { return m_counts.value(path); }

private:
    void accept(QTcpSocket *socket)
    {
        auto head = std::make_shared<QByteArray>();
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
            reply.status = 404;
        if (reply.neverAnswer)
            return;
        const QPointer<QTcpSocket> guard(socket);
        QTimer::singleShot(reply.delay, socket, [this, guard, reply, head] {
            if (guard)
                send(guard, reply, head);
        });
    }

    static qint64 rangeStart(const QByteArray &head)
    {
        const qsizetype at = head.toLower().indexOf("\r\nrange: bytes=");
        if (at < 0)
            return -1;
        const qsizetype from = at + 15;
        return head.mid(from, head.indexOf('-', from) - from).toLongLong();
    }

    void send(QTcpSocket *socket, const TestHttpReply &reply, const QByteArray &head)
    {
        QByteArray body = reply.body;
        int status = reply.status;
        QByteArray extra;
        const qint64 start = rangeStart(head);
        if (status == 200 && reply.endlessLength == 0 && start > 0 && start <= body.size()) {
            extra = "Content-Range: bytes " + QByteArray::number(start) + '-' +
                    QByteArray::number(body.size() - 1) + '/' + QByteArray::number(body.size()) +
                    "\r\n";
            body = body.mid(start);
            status = 206;
        }
        const qint64 length = reply.endlessLength > 0 ? reply.endlessLength : body.size();
        socket->write("HTTP/1.1 " + QByteArray::number(status) + ' ' + reason(status) + "\r\n" +
                      "Content-Type: " + reply.contentType + "\r\n" +
                      (reply.announceLength
                           ? "Content-Length: " + QByteArray::number(length) + "\r\n"
                           : QByteArray()) +
                      "Accept-Ranges: bytes\r\n" + extra + "Connection: close\r\n\r\n");
        if (reply.endlessLength > 0)
            streamZeros(socket, reply.endlessLength);
        else if (reply.pieceInterval.count() > 0)
            sendInPieces(socket, body, reply.pieceInterval, reply.pieceSize);
        else {
            socket->write(body);
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

    static QByteArray reason(int status)
    {
        switch (status) {
        case 200:
            return "OK";
        case 206:
            return "Partial Content";
        case 404:
            return "Not Found";
        case 500:
            return "Internal Server Error";
        default:
            return "Status";
        }
    }

    QTcpServer m_server;
    QHash<QByteArray, TestHttpReply> m_routes;
    Handler m_handler;
    QList<QByteArray> m_requestHeads;
    QHash<QByteArray, int> m_counts;
};
