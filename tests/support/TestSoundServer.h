#pragma once

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

// A sound server of the test's own: PulseAudio with a null sink as the default output, whose
// monitor is the "system sound" a recording hears. PULSE_SERVER points this process and its
// children at it. Main thread only.
class TestSoundServer
{
public:
    // Why it could not start, or nothing once it answers.
    QString start()
    {
        const QString socket = m_dir.filePath(QStringLiteral("native"));
        m_server.setProgram(QStringLiteral("pulseaudio"));
        m_server.setArguments(
            {QStringLiteral("-n"), QStringLiteral("--daemonize=no"),
             QStringLiteral("--exit-idle-time=-1"), QStringLiteral("--use-pid-file=no"),
             QStringLiteral("-F"), QStringLiteral("/dev/null"),
             QStringLiteral("--load=module-null-sink sink_name=test_output rate=48000"),
             QStringLiteral("--load=module-native-protocol-unix auth-anonymous=1 socket=") +
                 socket});
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), m_dir.path());
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_dir.path());
        m_server.setProcessEnvironment(environment);
        m_server.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_server.start();
        if (!m_server.waitForStarted(10000))
            return QStringLiteral("pulseaudio did not start: ") + m_server.errorString();
        const QByteArray address = QByteArrayLiteral("unix:") + socket.toUtf8();
        qputenv("PULSE_SERVER", address);
        const bool answers = QTest::qWaitFor(
            [&] {
                QProcess info;
                info.start(QStringLiteral("pactl"), {QStringLiteral("info")});
                return info.waitForFinished(5000) && info.exitCode() == 0;
            },
            20000);
        return answers ? QString() : QStringLiteral("pulseaudio does not answer at ") + socket;
    }

    ~TestSoundServer()
    {
        m_server.terminate();
        if (!m_server.waitForFinished(5000))
            m_server.kill();
        m_server.waitForFinished();
    }

private:
    QTemporaryDir m_dir;
    QProcess m_server;
};
