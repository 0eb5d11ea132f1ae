#include "ui/panel/SoftBlur.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <vector>

namespace {

// One running-sum box pass along rows (or columns, with the strides swapped).
void boxPass(QImage& image, int halfWidth, bool alongRows) {
    const int lines = alongRows ? image.height() : image.width();
    const int length = alongRows ? image.width() : image.height();
    const int stride = alongRows ? 1 : image.bytesPerLine() / 4;
    const int lineStride = alongRows ? image.bytesPerLine() / 4 : 1;
    auto* pixels = reinterpret_cast<QRgb*>(image.bits());
    std::vector<QRgb> line(length);
    const int window = 2 * halfWidth + 1;
    for (int l = 0; l < lines; ++l) {
        QRgb* first = pixels + l * lineStride;
        for (int i = 0; i < length; ++i)
            line[i] = first[i * stride];
        int sum[4] = {0, 0, 0, 0};
        auto add = [&](int index, int sign) {
            if (index < 0 || index >= length)
                return;
            const QRgb p = line[index];
            sum[0] += sign * qAlpha(p);
            sum[1] += sign * qRed(p);
            sum[2] += sign * qGreen(p);
            sum[3] += sign * qBlue(p);
        };
        for (int i = -halfWidth; i < halfWidth; ++i)
            add(i, 1);
        for (int i = 0; i < length; ++i) {
            add(i + halfWidth, 1);
            first[i * stride] =
                qRgba(sum[1] / window, sum[2] / window, sum[3] / window, sum[0] / window);
            add(i - halfWidth, -1);
        }
    }
}

} // namespace

namespace SoftBlur {

QImage blurred(const QImage& image, double radius) {
    const int margin = std::max(0, int(std::ceil(radius)));
    QImage canvas(image.width() + 2 * margin, image.height() + 2 * margin,
                  QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    {
        QPainter painter(&canvas);
        painter.drawImage(margin, margin, image);
    }
    // Three boxes of width w approximate a Gaussian of sigma ≈ w / 2; a blur "radius" reads as
    // about two sigmas.
    const int halfWidth = std::max(0, int(std::lround(radius / 3)));
    if (halfWidth == 0)
        return canvas;
    for (int pass = 0; pass < 3; ++pass) {
        boxPass(canvas, halfWidth, true);
        boxPass(canvas, halfWidth, false);
    }
    return canvas;
}

} // namespace SoftBlur
