#include "Web/YouTubePlayerRegistry.h"

#include "Web/WebPlayerScript.h"

YouTubePlayerRegistry &YouTubePlayerRegistry::shared()
{
    static YouTubePlayerRegistry *registry = new YouTubePlayerRegistry;
    return *registry;
}

QString YouTubePlayerRegistry::muteCommand(bool muted) const
{
    return WebPlayerScript::youTubeSetMuted(muted);
}
