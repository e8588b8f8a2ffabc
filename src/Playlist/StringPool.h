#pragma once

#include <QHashFunctions>
#include <QString>
#include <QStringView>

#include <unordered_set>

// Hands out one shared QString per distinct text, so the thousands of channels of a playlist that
// carry the same group or country hold one copy of it instead of one each. Not thread-safe.
class StringPool
{
public:
    QString intern(QStringView text);

private:
    struct Hash
    {
        using is_transparent = void;
        size_t operator()(QStringView text) const { return qHash(text); }
    };
    struct Equal
    {
        using is_transparent = void;
        bool operator()(QStringView a, QStringView b) const { return a == b; }
    };

    std::unordered_set<QString, Hash, Equal> m_strings;
};
