#include "ui/status/MotionBlurMask.h"

#include "ui/panel/SoftBlur.h"

#include <QPainter>
#include <cmath>

double MotionBlurMask::offset(int index) const {
    if (steps < 2)
        return 0;
    const double t = double(index) / (steps - 1);
    return (2 * t - 1) * spread;
}

double MotionBlurMask::margin(double devicePixelRatio) {
    return std::ceil(blurRadius * devicePixelRatio) / devicePixelRatio;
}

QImage MotionBlurMask::render(const QSizeF& size, double devicePixelRatio) const {
    const QSize pixels(int(std::ceil(size.width() * devicePixelRatio)),
                       int(std::ceil(size.height() * devicePixelRatio)));
    QImage stack(pixels, QImage::Format_ARGB32_Premultiplied);
    stack.fill(Qt::transparent);
    {
        QPainter painter(&stack);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(devicePixelRatio, devicePixelRatio);
        painter.setOpacity(copyOpacity);
        painter.setPen(Qt::NoPen);
        const QRectF centred((size.width() - copyWidth) / 2, (size.height() - height) / 2,
                             copyWidth, height);
        const QPainterPath path = shape.path(centred);
        for (int i = 0; i < steps; ++i)
            painter.fillPath(path.translated(offset(i), 0), Qt::black);
    }
    QImage soft = SoftBlur::blurred(stack, blurRadius * devicePixelRatio);
    soft.setDevicePixelRatio(devicePixelRatio);
    return soft;
}
