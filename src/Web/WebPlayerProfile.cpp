#include "Web/WebPlayerProfile.h"

WebPlayerProfile::WebPlayerProfile(QObject *parent) : QWebEngineProfile(parent)
{
    setHttpCacheType(QWebEngineProfile::MemoryHttpCache);
    setPersistentCookiesPolicy(QWebEngineProfile::NoPersistentCookies);
}
