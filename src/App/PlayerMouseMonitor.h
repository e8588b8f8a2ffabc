#pragma once

#include <QObject>

class AppNotifier;

// Posts AppNotifier::playerMouseMoved for every mouse movement over a window of the application,
// with that QWindow as the object, and lets the movement go on unchanged. Widgets see movements
// only when they track the mouse; the window sees all of them, so the monitor listens there.
class PlayerMouseMonitor : public QObject
{
    Q_OBJECT

public:
    explicit PlayerMouseMonitor(AppNotifier &notifier);
    ~PlayerMouseMonitor() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    AppNotifier &m_notifier;
};
