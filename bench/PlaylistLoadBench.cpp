// Measures what a user waits for when a long playlist address is entered in the running
// application, for bench/load-in-app:
//   velm-bench-load FILE RUNS [GUIDE]
// serves FILE (and GUIDE, set as the user's programme guide) over HTTP on 127.0.0.1 from a thread
// of its own, then RUNS times types its address into the window's address field and presses Return,
// and times each load from the key press to the first paint of the channel list holding every
// channel. Meanwhile a 1 ms timer on the main thread records the longest gap between its ticks: how
// long the window could not have answered, and how much of that gap the main thread itself worked.
// The first load starts from an empty list; the others
// replace the list of the load before. With a guide, each load also waits for the guide to be read
// (downloaded the first time, then from the cache) and the longest gap covers that too. Prints one
// JSON line per load, then the longest gap while the idle window repaints its list (what a frame of
// this window costs on this machine) and the process's peak resident memory.

#include "App/AppSession.h"
#include "Base/ThreadCpuTime.h"
#include "Player/ProgrammeGuide.h"
#include "Playlist/ChannelListModel.h"
#include "UI/AddressField.h"
#include "UI/ChannelListView.h"
#include "UI/ContentState.h"
#include "UI/ContentView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>
#include <QTimer>
#include <QtTest/QTest>

#include "BenchPlayer.h"
#include "TestHome.h"
#include "TestHttpServer.h"

#include <cstdio>
#include <functional>
#include <memory>

namespace {

int usage()
{
    std::fputs("usage: velm-bench-load FILE RUNS [GUIDE]\n", stderr);
    return 2;
}

// The largest resident set of this process so far, in MiB.
double peakResidentMiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').value(0).toDouble() / 1024;
    }
    return 0;
}

// Serves one file at /list.m3u from a thread of its own, so that sending it costs the main
// thread nothing.
class ServerThread
{
public:
    ServerThread(const QString &path, const QString &guide)
    {
        m_anchor.moveToThread(&m_thread);
        m_thread.start();
        QMetaObject::invokeMethod(
            &m_anchor,
            [this, path, guide] {
                m_server = std::make_unique<TestHttpServer>();
                m_server->route("/list.m3u", TestHttpReply::file(path, "audio/x-mpegurl"));
                m_url = m_server->url(QStringLiteral("/list.m3u"));
                if (!guide.isEmpty())
                    m_server->route("/guide", TestHttpReply::file(guide, "application/xml"));
                m_guideURL = m_server->url(QStringLiteral("/guide"));
            },
            Qt::BlockingQueuedConnection);
    }
    ~ServerThread()
    {
        QMetaObject::invokeMethod(
            &m_anchor, [this] { m_server.reset(); }, Qt::BlockingQueuedConnection);
        m_thread.quit();
        m_thread.wait();
    }
    const QString &url() const { return m_url; }
    const QString &guideURL() const { return m_guideURL; }

private:
    QThread m_thread;
    QObject m_anchor; // lives on the server's thread, so calls queued to it run there
    std::unique_ptr<TestHttpServer> m_server;
    QString m_url;
    QString m_guideURL;
};

// The longest gap between ticks of a 1 ms timer on the main thread, since the last reset.
class StallMeter : public QObject
{
public:
    StallMeter()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(1);
        QObject::connect(&m_timer, &QTimer::timeout, this, [this] {
            const qint64 gap = m_sinceTick.nsecsElapsed();
            const double cpu = threadCpuMs();
            if (gap > m_longestNs) {
                m_longestNs = gap;
                m_longestCpuMs = cpu - m_cpuAtTick;
                m_longestAtNs = m_sinceReset.nsecsElapsed();
            }
            m_cpuAtTick = cpu;
            m_sinceTick.restart();
        });
        reset();
        m_timer.start();
    }
    void reset()
    {
        m_longestNs = 0;
        m_sinceTick.restart();
        m_sinceReset.restart();
        m_cpuAtTick = threadCpuMs();
    }
    double longestMs() const { return double(m_longestNs) / 1e6; }
    // How much of the longest gap the main thread spent working itself; the rest it waited
    // for a core (or for the X server).
    double longestCpuMs() const { return m_longestCpuMs; }
    // When the longest gap ended, after the reset.
    double longestAtMs() const { return double(m_longestAtNs) / 1e6; }

private:
    QTimer m_timer;
    QElapsedTimer m_sinceTick;
    QElapsedTimer m_sinceReset;
    qint64 m_longestNs = 0;
    double m_longestCpuMs = 0;
    qint64 m_longestAtNs = 0;
    double m_cpuAtTick = 0;
};

// Calls back after each paint of a widget, once the paint is over.
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(QWidget *widget, std::function<void()> painted)
        : m_painted(std::move(painted))
    {
        widget->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            QTimer::singleShot(0, this, m_painted);
        return false;
    }

private:
    std::function<void()> m_painted;
};

} // namespace

int main(int argc, char **argv)
{
    prepareBenchProcess();
    useTemporaryHome();
    QApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    const int runs = arguments.value(2).toInt();
    const QString guide = arguments.value(3);
    if (arguments.size() < 3 || arguments.size() > 4 || runs <= 0 ||
        !QFile::exists(arguments.at(1)) || (!guide.isEmpty() && !QFile::exists(guide)))
        return usage();

    ServerThread server(arguments.at(1), guide);
    AppSession session;
    ProgrammeGuide &programmeGuide = session.player().guide();
    if (!guide.isEmpty())
        programmeGuide.setAddressText(server.guideURL());
    session.show();
    ContentState &state = session.content().state();
    ChannelListModel &channels = state.networkChannels();
    auto *field = session.window().findChild<AddressField *>();
    ChannelListView *list = nullptr;
    for (ChannelListView *view : session.window().findChildren<ChannelListView *>())
        list = view->model() == &channels ? view : list;
    if (!field || !list) {
        std::fputs("velm-bench-load: the window has no address field or channel list\n", stderr);
        return 1;
    }

    StallMeter stalls;
    QElapsedTimer sincePress;
    int run = 0;
    bool waitingForPaint = false;
    qsizetype listedAtSettle = 0;
    double settledMs = 0;

    // From where the list was shown until the guide has been read, and half a second on.
    const auto waitForGuide = [&] {
        stalls.reset();
        while (programmeGuide.status() == ProgrammeGuide::Status::loading)
            QTest::qWait(5);
        const double guideMs = double(sincePress.nsecsElapsed()) / 1e6;
        QTest::qWait(500);
        std::printf(",\"guideMs\":%.1f,\"guideStatus\":\"%s\",\"guideChannels\":%lld,"
                    "\"guideStallMs\":%.2f",
                    guideMs, qPrintable(programmeGuide.statusName()),
                    static_cast<long long>(programmeGuide.schedule().channelCount()),
                    stalls.longestMs());
    };
    const auto startLoad = [&] {
        field->setFocus();
        field->setText(server.url());
        stalls.reset();
        sincePress.restart();
        QTest::keyClick(field, Qt::Key_Return);
    };
    // A load empties the list first; the list it loads settles later.
    QObject::connect(&channels, &ChannelListModel::rowsSettled, &application, [&] {
        if (channels.entries().isEmpty() || waitingForPaint)
            return;
        settledMs = double(sincePress.nsecsElapsed()) / 1e6;
        listedAtSettle = channels.filteredCount();
        waitingForPaint = true;
        list->viewport()->update();
    });
    const PaintWatch paints(list->viewport(), [&] {
        if (!waitingForPaint)
            return;
        waitingForPaint = false;
        const double listedMs = double(sincePress.nsecsElapsed()) / 1e6;
        // Half a second more, for whatever the load left to the event loop (the old list's
        // release, deferred deletions), before the longest stall is read.
        QTimer::singleShot(500, &application, [&, listedMs] {
            std::printf(
                "{\"run\":%d,\"replacing\":%s,\"settledMs\":%.1f,\"listedMs\":%.1f,"
                "\"channels\":%lld,\"longestStallMs\":%.2f,\"stallCpuMs\":%.2f,\"stallAtMs\":%.1f",
                run + 1, run > 0 ? "true" : "false", settledMs, listedMs,
                static_cast<long long>(listedAtSettle), stalls.longestMs(), stalls.longestCpuMs(),
                stalls.longestAtMs());
            if (!guide.isEmpty())
                waitForGuide();
            std::printf("}\n");
            std::fflush(stdout);
            if (++run < runs) {
                startLoad();
                return;
            }
            // For comparison: the longest gap while the idle window repaints its full list.
            constexpr int repaints = 5;
            stalls.reset();
            for (int i = 1; i <= repaints; ++i)
                QTimer::singleShot(100 * i, list->viewport(), qOverload<>(&QWidget::update));
            QTimer::singleShot(100 * (repaints + 1), &application, [&] {
                std::printf("{\"idleRepaintStallMs\":%.2f,\"peakResidentMiB\":%.1f}\n",
                            stalls.longestMs(), peakResidentMiB());
                application.quit();
            });
        });
    });

    // The window settles and the empty list paints before the first key press.
    QTimer::singleShot(1000, &application, startLoad);
    return application.exec();
}
