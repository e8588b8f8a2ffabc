#include "Recording/PlayerSurfaceRegistry.h"

#include "Recording/PlayerRecordingSurface.h"

PlayerSurfaceRegistry &PlayerSurfaceRegistry::shared()
{
    static PlayerSurfaceRegistry *registry = new PlayerSurfaceRegistry;
    return *registry;
}

PlayerRecordingSurface *PlayerSurfaceRegistry::surface() const
{
    return dynamic_cast<PlayerRecordingSurface *>(m_surface.data());
}

void PlayerSurfaceRegistry::setSurface(QObject *view)
{
    Q_ASSERT(!view || dynamic_cast<PlayerRecordingSurface *>(view));
    m_surface = view;
}

void PlayerSurfaceRegistry::clearSurface(const QObject *view)
{
    if (m_surface == view)
        m_surface = nullptr;
}
