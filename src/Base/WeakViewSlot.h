#pragma once

#include <QObject>
#include <QPointer>

// Holds, weakly, the one view of a kind that is on screen: views put themselves here when they
// come on screen, and the slot never keeps one alive. Withdrawing takes effect only for the view
// held, so a view going away never unregisters a newer one. Main thread only.
template <typename Interface>
class WeakViewSlot
{
public:
    // The view held, or nothing once it is gone.
    QObject *view() const { return m_view; }
    // The view held as the interface it implements.
    Interface *target() const { return dynamic_cast<Interface *>(m_view.data()); }
    // view must implement Interface.
    void hold(QObject *view)
    {
        Q_ASSERT(!view || dynamic_cast<Interface *>(view));
        m_view = view;
    }
    void release(const QObject *view)
    {
        if (m_view == view)
            m_view = nullptr;
    }

private:
    QPointer<QObject> m_view;
};
