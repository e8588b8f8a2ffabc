#pragma once

#include <QWebEngineProfile>

// The browser profile every web player page uses: off the record (nothing of the services'
// cookies, caches or storage reaches the disk), and one for the application, so the pages of one
// session share one network cache. It must outlive every page made with it.
class WebPlayerProfile : public QWebEngineProfile
{
public:
    explicit WebPlayerProfile(QObject *parent = nullptr);
};
