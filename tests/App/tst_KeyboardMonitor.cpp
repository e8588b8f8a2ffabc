#include "App/AppWindow.h"
#include "App/PlayerKeyMap.h"
#include "App/PlayerKeyboardMonitor.h"

#include "TestMedia.h"
#include "TestPlayer.h"

#include <QDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>
#include <QWindow>

#include <cmath>

using namespace Qt::StringLiterals;
using Action = PlayerKeyMap::Action;
using Kind = Action::Kind;

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
const Qt::KeyboardModifiers none;
const Qt::KeyboardModifiers command = Qt::ControlModifier;
const Qt::KeyboardModifiers control = Qt::MetaModifier;
const Qt::KeyboardModifiers option = Qt::AltModifier;
const Qt::KeyboardModifiers shift = Qt::ShiftModifier;
// Mac keyboards report arrows with the keypad flag; it changes nothing.
const Qt::KeyboardModifiers keypad = Qt::KeypadModifier;

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

// The key rules as a table, then the monitor on a real window and a real player: a few keys of
// each kind reach playback, and the keys of text fields, dialogs and other controls stay theirs.
class tst_KeyboardMonitor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void mapsKeys_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<bool>("isAutoRepeat");
        QTest::addColumn<Action>("action");
        const auto row = [](const char *name, int key, Qt::KeyboardModifiers modifiers, bool repeat,
                            Action action) {
            QTest::newRow(name) << key << modifiers << repeat << action;
        };
        row("space", Qt::Key_Space, none, false, {Kind::togglePlayback, 0});
        row("space held", Qt::Key_Space, none, true, {Kind::swallow, 0});
        row("control-space", Qt::Key_Space, control, false, {Kind::togglePlayback, 0});
        row("command-k", Qt::Key_K, command, false, {Kind::stop, 0});
        row("command-k held", Qt::Key_K, command, true, {Kind::swallow, 0});
        row("k alone", Qt::Key_K, none, false, {Kind::pass, 0});
        row("control-k", Qt::Key_K, control, false, {Kind::pass, 0});
        row("right", Qt::Key_Right, keypad, false, {Kind::skip, 5});
        row("left", Qt::Key_Left, none, false, {Kind::skip, -5});
        row("option-right", Qt::Key_Right, option, false, {Kind::skip, 20});
        row("command-left", Qt::Key_Left, command | keypad, false, {Kind::skip, -60});
        row("option-command-right", Qt::Key_Right, option | command, false, {Kind::skip, 300});
        row("shift-option-command-left", Qt::Key_Left, shift | option | command, false,
            {Kind::skip, -300});
        row("shift-right", Qt::Key_Right, shift, false, {Kind::pass, 0});
        row("up", Qt::Key_Up, keypad, false, {Kind::adjustVolume, 0.05});
        row("up held", Qt::Key_Up, none, true, {Kind::adjustVolume, 0.05});
        row("shift-command-up", Qt::Key_Up, shift | command, false, {Kind::adjustVolume, 0.01});
        row("command-down", Qt::Key_Down, command, false, {Kind::adjustVolume, -0.2});
        row("control-up", Qt::Key_Up, control, false, {Kind::pass, 0});
        row("letter", Qt::Key_A, none, false, {Kind::pass, 0});
    }

    void mapsKeys()
    {
        QFETCH(int, key);
        QFETCH(Qt::KeyboardModifiers, modifiers);
        QFETCH(bool, isAutoRepeat);
        QFETCH(Action, action);
        const Action actual = PlayerKeyMap::actionFor(key, modifiers, isAutoRepeat);
        QCOMPARE(int(actual.kind), int(action.kind));
        QCOMPARE(actual.amount, action.amount);
    }

    void initTestCase()
    {
        auto *layout = new QVBoxLayout(m_window.centralWidget());
        layout->addWidget(m_field);
        layout->addWidget(m_recorder);
        m_monitor = std::make_unique<PlayerKeyboardMonitor>(model());
        m_window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&m_window));
        model().play(WebAddress::fromLocalFile(testMedia(u"long.mp4"_s)), std::nullopt, false);
        QTRY_VERIFY(model().duration() > 690);
        model().togglePlayback();
        QVERIFY(!model().isPlaying());
    }

    void init()
    {
        m_recorder->keys.clear();
        m_recorder->setFocus();
        model().setVolume(0.5);
        model().skip(start - model().currentTime());
        QTRY_VERIFY(std::fabs(model().currentTime() - start) < 0.01);
    }

    void routesKeys_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<double>("position");
        QTest::addColumn<double>("volume");
        QTest::addColumn<bool>("reachesControl");
        const auto row = [](const char *name, int key, Qt::KeyboardModifiers modifiers,
                            double position, double volume, bool reaches) {
            QTest::newRow(name) << key << modifiers << position << volume << reaches;
        };
        row("option-command-right", Qt::Key_Right, option | command, start + 300, 0.5, false);
        row("command-left", Qt::Key_Left, command, start - 60, 0.5, false);
        row("command-down", Qt::Key_Down, command, start, 0.3, false);
        row("shift-right", Qt::Key_Right, shift, start, 0.5, true);
        row("letter", Qt::Key_A, {}, start, 0.5, true);
    }

    void routesKeys()
    {
        QFETCH(int, key);
        QFETCH(Qt::KeyboardModifiers, modifiers);
        QFETCH(double, position);
        QFETCH(double, volume);
        QFETCH(bool, reachesControl);

        press(window(), key, modifiers);
        QTRY_VERIFY(std::fabs(model().currentTime() - position) < 0.01);
        QCOMPARE(model().volume(), volume);
        QCOMPARE(m_recorder->keys, reachesControl ? QList<int>{key} : QList<int>{});
        QVERIFY(!model().isPlaying());
    }

    void heldKeys()
    {
        press(window(), Qt::Key_Up);
        for (int i = 0; i < 3; ++i)
            press(window(), Qt::Key_Up, {}, true);
        QCOMPARE(model().volume(), 0.7);
        QCOMPARE(model().toastMessage(), u"Volume: 70%"_s);

        press(window(), Qt::Key_Space, control);
        QVERIFY(model().isPlaying());
        press(window(), Qt::Key_Space, {}, true); // a held space toggles once
        QVERIFY(model().isPlaying());
        press(window(), Qt::Key_Space);
        QVERIFY(!model().isPlaying());
    }

    void textFieldsAndDialogsGetTheirKeys()
    {
        m_field->setText(u"ab"_s);
        m_field->setFocus();
        m_field->setCursorPosition(2);
        for (int key : {Qt::Key_Space, Qt::Key_Left, Qt::Key_Left, Qt::Key_Up})
            press(window(), key);
        QCOMPARE(m_field->text(), u"ab "_s);
        QCOMPARE(m_field->cursorPosition(), 1);

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
        dialog.close();

        QVERIFY(!model().isPlaying());
        QCOMPARE(model().currentTime(), start);
        QCOMPARE(model().volume(), 0.5);
    }

    void commandKStops()
    {
        press(window(), Qt::Key_K, command, true); // a held Command-K does nothing
        QVERIFY(model().duration() > 690);
        press(window(), Qt::Key_K, command);
        QTRY_COMPARE(model().duration(), 0.0);
        QCOMPARE(m_recorder->keys, QList<int>{});
    }

private:
    QWindow *window() { return m_window.windowHandle(); }
    PlayerModel &model() { return m_player.model; }

    TestPlayer m_player;
    AppWindow m_window;
    KeyRecorder *m_recorder = new KeyRecorder;
    QLineEdit *m_field = new QLineEdit;
    std::unique_ptr<PlayerKeyboardMonitor> m_monitor;
};

QTEST_MAIN(tst_KeyboardMonitor)
#include "tst_KeyboardMonitor.moc"
