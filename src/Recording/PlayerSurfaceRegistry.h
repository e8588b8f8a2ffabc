#pragma once

#include "Base/WeakViewSlot.h"
#include "Recording/PlayerRecordingSurface.h"

// Holds, weakly, the surface view on screen whose picture a recording captures. Views put
// themselves here when they come on screen; the recorder only reads it. The application makes
// one and hands it to the views. Main thread only.
class PlayerSurfaceRegistry : public WeakViewSlot<PlayerRecordingSurface>
{
public:
    // The current surface, or nothing once it is gone.
    PlayerRecordingSurface *surface() const { return target(); }
};
