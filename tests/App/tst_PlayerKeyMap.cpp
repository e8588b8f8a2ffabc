#include "App/PlayerKeyMap.h"

#include <QTest>

using Action = PlayerKeyMap::Action;
using Kind = Action::Kind;

class tst_PlayerKeyMap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void mapsKeys_data();
    void mapsKeys();
};

void tst_PlayerKeyMap::mapsKeys_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<bool>("isAutoRepeat");
    QTest::addColumn<Action>("action");
    const Qt::KeyboardModifiers none;
    const Qt::KeyboardModifiers command = Qt::ControlModifier;
    const Qt::KeyboardModifiers control = Qt::MetaModifier;
    const Qt::KeyboardModifiers option = Qt::AltModifier;
    const Qt::KeyboardModifiers shift = Qt::ShiftModifier;
    // Mac keyboards report arrows with the keypad flag; it changes nothing.
    const Qt::KeyboardModifiers keypad = Qt::KeypadModifier;
    const auto row = [](const char *name, int key, Qt::KeyboardModifiers modifiers, bool repeat,
                        Action action) {
        QTest::newRow(name) << key << modifiers << repeat << action;
    };
    row("space", Qt::Key_Space, none, false, {Kind::togglePlayback, 0});
    row("space held", Qt::Key_Space, none, true, {Kind::swallow, 0});
    row("control-space", Qt::Key_Space, control, false, {Kind::togglePlayback, 0});
    row("command-k", Qt::Key_K, command, false, {Kind::stop, 0});
    row("command-shift-k", Qt::Key_K, command | shift, false, {Kind::stop, 0});
    row("command-k held", Qt::Key_K, command, true, {Kind::swallow, 0});
    row("k alone", Qt::Key_K, none, false, {Kind::pass, 0});
    row("control-k", Qt::Key_K, control, false, {Kind::pass, 0});
    row("right", Qt::Key_Right, keypad, false, {Kind::skip, 5});
    row("left", Qt::Key_Left, none, false, {Kind::skip, -5});
    row("right held", Qt::Key_Right, none, true, {Kind::swallow, 0});
    row("shift-right held", Qt::Key_Right, shift, true, {Kind::swallow, 0});
    row("option-right", Qt::Key_Right, option, false, {Kind::skip, 20});
    row("command-left", Qt::Key_Left, command | keypad, false, {Kind::skip, -60});
    row("option-command-right", Qt::Key_Right, option | command, false, {Kind::skip, 300});
    row("shift-option-command-left", Qt::Key_Left, shift | option | command, false,
        {Kind::skip, -300});
    row("shift-command-right", Qt::Key_Right, shift | command, false, {Kind::skip, 60});
    row("shift-right", Qt::Key_Right, shift, false, {Kind::pass, 0});
    row("control-left", Qt::Key_Left, control, false, {Kind::pass, 0});
    row("up", Qt::Key_Up, keypad, false, {Kind::adjustVolume, 0.05});
    row("up held", Qt::Key_Up, none, true, {Kind::adjustVolume, 0.05});
    row("down", Qt::Key_Down, none, false, {Kind::adjustVolume, -0.05});
    row("shift-command-up", Qt::Key_Up, shift | command, false, {Kind::adjustVolume, 0.01});
    row("command-down", Qt::Key_Down, command, false, {Kind::adjustVolume, -0.2});
    row("option-up", Qt::Key_Up, option, false, {Kind::adjustVolume, 0.1});
    row("control-option-up", Qt::Key_Up, control | option, false, {Kind::adjustVolume, 0.1});
    row("control-up", Qt::Key_Up, control, false, {Kind::pass, 0});
    row("letter", Qt::Key_A, none, false, {Kind::pass, 0});
    row("return", Qt::Key_Return, none, false, {Kind::pass, 0});
}

void tst_PlayerKeyMap::mapsKeys()
{
    QFETCH(int, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(bool, isAutoRepeat);
    QFETCH(Action, action);
    const Action actual = PlayerKeyMap::actionFor(key, modifiers, isAutoRepeat);
    QCOMPARE(int(actual.kind), int(action.kind));
    QCOMPARE(actual.amount, action.amount);
}

QTEST_APPLESS_MAIN(tst_PlayerKeyMap)
#include "tst_PlayerKeyMap.moc"
