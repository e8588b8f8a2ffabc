#pragma once

#include <Qt>

// What a key press anywhere in the main window does to playback. Command is Qt's Control
// modifier and Control is Qt's Meta modifier, as Qt maps a Mac keyboard, so the same physical
// keys work on every platform.
class PlayerKeyMap
{
public:
    struct Action
    {
        enum class Kind
        {
            pass,    // the key goes on to the focused control
            swallow, // the key is taken and does nothing (an auto-repeat of a one-shot key)
            togglePlayback,
            stop,
            skip,        // amount: seconds, negative backwards
            adjustVolume // amount: fraction of full volume, negative downwards
        };
        Kind kind = Kind::pass;
        double amount = 0;

        bool consumesKey() const { return kind != Kind::pass; }
        friend bool operator==(const Action &, const Action &) = default;
    };

    PlayerKeyMap() = delete;

    static Action actionFor(int key, Qt::KeyboardModifiers modifiers, bool isAutoRepeat);

private:
    static Action seek(int direction, Qt::KeyboardModifiers modifiers, bool isAutoRepeat);
    static Action volume(int direction, Qt::KeyboardModifiers modifiers);
};
