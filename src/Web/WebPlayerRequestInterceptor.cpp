#include "Web/WebPlayerRequestInterceptor.h"

void WebPlayerRequestInterceptor::setReferrer(const QUrl &target, const QByteArray &referrer)
{
    m_referrerTarget = target;
    m_referrer = referrer;
}

void WebPlayerRequestInterceptor::interceptRequest(QWebEngineUrlRequestInfo &info)
{
    if (info.requestUrl().isLocalFile()) {
        info.block(true);
        return;
    }
    if (!m_referrerTarget.isEmpty() &&
        info.resourceType() == QWebEngineUrlRequestInfo::ResourceTypeMainFrame &&
        info.requestUrl() == m_referrerTarget) {
        info.setHttpHeader("Referer", m_referrer);
    }
}
