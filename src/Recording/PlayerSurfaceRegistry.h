#pragma once

#include <QObject>
#include <QPointer>

class PlayerRecordingSurface;

// Holds, weakly, the surface view on screen whose picture a recording captures. Views put
// themselves here when they come on screen; the recorder only reads it. Main thread only.
class PlayerSurfaceRegistry
{
public:
    // Created on first use; lives until the process ends.
    static PlayerSurfaceRegistry &shared();

    // The current surface, or nothing once it is gone.
    PlayerRecordingSurface *surface() const;
    QObject *surfaceView() const { return m_surface; }
    // view must implement PlayerRecordingSurface.
    void setSurface(QObject *view);
    // Clears the registration only if it is this very view, so a view going away never
    // unregisters a newer one.
    void clearSurface(const QObject *view);

private:
    PlayerSurfaceRegistry() = default;

    QPointer<QObject> m_surface;
};
