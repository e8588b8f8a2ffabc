#pragma once

#include <QTest>

// Adds a data row of two texts: what goes in and what should come out.
inline void addTextRow(const char *name, const char16_t *input, const char16_t *expected)
{
    QTest::newRow(name) << QString::fromUtf16(input) << QString::fromUtf16(expected);
}
