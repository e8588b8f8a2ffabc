#include "Web/OKVideoContent.h"

#include "Web/WebVideoHosts.h"

namespace {

bool isAlphanumeric(char32_t codePoint)
{
    switch (QChar::category(codePoint)) {
    case QChar::Letter_Uppercase:
    case QChar::Letter_Lowercase:
    case QChar::Letter_Titlecase:
    case QChar::Letter_Modifier:
    case QChar::Letter_Other:
    case QChar::Mark_NonSpacing:
    case QChar::Mark_SpacingCombining:
    case QChar::Mark_Enclosing:
    case QChar::Number_DecimalDigit:
    case QChar::Number_Letter:
    case QChar::Number_Other:
        return true;
    default:
        return false;
    }
}

bool isWellFormedIdentifier(const QString &text)
{
    for (const char32_t codePoint : text.toUcs4()) {
        if (!isAlphanumeric(codePoint) && codePoint != U'_' && codePoint != U'-')
            return false;
    }
    return true;
}

} // namespace

std::optional<OKVideoContent> OKVideoContent::fromUrl(const WebAddress &url)
{
    const std::optional<QString> host = url.host();
    if (!host || !WebVideoHosts::isHostOrSubdomain(host->toLower(), WebVideoHosts::okRu))
        return std::nullopt;
    QStringList components = url.pathComponents();
    components.removeAll(QStringLiteral("/"));
    for (qsizetype i = 0; i < components.size(); ++i) {
        const QString &component = components[i];
        if (component != u"video" && component != u"videoembed" && component != u"live")
            continue;
        if (i + 1 == components.size())
            return std::nullopt;
        QString candidate = components[i + 1].trimmed();
        if (candidate.isEmpty() || !isWellFormedIdentifier(candidate))
            return std::nullopt;
        return OKVideoContent(std::move(candidate));
    }
    return std::nullopt;
}

WebAddress OKVideoContent::embedURL() const
{
    const QString text = QStringLiteral("https://") + WebVideoHosts::okRu.toString() +
                         QStringLiteral("/videoembed/") +
                         QString::fromLatin1(m_videoID.toUtf8().toPercentEncoding()) +
                         QStringLiteral("?autoplay=1&nochat=1");
    const std::optional<WebAddress> address = WebAddress::fromText(text);
    if (!address)
        qFatal("An OK.ru embed address could not be built from a validated identifier");
    return *address;
}
