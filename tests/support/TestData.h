#pragma once

#include <QFile>
#include <QString>
#include <QTest>

// The path of a file of the shared test data (real playlists, fixtures of other parsers, images).
inline QString sharedTestData(const QString &relativePath)
{
    return QStringLiteral(VELM_SHARED_TESTDATA "/") + relativePath;
}

// The bytes of a shared test file; a missing file fails the calling test.
inline QByteArray readSharedTestData(const QString &relativePath)
{
    QFile file(sharedTestData(relativePath));
    if (!file.open(QIODevice::ReadOnly)) {
        QTest::qFail(qPrintable(QStringLiteral("missing test data %1").arg(file.fileName())),
                     __FILE__, __LINE__);
        return {};
    }
    return file.readAll();
}
