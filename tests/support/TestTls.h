#pragma once

#include <QFile>
#include <QProcess>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QTemporaryDir>

#include <optional>

// A self-signed certificate for 127.0.0.1, made by the openssl command line once per test run,
// for servers that must be reached over https. Nothing when openssl cannot make one.
inline std::optional<QSslConfiguration> testTlsConfiguration()
{
    QTemporaryDir dir;
    const QString key = dir.filePath(QStringLiteral("key.pem"));
    const QString certificate = dir.filePath(QStringLiteral("certificate.pem"));
    QProcess openssl;
    openssl.start(QStringLiteral("openssl"),
                  {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"),
                   QStringLiteral("ec"), QStringLiteral("-pkeyopt"),
                   QStringLiteral("ec_paramgen_curve:prime256v1"), QStringLiteral("-nodes"),
                   QStringLiteral("-keyout"), key, QStringLiteral("-out"), certificate,
                   QStringLiteral("-subj"), QStringLiteral("/CN=127.0.0.1"),
                   QStringLiteral("-addext"), QStringLiteral("subjectAltName=IP:127.0.0.1"),
                   QStringLiteral("-days"), QStringLiteral("2")});
    if (!openssl.waitForFinished(30000) || openssl.exitCode() != 0)
        return std::nullopt;
    QFile keyFile(key);
    const QList<QSslCertificate> certificates = QSslCertificate::fromPath(certificate);
    if (!keyFile.open(QIODevice::ReadOnly) || certificates.isEmpty())
        return std::nullopt;
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(certificates.first());
    configuration.setPrivateKey(QSslKey(&keyFile, QSsl::Ec));
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    return configuration;
}
