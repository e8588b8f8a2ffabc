#include "App/AppStartup.h"

#include <QCoreApplication>
#include <QThread>
#include <QtGlobal>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace {

// Room for every thread the player runs, with some to spare.
constexpr int memoryPoolsAtLeast = 64;

QtMessageHandler previousHandler = nullptr;

void exitOnFatal(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type != QtFatalMsg) {
        if (previousHandler)
            previousHandler(type, context, message);
        return;
    }
    std::fprintf(stderr, "velmplayerpro: cannot open a window: %s\n", qPrintable(message));
    std::fflush(stderr);
    std::_Exit(1);
}

} // namespace

QString AppStartup::missingDisplayReason()
{
#if defined(Q_OS_UNIX) && !defined(Q_OS_MACOS)
    if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        return {};
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return QStringLiteral("no display found (neither DISPLAY nor WAYLAND_DISPLAY is set); "
                              "start it from a desktop session or under Xvfb");
#endif
    return {};
}

void AppStartup::enterGuardedStart()
{
    previousHandler = qInstallMessageHandler(exitOnFatal);
}

void AppStartup::leaveGuardedStart()
{
    qInstallMessageHandler(previousHandler);
    previousHandler = nullptr;
}

void AppStartup::prepareGraphics()
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
}

void AppStartup::giveEachThreadAMemoryPool()
{
#if defined(__GLIBC__)
    if (!qEnvironmentVariableIsEmpty("MALLOC_ARENA_MAX"))
        return;
    const int librariesDefault = 8 * std::max(1, QThread::idealThreadCount());
    mallopt(M_ARENA_MAX, std::max(memoryPoolsAtLeast, librariesDefault));
#endif
}

void AppStartup::fixNumericLocale()
{
    std::setlocale(LC_NUMERIC, "C");
}
