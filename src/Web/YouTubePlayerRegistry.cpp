#include "Web/YouTubePlayerRegistry.h"

YouTubePlayerRegistry &YouTubePlayerRegistry::shared()
{
    static YouTubePlayerRegistry *registry = new YouTubePlayerRegistry;
    return *registry;
}
