#include <QImage>
#include <QPainter>
#include <QString>
#include <QSvgRenderer>

#include <array>
#include <cstdio>

/// Renders the application's icon in the sizes of the hicolor theme: FOLDER/16.png and so on.
///     ordovan-icons FOLDER SMALL.svg LARGE.svg
/// The small drawing has fewer and bolder lines, for up to 24 pixels.
int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: ordovan-icons FOLDER SMALL.svg LARGE.svg\n", stderr);
        return 2;
    }
    constexpr int largestSmall = 24;
    for (const int pixels : std::array{16, 22, 24, 32, 48, 64, 96, 128, 256, 512}) {
        QSvgRenderer drawing(QString::fromLocal8Bit(argv[pixels <= largestSmall ? 2 : 3]));
        QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        drawing.render(&painter);
        painter.end();
        const QString file = QString::fromLocal8Bit(argv[1]) + u'/' + QString::number(pixels) + QStringLiteral(".png");
        if (drawing.isValid() && image.save(file)) continue;
        std::fprintf(stderr, "ordovan-icons: can not write %s\n", qPrintable(file));
        return 1;
    }
    return 0;
}
