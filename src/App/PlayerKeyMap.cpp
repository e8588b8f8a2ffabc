#include "App/PlayerKeyMap.h"

namespace {

constexpr Qt::KeyboardModifier command = Qt::ControlModifier;
constexpr Qt::KeyboardModifier control = Qt::MetaModifier;
constexpr Qt::KeyboardModifier option = Qt::AltModifier;
constexpr Qt::KeyboardModifier shift = Qt::ShiftModifier;

using Action = PlayerKeyMap::Action;
using Kind = Action::Kind;

} // namespace

PlayerKeyMap::Action PlayerKeyMap::actionFor(int key, Qt::KeyboardModifiers modifiers,
                                             bool isAutoRepeat)
{
    switch (key) {
    case Qt::Key_Space:
        // Any modifiers; holding the key toggles once.
        return {isAutoRepeat ? Kind::swallow : Kind::togglePlayback, 0};
    case Qt::Key_K:
        if (!modifiers.testFlag(command))
            return {};
        return {isAutoRepeat ? Kind::swallow : Kind::stop, 0};
    case Qt::Key_Left:
        return seek(-1, modifiers, isAutoRepeat);
    case Qt::Key_Right:
        return seek(+1, modifiers, isAutoRepeat);
    case Qt::Key_Down:
        return volume(-1, modifiers);
    case Qt::Key_Up:
        return volume(+1, modifiers);
    default:
        return {};
    }
}

PlayerKeyMap::Action PlayerKeyMap::seek(int direction, Qt::KeyboardModifiers modifiers,
                                        bool isAutoRepeat)
{
    // Holding an arrow seeks once: repeats are taken whatever the modifiers.
    if (isAutoRepeat)
        return {Kind::swallow, 0};
    double step = 5;
    if (modifiers.testFlag(option) && modifiers.testFlag(command))
        step = 300;
    else if (modifiers.testFlag(command))
        step = 60;
    else if (modifiers.testFlag(option))
        step = 20;
    else if (modifiers.testFlag(shift) || modifiers.testFlag(control))
        return {}; // Shift and Control arrows belong to the focused control (selection)
    return {Kind::skip, direction * step};
}

PlayerKeyMap::Action PlayerKeyMap::volume(int direction, Qt::KeyboardModifiers modifiers)
{
    // Repeats keep changing the volume while the key is held. Shift wins over every other
    // modifier, for fine steps.
    double step = 0.05;
    if (modifiers.testFlag(shift))
        step = 0.01;
    else if (modifiers.testFlag(command))
        step = 0.2;
    else if (modifiers.testFlag(option))
        step = 0.1;
    else if (modifiers.testFlag(control))
        return {};
    return {Kind::adjustVolume, direction * step};
}
