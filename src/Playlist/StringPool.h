#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QHashFunctions>
#include <QString>

#include <unordered_map>

// Hands out one shared QString per distinct piece of bytes, so the thousands of channels of a
// playlist that carry the same group or country hold one copy of it instead of one each, and a
// piece seen before is not converted again. Not thread-safe.
class StringPool
{
public:
    // The string of key; made by makeText the first time the key is seen. Equal keys must stand
    // for equal texts.
    template <typename MakeText>
    QString intern(QByteArrayView key, MakeText &&makeText)
    {
        if (const auto found = m_strings.find(key); found != m_strings.end())
            return found->second;
        return m_strings.emplace(key.toByteArray(), makeText()).first->second;
    }

private:
    struct Hash
    {
        using is_transparent = void;
        size_t operator()(QByteArrayView key) const { return qHash(key); }
    };
    struct Equal
    {
        using is_transparent = void;
        bool operator()(QByteArrayView a, QByteArrayView b) const { return a == b; }
    };

    std::unordered_map<QByteArray, QString, Hash, Equal> m_strings;
};
