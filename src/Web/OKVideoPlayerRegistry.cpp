#include "Web/OKVideoPlayerRegistry.h"

#include "Web/WebPlayerScript.h"

OKVideoPlayerRegistry &OKVideoPlayerRegistry::shared()
{
    static OKVideoPlayerRegistry *registry = new OKVideoPlayerRegistry;
    return *registry;
}

QString OKVideoPlayerRegistry::muteCommand(bool muted) const
{
    return WebPlayerScript::okVideoSetMuted(muted);
}
