#include "UI/FileManagerReveal.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QProcess>
#include <QUrl>

#if !defined(Q_OS_MACOS) && !defined(Q_OS_WIN)
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#endif

namespace {

void openFolder(const QString &path)
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
}

} // namespace

void FileManagerReveal::reveal(const QString &path)
{
#if defined(Q_OS_MACOS)
    if (!QProcess::startDetached(QStringLiteral("/usr/bin/open"), {QStringLiteral("-R"), path}))
        openFolder(path);
#elif defined(Q_OS_WIN)
    openFolder(path);
#else
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        openFolder(path);
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList{QUrl::fromLocalFile(path).toString()} << QString();
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished,
                     [path](QDBusPendingCallWatcher *done) {
                         // No file manager that selects files: the folder opens instead.
                         if (QDBusPendingReply<>(*done).isError())
                             openFolder(path);
                         done->deleteLater();
                     });
#endif
}
