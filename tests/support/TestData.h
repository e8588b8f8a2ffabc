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

// The larger corpus of real playlists that may lie beside the checkout (../shared/testdata);
// nothing when it is not there. Tests read it only in addition to the repository's own data.
inline std::optional<QDir> sharedCorpus()
{
    QDir corpus(QStringLiteral(VELM_SHARED_TESTDATA));
    return corpus.exists() ? std::optional(corpus) : std::nullopt;
}
