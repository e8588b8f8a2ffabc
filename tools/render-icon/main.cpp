// Renders the application's SVG icon into the PNG sizes of the hicolor icon theme, at build time:
//   velm-render-icon ICON.svg OUTPUT_DIR NAME SIZE…
// writes OUTPUT_DIR/hicolor/SIZExSIZE/apps/NAME.png for each size.

#include <QCoreApplication>
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 5) {
        std::fputs("usage: velm-render-icon ICON.svg OUTPUT_DIR NAME SIZE...\n", stderr);
        return 2;
    }
    QSvgRenderer icon(arguments.at(1));
    if (!icon.isValid()) {
        std::fprintf(stderr, "velm-render-icon: cannot read %s\n", qPrintable(arguments.at(1)));
        return 1;
    }
    for (const QString &argument : arguments.mid(4)) {
        const int size = argument.toInt();
        if (size <= 0)
            return 2;
        QImage picture(size, size, QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        icon.render(&painter);
        painter.end();
        const QString folder =
            QStringLiteral("%1/hicolor/%2x%2/apps").arg(arguments.at(2)).arg(size);
        if (!QDir().mkpath(folder) ||
            !picture.save(QStringLiteral("%1/%2.png").arg(folder, arguments.at(3)))) {
            std::fprintf(stderr, "velm-render-icon: cannot write into %s\n", qPrintable(folder));
            return 1;
        }
    }
    return 0;
}
