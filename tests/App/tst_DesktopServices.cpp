#include "ControlClient.h"
#include "TestMedia.h"
#include "TestSoundServer.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <cmath>
#include <set>

using namespace Qt::StringLiterals;

namespace {

// What the desktop was asked: "hold" for each inhibition, "release" for each end of one that was
// held, "stray release" for an end of one that was not.
class ScreenSaverCalls
{
public:
    uint hold()
    {
        calls.append(u"hold"_s);
        m_held.insert(++m_last);
        return m_last;
    }
    void release(uint id) { calls.append(m_held.erase(id) ? u"release"_s : u"stray release"_s); }

    QStringList calls;

private:
    std::set<uint> m_held;
    uint m_last = 0;
};

// The desktop's screen saver, as KDE, Xfce and others offer it.
class StandInScreenSaver : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")

public:
    explicit StandInScreenSaver(ScreenSaverCalls &calls) : m_calls(calls) {}

public Q_SLOTS:
    uint Inhibit(const QString &, const QString &) { return m_calls.hold(); }
    void UnInhibit(uint cookie) { m_calls.release(cookie); }

private:
    ScreenSaverCalls &m_calls;
};

// A request of the desktop portal: closing it ends what it asked for.
class StandInPortalRequest : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Request")

public:
    StandInPortalRequest(ScreenSaverCalls &calls, uint id) : m_calls(calls), m_id(id) {}

public Q_SLOTS:
    void Close() { m_calls.release(m_id); }

private:
    ScreenSaverCalls &m_calls;
    uint m_id;
};

// The desktop portal's Inhibit, the way on Wayland desktops and in sandboxes.
class StandInPortal : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Inhibit")

public:
    explicit StandInPortal(ScreenSaverCalls &calls) : m_calls(calls) {}

public Q_SLOTS:
    QDBusObjectPath Inhibit(const QString &, uint flags, const QVariantMap &)
    {
        if (flags != 8) // "idle"
            m_calls.calls.append(u"wrong flags"_s);
        const uint id = m_calls.hold();
        const QString path = u"/org/freedesktop/portal/desktop/request/test/r%1"_s.arg(id);
        auto *request = new StandInPortalRequest(m_calls, id);
        request->setParent(this);
        QDBusConnection::sessionBus().registerObject(path, request,
                                                     QDBusConnection::ExportAllSlots);
        return QDBusObjectPath(path);
    }

private:
    ScreenSaverCalls &m_calls;
};

// What the player announces over MPRIS: each PropertiesChanged of its player interface, and each
// Seeked.
class MprisSignals : public QObject
{
    Q_OBJECT

public:
    QList<QVariantMap> changes;
    QList<qlonglong> seeks;

    // The newest announced value of a property, or nothing.
    QVariant last(const QString &name) const
    {
        for (auto change = changes.crbegin(); change != changes.crend(); ++change) {
            if (change->contains(name))
                return change->value(name);
        }
        return {};
    }

public Q_SLOTS:
    void propertiesChanged(const QString &interface, const QVariantMap &changed,
                           const QStringList &)
    {
        if (interface == u"org.mpris.MediaPlayer2.Player"_s)
            changes.append(changed);
    }
    void seeked(qlonglong position) { seeks.append(position); }
};

QVariantMap unpacked(const QVariant &value)
{
    return qdbus_cast<QVariantMap>(value.value<QDBusArgument>());
}

} // namespace

// The player as a desktop citizen, on a session bus of its own (the test runs under
// dbus-run-session): the real application, driven through its control socket.
class tst_DesktopServices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QString failure = m_sound.start();
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
    }

    void cleanup()
    {
        if (m_app.state() != QProcess::NotRunning) {
            m_app.kill();
            m_app.waitForFinished();
        }
    }

    void keepsTheScreenOnWhileVideoPlays_data()
    {
        QTest::addColumn<bool>("screenSaverService");
        QTest::newRow("the screen saver service") << true;
        QTest::newRow("only the desktop portal") << false;
    }

    void keepsTheScreenOnWhileVideoPlays()
    {
        QFETCH(bool, screenSaverService);
        ScreenSaverCalls calls;
        StandInScreenSaver screenSaver(calls);
        StandInPortal portal(calls);
        QDBusConnection bus = QDBusConnection::sessionBus();
        const QString service = screenSaverService ? u"org.freedesktop.ScreenSaver"_s
                                                   : u"org.freedesktop.portal.Desktop"_s;
        QVERIFY(bus.registerService(service));
        const auto leave = qScopeGuard([&] {
            bus.unregisterObject(u"/org/freedesktop/ScreenSaver"_s);
            bus.unregisterObject(u"/org/freedesktop/portal/desktop"_s);
            bus.unregisterService(service);
        });
        if (screenSaverService)
            QVERIFY(bus.registerObject(u"/org/freedesktop/ScreenSaver"_s, &screenSaver,
                                       QDBusConnection::ExportAllSlots));
        else
            QVERIFY(bus.registerObject(u"/org/freedesktop/portal/desktop"_s, &portal,
                                       QDBusConnection::ExportAllSlots));

        startPlayer();
        QCOMPARE(calls.calls, QStringList());
        const QString hold = u"hold"_s;
        const QString release = u"release"_s;

        play(u"long.mp4"_s);
        QTRY_COMPARE(calls.calls, QStringList({hold}));
        m_client.request({u"togglePlayback"_s}); // paused
        QTRY_COMPARE(calls.calls, QStringList({hold, release}));
        m_client.request({u"togglePlayback"_s});
        QTRY_COMPARE(calls.calls, QStringList({hold, release, hold}));
        // Sound alone lets the screen rest.
        play(u"long-audio.m4a"_s);
        QTRY_COMPARE(calls.calls, QStringList({hold, release, hold, release}));
        play(u"long.mp4"_s);
        QTRY_COMPARE(calls.calls, QStringList({hold, release, hold, release, hold}));
        quitPlayer();
        QTRY_COMPARE(calls.calls, QStringList({hold, release, hold, release, hold, release}));
    }

    void answersTheDesktopsPlayerControls()
    {
        // A channel list whose entry for the clip has a logo: the desktop shows it as the art.
        const QString clip = QUrl::fromLocalFile(testMedia(u"long.mp4"_s)).toString();
        QFile list(m_home.filePath(u"channels.m3u"_s));
        QVERIFY(list.open(QIODevice::WriteOnly));
        list.write("#EXTM3U\n#EXTINF:-1 tvg-logo=\"http://logos.example/long.png\",Long\n" +
                   clip.toUtf8() + '\n');
        list.close();
        startPlayer();
        QCOMPARE(m_client.request({u"import_local_m3u"_s, list.fileName()}).value(u"error"_s),
                 u"success"_s);

        const QString service = u"org.mpris.MediaPlayer2.velmplayerpro"_s;
        const QString path = u"/org/mpris/MediaPlayer2"_s;
        QDBusConnection bus = QDBusConnection::sessionBus();
        QDBusInterface player(service, path, u"org.mpris.MediaPlayer2.Player"_s, bus);
        QVERIFY2(player.isValid(), qPrintable(player.lastError().message()));
        QCOMPARE(player.property("PlaybackStatus"), u"Stopped"_s);
        MprisSignals heard;
        QVERIFY(bus.connect(service, path, u"org.freedesktop.DBus.Properties"_s,
                            u"PropertiesChanged"_s, &heard,
                            SLOT(propertiesChanged(QString, QVariantMap, QStringList))));
        QVERIFY(bus.connect(service, path, u"org.mpris.MediaPlayer2.Player"_s, u"Seeked"_s, &heard,
                            SLOT(seeked(qlonglong))));
        const auto position = [&] {
            return m_client.data({u"get_property"_s, u"currentTime"_s}).toDouble();
        };

        player.call(u"OpenUri"_s, clip);
        QTRY_COMPARE(heard.last(u"PlaybackStatus"_s), QVariant(u"Playing"_s));
        QTRY_COMPARE(unpacked(heard.last(u"Metadata"_s)).value(u"mpris:length"_s).toLongLong(),
                     700'000'000);
        const QVariantMap metadata = unpacked(heard.last(u"Metadata"_s));
        QCOMPARE(metadata.value(u"xesam:title"_s), QVariant(u"long.mp4"_s));
        QCOMPARE(metadata.value(u"xesam:url"_s), QVariant(clip));
        QCOMPARE(metadata.value(u"mpris:artUrl"_s), QVariant(u"http://logos.example/long.png"_s));
        const QDBusObjectPath track = metadata.value(u"mpris:trackid"_s).value<QDBusObjectPath>();
        QVERIFY(track.path().startsWith(u"/app/velmplayerpro/track/"_s));

        player.call(u"Pause"_s);
        QTRY_COMPARE(heard.last(u"PlaybackStatus"_s), QVariant(u"Paused"_s));
        QCOMPARE(m_client.data({u"get_property"_s, u"isPlaying"_s}), QJsonValue(false));
        player.call(u"SetPosition"_s, QVariant::fromValue(track), qlonglong(300'000'000));
        QTRY_VERIFY(std::abs(position() - 300) < 0.5);
        QTRY_VERIFY(!heard.seeks.isEmpty() && std::abs(heard.seeks.last() - 300'000'000) < 500'000);
        // Positions for another track, or past the end, are not taken.
        player.call(u"SetPosition"_s, QVariant::fromValue(QDBusObjectPath(u"/app/other"_s)),
                    qlonglong(100'000'000));
        player.call(u"SetPosition"_s, QVariant::fromValue(track), qlonglong(900'000'000));
        player.call(u"Seek"_s, qlonglong(10'000'000));
        QTRY_VERIFY(std::abs(position() - 310) < 0.5);
        player.call(u"Next"_s);
        QTRY_VERIFY(std::abs(position() - 330) < 0.5);
        player.call(u"Previous"_s);
        QTRY_VERIFY(std::abs(position() - 310) < 0.5);
        player.call(u"Previous"_s);
        QTRY_VERIFY(std::abs(position() - 290) < 0.5);
        QTRY_COMPARE(player.property("Position").toLongLong() / 1000000, 290);

        player.call(u"PlayPause"_s);
        QTRY_COMPARE(heard.last(u"PlaybackStatus"_s), QVariant(u"Playing"_s));
        QVERIFY(player.setProperty("Volume", 0.5));
        QTRY_COMPARE(m_client.data({u"get_property"_s, u"volume"_s}), QJsonValue(0.5));
        QTRY_COMPARE(heard.last(u"Volume"_s), QVariant(0.5));

        // A live stream has no end to seek within.
        QCOMPARE(m_client.request({u"play"_s, clip, u"Live"_s, true}).value(u"error"_s),
                 u"success"_s);
        QTRY_COMPARE(heard.last(u"CanSeek"_s), QVariant(false));
        QVERIFY(!unpacked(heard.last(u"Metadata"_s)).contains(u"mpris:length"_s));
        player.call(u"Stop"_s);
        QTRY_COMPARE(heard.last(u"PlaybackStatus"_s), QVariant(u"Stopped"_s));

        QDBusInterface(service, path, u"org.mpris.MediaPlayer2"_s, bus).call(u"Quit"_s);
        QVERIFY(m_app.waitForFinished(20000));
        QCOMPARE(m_app.exitCode(), 0);
    }

private:
    void startPlayer()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        QVERIFY(environment.contains(u"DBUS_SESSION_BUS_ADDRESS"_s));
        environment.insert(u"HOME"_s, m_home.path());
        environment.insert(u"XDG_CONFIG_HOME"_s, m_home.filePath(u"config"_s));
        m_app.setProcessEnvironment(environment);
        m_app.setProcessChannelMode(QProcess::ForwardedChannels);
        const QString socket = m_home.filePath(u"control.sock"_s);
        m_app.start(QStringLiteral(VELM_APP), {u"--ipc-server"_s, socket});
        QVERIFY(m_app.waitForStarted());
        QVERIFY(m_client.connectTo(socket));
    }

    void quitPlayer()
    {
        QCOMPARE(m_client.request({u"quit"_s}).value(u"error"_s), u"success"_s);
        QVERIFY(m_app.state() == QProcess::NotRunning || m_app.waitForFinished(20000));
        QCOMPARE(m_app.exitCode(), 0);
    }
    void play(const QString &file);

    // Sound alone plays only where it can be heard.
    TestSoundServer m_sound;
    QTemporaryDir m_home;
    QProcess m_app;
    ControlClient m_client;
};

void tst_DesktopServices::play(const QString &file)
{
    QCOMPARE(m_client.request({u"play"_s, testMedia(file)}).value(u"error"_s), u"success"_s);
    QTRY_COMPARE(m_client.data({u"get_property"_s, u"currentURL"_s}),
                 QJsonValue(QUrl::fromLocalFile(testMedia(file)).toString()));
    QTRY_COMPARE(m_client.data({u"get_property"_s, u"isPlaying"_s}), QJsonValue(true));
}

QTEST_GUILESS_MAIN(tst_DesktopServices)
#include "tst_DesktopServices.moc"
