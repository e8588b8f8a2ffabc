#include "App/AppWindow.h"
#include "Player/PlayerModel.h"

#include "TestMedia.h"

#include <QDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>
#include <QWindow>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

// A focusable control that is no text field: it shows which keys went on past the monitor.
class KeyRecorder : public QWidget
{
public:
    KeyRecorder() { setFocusPolicy(Qt::StrongFocus); }
    QList<int> keys;

protected:
    void keyPressEvent(QKeyEvent *event) override { keys.append(event->key()); }
};

constexpr double start = 350;
const Qt::KeyboardModifiers command = Qt::ControlModifier;
const Qt::KeyboardModifiers control = Qt::MetaModifier;
const Qt::KeyboardModifiers option = Qt::AltModifier;
const Qt::KeyboardModifiers shift = Qt::ShiftModifier;

// A key press as the keyboard sends it: to the window, which hands it to the focused control.
void press(QWindow *window, int key, Qt::KeyboardModifiers modifiers = {}, bool repeat = false)
{
    const QString text = key == Qt::Key_Space ? u" "_s : QString();
    QKeyEvent down(QEvent::KeyPress, key, modifiers, text, repeat);
    QCoreApplication::sendEvent(window, &down);
    QKeyEvent up(QEvent::KeyRelease, key, modifiers, text, repeat);
    QCoreApplication::sendEvent(window, &up);
}

} // namespace

// The keyboard monitor on a real window and a real player: what each key does to playback,
// and which keys still reach the controls.
class tst_KeyboardMonitor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void drivesPlayback_data();
    void drivesPlayback();
    void holdingUpRaisesTheVolumeEveryRepeat();
    void textFieldsGetTheirKeys();
    void dialogsGetTheirKeys();
    void commandKStops();

private:
    void seekTo(double position);
    QWindow *window() { return m_window.windowHandle(); }

    PlayerModel m_model{MpvEngine::Output::headless};
    AppWindow m_window;
    KeyRecorder *m_recorder = new KeyRecorder;
    QLineEdit *m_field = new QLineEdit;
};

void tst_KeyboardMonitor::initTestCase()
{
    auto *layout = new QVBoxLayout(m_window.centralWidget());
    layout->addWidget(m_field);
    layout->addWidget(m_recorder);
    m_model.installKeyboardShortcuts();
    m_model.installKeyboardShortcuts(); // a second call adds no second monitor
    m_window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&m_window));
    m_model.play(WebAddress::fromLocalFile(testMedia(u"long.mp4"_s)), std::nullopt, false);
    QTRY_VERIFY(m_model.duration() > 690);
    m_model.togglePlayback();
    QVERIFY(!m_model.isPlaying());
}

void tst_KeyboardMonitor::init()
{
    m_recorder->keys.clear();
    m_recorder->setFocus();
    m_model.setVolume(0.5);
    seekTo(start);
}

void tst_KeyboardMonitor::seekTo(double position)
{
    m_model.skip(position - m_model.currentTime());
    QTRY_VERIFY(std::fabs(m_model.currentTime() - position) < 0.01);
}

void tst_KeyboardMonitor::drivesPlayback_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<bool>("repeat");
    QTest::addColumn<double>("position");
    QTest::addColumn<double>("volume");
    QTest::addColumn<bool>("reachesControl");
    const auto row = [](const char *name, int key, Qt::KeyboardModifiers modifiers, bool repeat,
                        double position, double volume, bool reaches) {
        QTest::newRow(name) << key << modifiers << repeat << position << volume << reaches;
    };
    row("right", Qt::Key_Right, {}, false, start + 5, 0.5, false);
    row("right held", Qt::Key_Right, {}, true, start, 0.5, false);
    row("left", Qt::Key_Left, {}, false, start - 5, 0.5, false);
    row("option-right", Qt::Key_Right, option, false, start + 20, 0.5, false);
    row("command-left", Qt::Key_Left, command, false, start - 60, 0.5, false);
    row("option-command-right", Qt::Key_Right, option | command, false, start + 300, 0.5, false);
    row("shift-right", Qt::Key_Right, shift, false, start, 0.5, true);
    row("control-left", Qt::Key_Left, control, false, start, 0.5, true);
    row("up", Qt::Key_Up, {}, false, start, 0.55, false);
    row("shift-command-up", Qt::Key_Up, shift | command, false, start, 0.51, false);
    row("command-down", Qt::Key_Down, command, false, start, 0.3, false);
    row("option-down", Qt::Key_Down, option, false, start, 0.4, false);
    row("control-up", Qt::Key_Up, control, false, start, 0.5, true);
    row("k", Qt::Key_K, {}, false, start, 0.5, true);
    row("letter", Qt::Key_A, {}, false, start, 0.5, true);
}

void tst_KeyboardMonitor::drivesPlayback()
{
    QFETCH(int, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(bool, repeat);
    QFETCH(double, position);
    QFETCH(double, volume);
    QFETCH(bool, reachesControl);

    press(window(), key, modifiers, repeat);
    QTRY_VERIFY(std::fabs(m_model.currentTime() - position) < 0.01);
    QCOMPARE(m_model.volume(), volume);
    QCOMPARE(m_recorder->keys, reachesControl ? QList<int>{key} : QList<int>{});
    QTest::qWait(300); // no late second seek
    QVERIFY(std::fabs(m_model.currentTime() - position) < 0.01);
    QVERIFY(!m_model.isPlaying());
}

void tst_KeyboardMonitor::holdingUpRaisesTheVolumeEveryRepeat()
{
    press(window(), Qt::Key_Up);
    for (int i = 0; i < 3; ++i)
        press(window(), Qt::Key_Up, {}, true);
    QCOMPARE(m_model.volume(), 0.7);
    QCOMPARE(m_model.toastMessage(), u"Volume: 70%"_s);

    press(window(), Qt::Key_Space, control);
    QVERIFY(m_model.isPlaying());
    press(window(), Qt::Key_Space, {}, true); // a held space toggles once
    QVERIFY(m_model.isPlaying());
    press(window(), Qt::Key_Space);
    QVERIFY(!m_model.isPlaying());
}

void tst_KeyboardMonitor::textFieldsGetTheirKeys()
{
    m_field->setText(u"ab"_s);
    m_field->setFocus();
    m_field->setCursorPosition(2);
    press(window(), Qt::Key_Space);
    press(window(), Qt::Key_Left);
    press(window(), Qt::Key_Left);
    press(window(), Qt::Key_Up);
    QCOMPARE(m_field->text(), u"ab "_s);
    QCOMPARE(m_field->cursorPosition(), 1);
    QTest::qWait(300);
    QVERIFY(!m_model.isPlaying());
    QCOMPARE(m_model.currentTime(), start);
    QCOMPARE(m_model.volume(), 0.5);
}

void tst_KeyboardMonitor::dialogsGetTheirKeys()
{
    QDialog dialog(&m_window);
    auto *recorder = new KeyRecorder;
    (new QVBoxLayout(&dialog))->addWidget(recorder);
    dialog.open();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    recorder->setFocus();
    for (int key : {Qt::Key_Space, Qt::Key_Right, Qt::Key_Up})
        press(dialog.windowHandle(), key);
    QCOMPARE(recorder->keys, (QList<int>{Qt::Key_Space, Qt::Key_Right, Qt::Key_Up}));
    press(window(), Qt::Key_Right); // the window under a modal dialog
    QTest::qWait(300);
    QVERIFY(!m_model.isPlaying());
    QCOMPARE(m_model.currentTime(), start);
    QCOMPARE(m_model.volume(), 0.5);
    dialog.close();
}

void tst_KeyboardMonitor::commandKStops()
{
    press(window(), Qt::Key_K, command, true); // a held Command-K does nothing
    QVERIFY(m_model.duration() > 690);
    press(window(), Qt::Key_K, command);
    QTRY_COMPARE(m_model.duration(), 0.0);
    QCOMPARE(m_recorder->keys, QList<int>{});
}

QTEST_MAIN(tst_KeyboardMonitor)
#include "tst_KeyboardMonitor.moc"
