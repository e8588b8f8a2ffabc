#pragma once

#include <QString>

// English names of regions, for the country filter and the metadata lines of channel rows.
class CountryNames
{
public:
    CountryNames() = delete;

    // The English name of a two-letter region code (or a three-digit area code), in any letter
    // case; the code itself when no name is known for it.
    static QString englishName(const QString &code);
};
