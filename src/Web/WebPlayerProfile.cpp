#include "Web/WebPlayerProfile.h"

#include <QCoreApplication>
#include <QWebEngineProfile>

QWebEngineProfile *WebPlayerProfile::shared()
{
    static QWebEngineProfile *profile = [] {
        auto *created = new QWebEngineProfile(QCoreApplication::instance());
        created->setHttpCacheType(QWebEngineProfile::MemoryHttpCache);
        created->setPersistentCookiesPolicy(QWebEngineProfile::NoPersistentCookies);
        return created;
    }();
    return profile;
}
