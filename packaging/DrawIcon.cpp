#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdlib>
#include <iostream>

// Draws a picture as wide and high as it should be: draw-icon IN.svg PIXELS OUT.png
int main(int argc, char** argv) {
    constexpr int argumentCount = 4;
    if (argc != argumentCount)
        return EXIT_FAILURE;
    QSvgRenderer picture(QString::fromLocal8Bit(argv[1]));
    const int pixels = std::atoi(argv[2]);
    QImage icon(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    icon.fill(Qt::transparent);
    QPainter painter(&icon);
    picture.render(&painter);
    painter.end();
    if (picture.isValid() && icon.save(QString::fromLocal8Bit(argv[3]), "PNG"))
        return EXIT_SUCCESS;
    std::cerr << argv[3] << ": The icon could not be drawn.\n";
    return EXIT_FAILURE;
}
