#pragma once

#include <QDir>
#include <QString>

// The media generated for the tests by make-test-media.sh (a CTest fixture).
inline QString testMedia(const QString &name)
{
    return QDir(QStringLiteral(VELM_TEST_MEDIA)).filePath(name);
}
