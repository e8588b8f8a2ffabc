#pragma once

#include <QByteArray>
#include <QUrl>
#include <QWebEngineUrlRequestInterceptor>

// Sees every request of one web player page before it leaves: refuses local files whoever asks,
// and gives the one navigation we started ourselves the referrer it must carry (the browser
// engine drops a "Referer" set on the load request itself).
class WebPlayerRequestInterceptor : public QWebEngineUrlRequestInterceptor
{
    Q_OBJECT

public:
    using QWebEngineUrlRequestInterceptor::QWebEngineUrlRequestInterceptor;

    // Every main-frame request for exactly this address (a reload too) carries this referrer.
    void setReferrer(const QUrl &target, const QByteArray &referrer);

    void interceptRequest(QWebEngineUrlRequestInfo &info) override;

private:
    QUrl m_referrerTarget;
    QByteArray m_referrer;
};
