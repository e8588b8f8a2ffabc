#include "Web/WebPlayerEndpoints.h"

#include "Base/AppIdentity.h"
#include "Web/WebVideoHosts.h"

using namespace Qt::StringLiterals;

WebPlayerEndpoints WebPlayerEndpoints::standard()
{
    return {AppIdentity::webOrigin.toString(), WebVideoHosts::youTubeIframeApi.toString(),
            WebVideoHosts::okRu.toString()};
}

QUrl WebPlayerEndpoints::pageBaseURL() const
{
    const QUrl url(pageOrigin + u'/', QUrl::StrictMode);
    // The origin is fixed configuration: a wrong one is a defect of the build, not of input.
    if (!url.isValid() || url.scheme().isEmpty() || url.host().isEmpty())
        qFatal("The web player origin is not a valid address");
    return url;
}

QUrl WebPlayerEndpoints::okVideoEmbedURL(const OKVideoContent &content) const
{
    QUrl url(content.embedURL().text(), QUrl::StrictMode);
    url.setAuthority(okVideoHost);
    return url;
}

QByteArray WebPlayerEndpoints::okVideoReferer() const
{
    return "https://" + okVideoHost.toUtf8() + '/';
}
