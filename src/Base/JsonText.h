#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QStringView>

// JSON text as the saved-links store has always written it: strings escape '"', '\\', '/' (as
// "\/") and control characters; everything else is written as UTF-8. Stored bytes must stay
// byte-for-byte stable, so this writer is used instead of QJsonDocument (which sorts keys and
// leaves "/" alone).
class JsonText
{
public:
    JsonText() = delete;

    static void appendString(QByteArray &out, QStringView text);
    // The same for text held as Latin-1 bytes (an address: ASCII), without making it a string
    // first.
    static void appendAscii(QByteArray &out, QByteArrayView text);
    static QByteArray quoted(QStringView text);
};
