#include "UI/SymbolIcons.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

// Symbol name → file of the set under :/symbols.
constexpr std::pair<QStringView, QStringView> symbolFiles[] = {
    {u"play.rectangle", u"square-play.svg"},
};

} // namespace

QString SymbolIcons::resourcePath(QStringView symbolName)
{
    for (const auto &[name, file] : symbolFiles)
        if (name == symbolName)
            return u":/symbols/"_s + file.toString();
    return {};
}

QPixmap SymbolIcons::pixmap(QStringView symbolName, int size, const QColor &color,
                            qreal devicePixelRatio)
{
    QFile file(resourcePath(symbolName));
    if (file.fileName().isEmpty() || !file.open(QIODevice::ReadOnly))
        return {};
    // The set strokes in "currentColor", which the SVG renderer leaves black: paint it in ours.
    QByteArray svg = file.readAll();
    svg.replace("currentColor", color.name(QColor::HexRgb).toLatin1());
    QSvgRenderer renderer(svg);
    const int pixels = qRound(size * devicePixelRatio);
    QPixmap picture(pixels, pixels);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setOpacity(color.alphaF());
    renderer.render(&painter);
    painter.end();
    picture.setDevicePixelRatio(devicePixelRatio);
    return picture;
}
