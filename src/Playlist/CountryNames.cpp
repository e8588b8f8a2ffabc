#include "Playlist/CountryNames.h"

#include <QLocale>

QString CountryNames::englishName(const QString &code)
{
    // Qt's territory names are its English CLDR names, whatever the user's language.
    const QLocale::Territory territory = QLocale::codeToTerritory(code);
    if (territory == QLocale::AnyTerritory)
        return code;
    return QLocale::territoryToString(territory);
}
