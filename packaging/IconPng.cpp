// quillon-icon-png: renders the application icon's SVG into a square PNG at build time, so the
// icon theme gets a bitmap size drawn from the one source.
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <cstdio>

namespace {

constexpr const char* usage = "Usage: quillon-icon-png SOURCE.svg TARGET.png SIZE\n"
                              "Renders SOURCE.svg into a SIZE x SIZE PNG.\n";

int fail(const char* message) {
    std::fprintf(stderr, "quillon-icon-png: %s\n", message);
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    const QString first = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString();
    if (first == QLatin1String("--help")) {
        std::fputs(usage, stdout);
        return 0;
    }
    if (first == QLatin1String("--version")) {
        std::printf("quillon-icon-png %s\n", QUILLON_VERSION);
        return 0;
    }
    if (argc != 4) {
        std::fputs(usage, stderr);
        return 2;
    }
    // Shapes and gradients only: the raster painter needs no display and no application object.
    bool sizeOk = false;
    const int size = QString::fromLocal8Bit(argv[3]).toInt(&sizeOk);
    if (!sizeOk || size < 1 || size > 4096)
        return fail("SIZE must be a whole number from 1 to 4096");
    QSvgRenderer svg(QString::fromLocal8Bit(argv[1]));
    if (!svg.isValid())
        return fail("the SVG could not be read");
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    svg.render(&painter);
    painter.end();
    if (!image.save(QString::fromLocal8Bit(argv[2]), "PNG"))
        return fail("the PNG could not be written");
    return 0;
}
