#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QStringView>

// The product's symbols by name ("play.rectangle", …), drawn from the SVG set shipped in the
// application's resources, so every platform shows the same pictures.
class SymbolIcons
{
public:
    SymbolIcons() = delete;

    // The resource holding the symbol's picture; empty for an unknown name.
    static QString resourcePath(QStringView symbolName);
    // The symbol drawn in that colour (alpha included), size × size device-independent pixels
    // at the device pixel ratio given. A null pixmap for an unknown name.
    // The symbol as an icon in that colour, at 1× and 2×.
    static QIcon icon(QStringView symbolName, const QColor &color = Qt::white, int size = 16);
    static QPixmap pixmap(QStringView symbolName, int size, const QColor &color,
                          qreal devicePixelRatio = 1);
};
