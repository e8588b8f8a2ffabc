#include "Recording/WidgetsAbove.h"

#include "Base/MemoryPrefault.h"

#include <QWidget>

std::vector<WidgetsAbove::Placed> WidgetsAbove::over(const QWidget &view)
{
    std::vector<Placed> placed;
    const QWidget *window = view.window();
    const QRect viewRect = view.rect();
    const QWidget *branch = &view;
    for (const QWidget *parent = view.parentWidget(); parent && branch != window;
         branch = parent, parent = parent->parentWidget()) {
        const QObjectList &children = parent->children();
        for (qsizetype i = children.indexOf(branch) + 1; i < children.size(); ++i) {
            auto *widget = qobject_cast<QWidget *>(children[i]);
            if (!widget || widget->isWindow() || !widget->isVisible())
                continue;
            const QRect inView(view.mapFrom(window, widget->mapTo(window, QPoint(0, 0))),
                               widget->size());
            const QRect covered = inView.intersected(viewRect);
            if (!covered.isEmpty())
                placed.push_back({widget, covered});
        }
    }
    return placed;
}

QImage WidgetsAbove::picture(const QWidget &view, const Placed &placed, double scale)
{
    QImage image;
    paint(view, placed, scale, image);
    return image;
}

void WidgetsAbove::paint(const QWidget &view, const Placed &placed, double scale, QImage &image)
{
    const QWidget *window = view.window();
    const QPoint origin = view.mapFrom(window, placed.widget->mapTo(window, QPoint(0, 0)));
    const QSize pixels = placed.covered.size() * scale;
    if (image.size() != pixels || image.format() != QImage::Format_ARGB32_Premultiplied) {
        image = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
        // Hundreds of kilobytes about to be filled: mapped in one step.
        MemoryPrefault::prepareForWriting(image.bits(), size_t(image.sizeInBytes()));
    }
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    placed.widget->render(&image, QPoint(), QRegion(placed.covered.translated(-origin)),
                          QWidget::DrawChildren);
}
