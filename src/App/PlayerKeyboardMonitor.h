#pragma once

#include <QObject>
#include <QPointer>

class PlayerModel;
class QKeyEvent;
class QWindow;

// Turns key presses anywhere in the application's window into player actions (see PlayerKeyMap).
// Keys always reach a text field being edited, and a dialog, panel or menu in front, unchanged.
//
// An application-wide event filter that looks at each key press once, when it reaches its
// window, before any control sees it. It holds the model weakly and removes itself when destroyed.
class PlayerKeyboardMonitor : public QObject
{
    Q_OBJECT

public:
    explicit PlayerKeyboardMonitor(PlayerModel &model);
    ~PlayerKeyboardMonitor() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    // Dialogs, tool panels, menus and pop-ups get their keys, and so does a window under a modal
    // one.
    static bool isPanel(const QWindow &window);
    // The focused object takes typed text (a line edit, a text editor, an editable combo box).
    static bool isEditingText(const QWindow &window);
    bool handle(const QKeyEvent &event);

    QPointer<PlayerModel> m_model;
};
