#include "App/InstanceChannel.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QTimer>

#include <cerrno>
#include <chrono>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using namespace std::chrono;

// More than any list of files a file manager hands over; a larger request is dropped.
constexpr qsizetype maxRequestBytes = 1 << 20;
// A connection that says nothing for this long is closed.
constexpr int requestTimeoutMs = 10000;
const QByteArray accepted = QByteArrayLiteral("ok\n");

// A POSIX socket closed on every way out.
class SocketHandle
{
public:
    SocketHandle() : m_fd(::socket(AF_UNIX, SOCK_STREAM, 0))
    {
        if (m_fd >= 0)
            ::fcntl(m_fd, F_SETFD, FD_CLOEXEC);
#ifdef SO_NOSIGPIPE
        int on = 1;
        if (m_fd >= 0)
            ::setsockopt(m_fd, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
    }
    ~SocketHandle()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    SocketHandle(const SocketHandle &) = delete;
    SocketHandle &operator=(const SocketHandle &) = delete;

    int fd() const
    {
        return m_fd;
    }

private:
    int m_fd;
};

bool connectTo(const SocketHandle &socket, const QString &path)
{
    const QByteArray native = QFile::encodeName(path);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (socket.fd() < 0 || native.size() >= qsizetype(sizeof address.sun_path))
        return false;
    std::memcpy(address.sun_path, native.constData(), size_t(native.size()));
    int result;
    do
        result =
            ::connect(socket.fd(), reinterpret_cast<const sockaddr *>(&address), sizeof address);
    while (result < 0 && errno == EINTR);
    return result == 0;
}

bool sendAll(const SocketHandle &socket, const QByteArray &bytes)
{
#ifdef MSG_NOSIGNAL
    constexpr int flags = MSG_NOSIGNAL; // a player that goes away must not end this launch
#else
    constexpr int flags = 0;
#endif
    for (qsizetype sent = 0; sent < bytes.size();) {
        const ssize_t n =
            ::send(socket.fd(), bytes.constData() + sent, size_t(bytes.size() - sent), flags);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        sent += n;
    }
    return true;
}

// Reads until the answer is complete, the player closes, or the time is up.
bool awaitAcceptance(const SocketHandle &socket, int timeoutMs)
{
    const auto deadline = steady_clock::now() + milliseconds(timeoutMs);
    QByteArray answer;
    while (answer.size() < accepted.size()) {
        const auto left = duration_cast<milliseconds>(deadline - steady_clock::now()).count();
        if (left <= 0)
            return false;
        pollfd readable{socket.fd(), POLLIN, 0};
        const int ready = ::poll(&readable, 1, int(left));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0)
            return false;
        char buffer[16];
        const ssize_t n = ::read(socket.fd(), buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        answer.append(buffer, n);
    }
    return answer.startsWith(accepted);
}

// The user's runtime folder. Where no session provides one (a shell over ssh, a container), a
// folder of the user's own in the temporary folder, private as a session's would be; empty when
// that folder is not safely the user's, since whoever owns it could take the files handed over.
QString runtimeFolder()
{
#ifdef Q_OS_MACOS
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
#else
    const QString session = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!session.isEmpty() && QFileInfo(session).isDir())
        return session;
    const QString own = QDir::tempPath() + QStringLiteral("/velmplayerpro-%1").arg(::getuid());
    const QByteArray native = QFile::encodeName(own);
    ::mkdir(native.constData(), 0700);
    struct stat info
    {
    };
    if (::lstat(native.constData(), &info) != 0 || !S_ISDIR(info.st_mode) ||
        info.st_uid != ::getuid() || (info.st_mode & 077) != 0)
        return {};
    return own;
#endif
}

} // namespace

QString InstanceChannel::defaultPath()
{
    const QByteArray home =
        QCryptographicHash::hash(QFile::encodeName(QDir::homePath()), QCryptographicHash::Sha1)
            .toHex()
            .left(12);
    const QString folder = runtimeFolder();
    if (folder.isEmpty())
        return {};
    return folder + QStringLiteral("/velmplayerpro-%1.socket").arg(QString::fromLatin1(home));
}

InstanceChannel::HandOff InstanceChannel::handOff(const QString &path, const QStringList &sources,
                                                  const QString &workingDirectory, int timeoutMs)
{
    SocketHandle socket;
    if (!connectTo(socket, path))
        return HandOff::noPlayer;
    const QJsonObject request{{QStringLiteral("directory"), workingDirectory},
                              {QStringLiteral("sources"), QJsonArray::fromStringList(sources)}};
    const QByteArray line = QJsonDocument(request).toJson(QJsonDocument::Compact) + '\n';
    if (!sendAll(socket, line) || !awaitAcceptance(socket, timeoutMs))
        return HandOff::noAnswer;
    return HandOff::delivered;
}

InstanceChannel::InstanceChannel(QObject *parent)
    : QObject(parent), m_server(new QLocalServer(this))
{
    // Only this user may hand files to the player.
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    connect(m_server, &QLocalServer::newConnection, this, &InstanceChannel::accept);
}

InstanceChannel::~InstanceChannel() = default;

bool InstanceChannel::listen(const QString &path)
{
    if (m_server->listen(path))
        return true;
    if (m_server->serverError() != QAbstractSocket::AddressInUseError)
        return false;
    // The socket is there: a player answers on it, or one ended without closing it.
    SocketHandle probe;
    if (connectTo(probe, path))
        return false;
    QLocalServer::removeServer(path);
    return m_server->listen(path);
}

void InstanceChannel::accept()
{
    while (QLocalSocket *socket = m_server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { readRequest(socket); });
        QTimer::singleShot(requestTimeoutMs, socket, &QLocalSocket::abort);
    }
}

void InstanceChannel::readRequest(QLocalSocket *socket)
{
    if (!socket->canReadLine()) {
        if (socket->bytesAvailable() > maxRequestBytes)
            socket->abort();
        return;
    }
    const QJsonObject request = QJsonDocument::fromJson(socket->readLine()).object();
    const QJsonValue sources = request.value(QStringLiteral("sources"));
    const QJsonValue directory = request.value(QStringLiteral("directory"));
    if (!sources.isArray() || !directory.isString()) {
        socket->abort();
        return;
    }
    QStringList list;
    for (const QJsonValue &source : sources.toArray())
        list.append(source.toString());
    socket->write(accepted);
    socket->disconnectFromServer();
    Q_EMIT openRequested(list, directory.toString());
}
