#include "Web/OKVideoPlayerRegistry.h"

OKVideoPlayerRegistry &OKVideoPlayerRegistry::shared()
{
    static OKVideoPlayerRegistry *registry = new OKVideoPlayerRegistry;
    return *registry;
}
