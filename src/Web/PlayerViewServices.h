#pragma once

#include "Web/WebPlayerEndpoints.h"

class AppNotifier;
class OKVideoPlayerRegistry;
class PlayerSurfaceRegistry;
class QWebEngineProfile;
class YouTubePlayerRegistry;

// The application-wide objects the player views work with, made once by the application and
// handed down through the video area: the registries that point script commands and recordings at
// the view on screen, the notifier that hears presses on a picture, the browser profile every web
// page shares, and where the web players come from.
struct PlayerViewServices
{
    AppNotifier &notifier;
    PlayerSurfaceRegistry &surfaces;
    YouTubePlayerRegistry &youtubePlayers;
    OKVideoPlayerRegistry &okVideoPlayers;
    QWebEngineProfile &webProfile;
    WebPlayerEndpoints endpoints = WebPlayerEndpoints::standard();
};
