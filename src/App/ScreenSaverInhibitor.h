#pragma once

#include <QObject>
#include <QString>

#include <memory>

// Keeps the screen saver and the display's sleep away while asked to. On Linux through the
// desktop's org.freedesktop.ScreenSaver service over D-Bus, or through the desktop portal's
// Inhibit where that service is missing (Wayland desktops, sandboxes); on macOS with a power
// assertion. No call waits on the caller's thread; a desktop without either service just keeps
// its screen saver.
class ScreenSaverInhibitor : public QObject
{
    Q_OBJECT

public:
    // reason: what the desktop shows as the cause, where it shows one.
    explicit ScreenSaverInhibitor(const QString &reason, QObject *parent = nullptr);
    // Releases a hold still in place.
    ~ScreenSaverInhibitor() override;

    void setInhibited(bool inhibited)
    {
        if (inhibited == m_wanted)
            return;
        m_wanted = inhibited;
        settle();
    }
    bool isInhibited() const { return m_wanted; }

private:
    struct Hold;

    // Brings the hold in line with what is wanted, one request at a time.
    void settle();
    void acquire();
    void release();

    QString m_reason;
    bool m_wanted = false;
    std::unique_ptr<Hold> m_hold;
};
