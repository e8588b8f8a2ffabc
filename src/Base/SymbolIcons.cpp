#include "Base/SymbolIcons.h"

#include <QFile>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <QIcon>

using namespace Qt::StringLiterals;

namespace {

struct Symbol
{
    QStringView name;
    QStringView file; // under :/symbols
    bool filled;      // the set draws outlines; ".fill" symbols are drawn filled as well
};

constexpr Symbol symbols[] = {
    {u"play.rectangle", u"square-play.svg", false},
    {u"backward.fill", u"rewind.svg", true},
    {u"forward.fill", u"fast-forward.svg", true},
    {u"play.fill", u"play.svg", true},
    {u"pause.fill", u"pause.svg", true},
    {u"stop.fill", u"square.svg", true},
    {u"list.bullet", u"list.svg", false},
    {u"speaker.slash.fill", u"volume-x.svg", false},
    {u"speaker.wave.2.fill", u"volume-2.svg", false},
    {u"rectangle", u"rectangle-horizontal.svg", false},
    {u"rectangle.portrait", u"rectangle-vertical.svg", false},
    {u"rectangle.portrait.fill", u"rectangle-vertical.svg", true},
    {u"rotate.right", u"rotate-cw.svg", false},
    {u"hand.draw", u"hand.svg", false},
    {u"viewfinder", u"scan.svg", false},
    {u"checkmark.circle.fill", u"circle-check.svg", false},
    {u"record.circle", u"circle-dot.svg", false},
    {u"record.circle.fill", u"circle.svg", true},
    {u"arrow.up.left.and.arrow.down.right", u"maximize-2.svg", false},
    {u"antenna.radiowaves.left.and.right", u"radio-tower.svg", false},
    {u"list.and.film", u"list-video.svg", false},
    {u"plus", u"plus.svg", false},
    {u"trash", u"trash-2.svg", false},
    {u"pencil", u"pencil.svg", false},
    {u"bookmark", u"bookmark-plus.svg", false},
    {u"bookmark.fill", u"bookmark-check.svg", false},
    {u"xmark.circle", u"circle-x.svg", false},
    {u"textformat", u"type.svg", false},
    {u"square.and.arrow.up", u"share.svg", false},
    {u"doc.badge.arrow.up", u"file-up.svg", false},
    {u"photo", u"image.svg", false},
    {u"globe", u"globe.svg", false},
    {u"chevron.down", u"chevron-down.svg", false},
    {u"square.grid.2x2", u"layout-grid.svg", false},
    {u"checkmark", u"check.svg", false},
};

const Symbol *symbolNamed(QStringView name)
{
    for (const Symbol &symbol : symbols)
        if (symbol.name == name)
            return &symbol;
    return nullptr;
}

} // namespace

QString SymbolIcons::resourcePath(QStringView symbolName)
{
    const Symbol *symbol = symbolNamed(symbolName);
    return symbol ? u":/symbols/"_s + symbol->file.toString() : QString();
}

QIcon SymbolIcons::icon(QStringView symbolName, const QColor &color, int size)
{
    QIcon icon;
    for (const qreal ratio : {1.0, 2.0})
        icon.addPixmap(pixmap(symbolName, size, color, ratio));
    return icon;
}

QPixmap SymbolIcons::pixmap(QStringView symbolName, int size, const QColor &color,
                            qreal devicePixelRatio)
{
    // Buttons and the prompt ask again on every state change and paint: render each variant once.
    const QString key = u"symbol:%1:%2:%3:%4"_s.arg(symbolName)
                            .arg(size)
                            .arg(color.name(QColor::HexArgb))
                            .arg(devicePixelRatio);
    QPixmap cached;
    if (QPixmapCache::find(key, &cached))
        return cached;
    QFile file(resourcePath(symbolName));
    if (file.fileName().isEmpty() || !file.open(QIODevice::ReadOnly))
        return {};
    // The set strokes in "currentColor", which the SVG renderer leaves black: paint it in ours.
    QByteArray svg = file.readAll();
    const QByteArray colour = color.name(QColor::HexRgb).toLatin1();
    if (symbolNamed(symbolName)->filled)
        svg.replace("fill=\"none\"", "fill=\"" + colour + '"');
    svg.replace("currentColor", colour);
    QSvgRenderer renderer(svg);
    const int pixels = qRound(size * devicePixelRatio);
    QPixmap picture(pixels, pixels);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setOpacity(color.alphaF());
    renderer.render(&painter);
    painter.end();
    picture.setDevicePixelRatio(devicePixelRatio);
    QPixmapCache::insert(key, picture);
    return picture;
}
