#pragma once

#include <QDir>
#include <QFile>
#include <QString>
#include <QTest>

// The path of a file of the repository's test data (tests/data: real playlists, fixtures of
// another parser, our own legacy-encoded lists, photographs; see its README).
inline QString testData(const QString &relativePath)
{
    return QStringLiteral(VELM_TEST_DATA "/") + relativePath;
}

// The bytes of a test data file; a missing file fails the calling test.
inline QByteArray readTestData(const QString &relativePath)
{
    QFile file(testData(relativePath));
    if (!file.open(QIODevice::ReadOnly)) {
        QTest::qFail(qPrintable(QStringLiteral("missing test data %1").arg(file.fileName())),
                     __FILE__, __LINE__);
        return {};
    }
    return file.readAll();
}

// A larger corpus of real playlists named by the environment (VELM_EXTRA_PLAYLISTS, a folder);
// nothing when none is named or it is not there. Tests read it only in addition to the
// repository's own data.
inline std::optional<QDir> extraCorpus()
{
    const QString folder = qEnvironmentVariable("VELM_EXTRA_PLAYLISTS");
    return !folder.isEmpty() && QDir(folder).exists() ? std::optional(QDir(folder)) : std::nullopt;
}
