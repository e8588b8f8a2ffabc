#pragma once

class QWebEngineProfile;

// The browser profile every web player page uses: off the record (nothing of the services'
// cookies, caches or storage reaches the disk) and shared, so the pages of one session reuse
// one network cache.
class WebPlayerProfile
{
public:
    WebPlayerProfile() = delete;

    // Created on first use, owned by the application object so that it outlives every page.
    static QWebEngineProfile *shared();
};
