#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>

#include <initializer_list>
#include <optional>

// An address (URI reference) kept as its exact text.
//
// Text is accepted only when every character is allowed in an RFC 3986 reference: spaces, quotes,
// angle brackets, non-ASCII letters, stray "%" and the like make the text invalid instead of being
// escaped, so what the user or a playlist wrote is never silently changed into another address.
// Nothing is normalised either (no case folding of scheme or host, no re-encoding), so two
// addresses compare equal exactly when their absolute texts do.
//
// Because valid text is ASCII, it is stored as one QByteArray; components are split on demand.
// A default-constructed WebAddress is null and is never produced by the parsing functions.
class WebAddress
{
public:
    struct QueryItem
    {
        QString name;
        std::optional<QString> value; // absent when the item has no "="
        friend bool operator==(const QueryItem &, const QueryItem &) = default;
    };

    WebAddress() = default;

    // The text as an address of its own (relative references stay relative).
    static std::optional<WebAddress> fromText(QStringView text);
    // The same for text that is still bytes: what fromText gives for their Latin-1 reading (or
    // their UTF-8 reading: no byte of an address is outside ASCII).
    static std::optional<WebAddress> fromAscii(QByteArrayView bytes);
    // The text resolved against base by RFC 3986 section 5.2. Text with a scheme stands as written.
    static std::optional<WebAddress> fromText(QStringView text, const WebAddress &base);
    static std::optional<WebAddress> fromAscii(QByteArrayView bytes, const WebAddress &base);
    // The "file://" address of an absolute file-system path, percent-encoded as needed.
    static WebAddress fromLocalFile(const QString &absolutePath);

    // Percent-decodes text as UTF-8; nothing when the decoded bytes are not valid UTF-8.
    static std::optional<QString> percentDecoded(QByteArrayView encoded);

    bool isNull() const { return m_text.isNull(); }
    QString text() const { return QString::fromLatin1(m_text); }
    const QByteArray &bytes() const { return m_text; }

    bool hasScheme() const;
    QString scheme() const;
    bool isLocalFile() const;
    // Whether the scheme is http or https, in any letter case.
    bool isWebAddress() const;
    // The decoded host name; nothing when there is no authority or its host is empty.
    // An IP literal is given without its brackets.
    std::optional<QString> host() const;
    // The decoded path, trailing "/" kept ("" when the address has no path).
    QString path() const;
    // The decoded path split at "/", empty pieces dropped, the root as a component "/" of its own.
    QStringList pathComponents() const;
    // The last of pathComponents(), decoded; "" without a path; nothing when it does not decode.
    std::optional<QString> lastPathComponent() const;
    // What follows the last "." of the last path component ("" when there is none).
    QString pathExtension() const;
    std::optional<QString> query() const;
    QList<QueryItem> queryItems() const;
    // The decoded path of a file address.
    QString toLocalFile() const;

    friend bool operator==(const WebAddress &, const WebAddress &) = default;
    friend size_t qHash(const WebAddress &address, size_t seed = 0)
    {
        return qHash(address.m_text, seed);
    }

private:
    explicit WebAddress(QByteArray text) : m_text(std::move(text)) {}
    // Text made only of characters an address may hold, resolved against base.
    static std::optional<WebAddress> resolved(QByteArray ascii, const WebAddress &base);
    // Whether the scheme is one of names, in any letter case.
    bool hasSchemeAmong(std::initializer_list<QByteArrayView> names) const;

    QByteArray m_text;
};

Q_DECLARE_TYPEINFO(WebAddress, Q_RELOCATABLE_TYPE);
