#include "ui/common/SymbolArt.h"

#include <QHash>
#include <QPainter>
#include <QPainterPath>
#include <cmath>
#include <functional>

namespace {

void drawEye(QPainter& p, const QRectF& in, bool slashed) {
    QPainterPath lid;
    lid.moveTo(in.left(), in.center().y());
    lid.quadTo(in.center().x(), in.top() - in.height() * 0.15, in.right(), in.center().y());
    lid.quadTo(in.center().x(), in.bottom() + in.height() * 0.15, in.left(), in.center().y());
    p.drawPath(lid);
    p.drawEllipse(in.center(), in.width() * 0.14, in.width() * 0.14);
    if (slashed)
        p.drawLine(in.topLeft() + QPointF(in.width() * 0.1, 0),
                   in.bottomRight() - QPointF(in.width() * 0.1, 0));
}

void drawCircleMark(QPainter& p, const QRectF& in, const QColor& color, bool check) {
    p.setBrush(color);
    p.drawEllipse(in);
    p.setBrush(Qt::NoBrush);
    QPen mark(Qt::white, std::max(1.2, in.width() * 0.12), Qt::SolidLine, Qt::RoundCap,
              Qt::RoundJoin);
    p.setPen(mark);
    const QRectF m =
        in.adjusted(in.width() * 0.28, in.height() * 0.28, -in.width() * 0.28, -in.height() * 0.28);
    if (check) {
        QPainterPath path;
        path.moveTo(m.left(), m.center().y());
        path.lineTo(m.left() + m.width() * 0.4, m.bottom() - m.height() * 0.05);
        path.lineTo(m.right(), m.top() + m.height() * 0.1);
        p.drawPath(path);
    } else {
        p.drawLine(m.topLeft(), m.bottomRight());
        p.drawLine(m.topRight(), m.bottomLeft());
    }
}

void drawTriangleMark(QPainter& p, const QRectF& in, const QColor& color, bool filled) {
    QPainterPath path;
    path.moveTo(in.center().x(), in.top());
    path.lineTo(in.bottomRight());
    path.lineTo(in.bottomLeft());
    path.closeSubpath();
    if (filled) {
        p.fillPath(path, color);
        p.setPen(QPen(Qt::white, std::max(1.2, in.width() * 0.11), Qt::SolidLine, Qt::RoundCap));
    }
    if (!filled)
        p.drawPath(path);
    const double x = in.center().x();
    p.drawLine(QPointF(x, in.top() + in.height() * 0.38),
               QPointF(x, in.top() + in.height() * 0.66));
    p.drawPoint(QPointF(x, in.top() + in.height() * 0.83));
}

void drawKey(QPainter& p, const QRectF& in) {
    const double radius = in.height() * 0.24;
    const QPointF ring(in.left() + radius, in.center().y());
    p.drawEllipse(ring, radius, radius);
    p.drawLine(ring + QPointF(radius, 0), QPointF(in.right(), in.center().y()));
    p.drawLine(QPointF(in.right() - in.width() * 0.12, in.center().y()),
               QPointF(in.right() - in.width() * 0.12, in.center().y() + radius));
    p.drawLine(QPointF(in.right() - in.width() * 0.3, in.center().y()),
               QPointF(in.right() - in.width() * 0.3, in.center().y() + radius * 0.8));
}

void drawLock(QPainter& p, const QRectF& in, const QColor& color) {
    const QRectF body(in.left() + in.width() * 0.12, in.center().y() - in.height() * 0.05,
                      in.width() * 0.76, in.height() * 0.55);
    p.setBrush(color);
    p.drawRoundedRect(body, 1.5, 1.5);
    p.setBrush(Qt::NoBrush);
    const QRectF shackle(in.left() + in.width() * 0.26, in.top(), in.width() * 0.48,
                         in.height() * 0.7);
    p.drawArc(shackle, 0, 180 * 16);
    p.drawLine(QPointF(shackle.left(), shackle.center().y()), QPointF(shackle.left(), body.top()));
    p.drawLine(QPointF(shackle.right(), shackle.center().y()),
               QPointF(shackle.right(), body.top()));
}

void drawInfinity(QPainter& p, const QRectF& in) {
    const double r = in.width() / 4;
    QPainterPath path;
    const QPointF c = in.center();
    path.moveTo(c);
    path.cubicTo(c + QPointF(r, -r * 1.3), c + QPointF(2 * r, -r * 0.4), c + QPointF(2 * r, 0));
    path.cubicTo(c + QPointF(2 * r, r * 0.4), c + QPointF(r, r * 1.3), c);
    path.cubicTo(c + QPointF(-r, -r * 1.3), c + QPointF(-2 * r, -r * 0.4), c + QPointF(-2 * r, 0));
    path.cubicTo(c + QPointF(-2 * r, r * 0.4), c + QPointF(-r, r * 1.3), c);
    p.drawPath(path);
}

void drawSliders(QPainter& p, const QRectF& in, const QColor& color) {
    for (int i = 0; i < 3; ++i) {
        const double y = in.top() + in.height() * (0.15 + 0.35 * i);
        p.drawLine(QPointF(in.left(), y), QPointF(in.right(), y));
        const double x = in.left() + in.width() * (i == 1 ? 0.7 : 0.3);
        p.setBrush(color);
        p.drawEllipse(QPointF(x, y), in.width() * 0.12, in.width() * 0.12);
        p.setBrush(Qt::NoBrush);
    }
}

void drawInfo(QPainter& p, const QRectF& in) {
    p.drawEllipse(in);
    const double x = in.center().x();
    p.drawLine(QPointF(x, in.top() + in.height() * 0.45),
               QPointF(x, in.bottom() - in.height() * 0.22));
    p.drawPoint(QPointF(x, in.top() + in.height() * 0.27));
}

void drawTrash(QPainter& p, const QRectF& in) {
    const double top = in.top() + in.height() * 0.18;
    p.drawLine(QPointF(in.left(), top), QPointF(in.right(), top));
    p.drawLine(QPointF(in.center().x() - in.width() * 0.15, in.top()),
               QPointF(in.center().x() + in.width() * 0.15, in.top()));
    QPainterPath can;
    can.moveTo(in.left() + in.width() * 0.12, top);
    can.lineTo(in.left() + in.width() * 0.2, in.bottom());
    can.lineTo(in.right() - in.width() * 0.2, in.bottom());
    can.lineTo(in.right() - in.width() * 0.12, top);
    p.drawPath(can);
}

void drawPower(QPainter& p, const QRectF& in) {
    p.drawArc(in, 120 * 16, 300 * 16);
    p.drawLine(QPointF(in.center().x(), in.top() - 1), in.center());
}

void drawStackSlashed(QPainter& p, const QRectF& in) {
    for (int i = 0; i < 3; ++i) {
        const double y = in.top() + in.height() * (0.2 + 0.3 * i);
        p.drawLine(QPointF(in.left(), y), QPointF(in.center().x(), y + in.height() * 0.12));
        p.drawLine(QPointF(in.center().x(), y + in.height() * 0.12), QPointF(in.right(), y));
    }
    p.drawLine(in.topLeft(), in.bottomRight());
}

void drawCheckmark(QPainter& p, const QRectF& in) {
    QPainterPath path;
    path.moveTo(in.left() + 0.02 * in.width(), in.top() + 0.56 * in.height());
    path.lineTo(in.left() + 0.37 * in.width(), in.top() + 0.9 * in.height());
    path.lineTo(in.right(), in.top() + 0.1 * in.height());
    p.drawPath(path);
}

void drawXmark(QPainter& p, const QRectF& in) {
    const QRectF m =
        in.adjusted(in.width() * 0.1, in.height() * 0.1, -in.width() * 0.1, -in.height() * 0.1);
    p.drawLine(m.topLeft(), m.bottomRight());
    p.drawLine(m.topRight(), m.bottomLeft());
}

// Two rounded links of a chain, crossing on the diagonal.
void drawLink(QPainter& p, const QRectF& in) {
    const double w = in.width() * 0.34, l = in.width() * 0.62;
    p.save();
    p.translate(in.center());
    p.rotate(-45);
    p.setBrush(Qt::NoBrush);
    p.drawRoundedRect(QRectF(-l + w * 0.3, -w / 2, l, w), w / 2, w / 2);
    p.drawRoundedRect(QRectF(-w * 0.3, -w / 2, l, w), w / 2, w / 2);
    p.restore();
}

void drawArrowUpRight(QPainter& p, const QRectF& in) {
    p.drawLine(in.bottomLeft(), in.topRight());
    p.drawLine(QPointF(in.left() + 0.3 * in.width(), in.top()), in.topRight());
    p.drawLine(in.topRight(), QPointF(in.right(), in.top() + 0.7 * in.height()));
}

// Two overlapping sheets.
void drawClipboard(QPainter& p, const QRectF& in, const QColor& color) {
    const double w = in.width() * 0.65, h = in.height() * 0.75, r = in.width() * 0.1;
    p.drawRoundedRect(QRectF(in.topLeft(), QSizeF(w, h)), r, r);
    p.setBrush(color);
    p.drawRoundedRect(QRectF(in.right() - w, in.bottom() - h, w, h), r, r);
    p.setBrush(Qt::NoBrush);
}

// A solid bell, which reads at a tray's small sizes; crossed out, notifications held back: the
// stroke is cut clear of the bell so it shows on any background.
void drawBell(QPainter& p, const QRectF& in, const QColor& color, bool slashed) {
    const double w = in.width(), h = in.height();
    const double cx = in.center().x();
    QPainterPath bell;
    bell.moveTo(in.left() + w * 0.08, in.top() + h * 0.78);
    bell.lineTo(in.left() + w * 0.2, in.top() + h * 0.62);
    bell.lineTo(in.left() + w * 0.2, in.top() + h * 0.42);
    bell.cubicTo(in.left() + w * 0.2, in.top() + h * 0.06, in.right() - w * 0.2,
                 in.top() + h * 0.06, in.right() - w * 0.2, in.top() + h * 0.42);
    bell.lineTo(in.right() - w * 0.2, in.top() + h * 0.62);
    bell.lineTo(in.right() - w * 0.08, in.top() + h * 0.78);
    bell.closeSubpath();
    p.fillPath(bell, color);
    p.setBrush(color);
    p.drawEllipse(QPointF(cx, in.bottom() - h * 0.08), w * 0.1, h * 0.08);
    p.setBrush(Qt::NoBrush);
    if (!slashed)
        return;
    const QPointF from = in.topLeft() + QPointF(w * 0.02, h * 0.02);
    const QPointF to = in.bottomRight() - QPointF(w * 0.02, h * 0.02);
    const QPen pen = p.pen();
    p.setCompositionMode(QPainter::CompositionMode_Clear);
    p.setPen(QPen(Qt::black, pen.widthF() * 3, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(from + QPointF(w * 0.06, -h * 0.06), to + QPointF(w * 0.06, -h * 0.06));
    p.setCompositionMode(QPainter::CompositionMode_SourceOver);
    p.setPen(pen);
    p.drawLine(from, to);
}

void drawSymbol(QPainter& p, const QString& symbol, const QRectF& box, const QColor& color) {
    const QRectF in = box.adjusted(box.width() * 0.1, box.height() * 0.1, -box.width() * 0.1,
                                   -box.height() * 0.1);
    p.setPen(
        QPen(color, std::max(1.2, box.width() / 12.0), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    if (symbol == QLatin1String("eye") || symbol == QLatin1String("eye.slash")) {
        drawEye(p, in, symbol == QLatin1String("eye.slash"));
    } else if (symbol == QLatin1String("checkmark.circle.fill")) {
        drawCircleMark(p, in, color, true);
    } else if (symbol == QLatin1String("xmark.circle.fill")) {
        drawCircleMark(p, in, color, false);
    } else if (symbol == QLatin1String("circle.dashed")) {
        p.setPen(QPen(color, std::max(1.2, box.width() / 12.0), Qt::DashLine, Qt::FlatCap));
        p.drawEllipse(in);
    } else if (symbol == QLatin1String("spinner")) {
        p.drawArc(in, 90 * 16, 270 * 16);
    } else if (symbol == QLatin1String("exclamationmark.triangle.fill")) {
        drawTriangleMark(p, in, color, true);
    } else if (symbol == QLatin1String("exclamationmark.triangle")) {
        drawTriangleMark(p, in, color, false);
    } else if (symbol == QLatin1String("infinity")) {
        drawInfinity(p, in);
    } else if (symbol == QLatin1String("key") || symbol == QLatin1String("key.horizontal")) {
        drawKey(p, in);
    } else if (symbol == QLatin1String("lock.fill")) {
        drawLock(p, in, color);
    } else if (symbol == QLatin1String("arrow.clockwise")) {
        p.drawArc(in, 100 * 16, -300 * 16);
        const QPointF tip(in.center().x() + 0.1 * in.width(), in.top());
        p.drawLine(tip, tip + QPointF(-in.width() * 0.25, -in.height() * 0.15));
        p.drawLine(tip, tip + QPointF(-in.width() * 0.2, in.height() * 0.2));
    } else if (symbol == QLatin1String("slider.horizontal.3")) {
        drawSliders(p, in, color);
    } else if (symbol == QLatin1String("info.circle")) {
        drawInfo(p, in);
    } else if (symbol == QLatin1String("trash")) {
        drawTrash(p, in);
    } else if (symbol == QLatin1String("checkmark")) {
        drawCheckmark(p, in);
    } else if (symbol == QLatin1String("arrow.up.right")) {
        drawArrowUpRight(p, in);
    } else if (symbol == QLatin1String("xmark")) {
        drawXmark(p, in);
    } else if (symbol == QLatin1String("link")) {
        drawLink(p, in);
    } else if (symbol == QLatin1String("doc.on.clipboard")) {
        drawClipboard(p, in, color);
    } else if (symbol == QLatin1String("power")) {
        drawPower(p, in);
    } else if (symbol == QLatin1String("square.stack.3d.up.slash")) {
        drawStackSlashed(p, in);
    } else if (symbol == QLatin1String("bell") || symbol == QLatin1String("bell.slash")) {
        drawBell(p, in, color, symbol == QLatin1String("bell.slash"));
    } else { // triangle: the Vercel tab
        QPainterPath path;
        path.moveTo(in.center().x(), in.top() + in.height() * 0.08);
        path.lineTo(in.right(), in.bottom() - in.height() * 0.08);
        path.lineTo(in.left(), in.bottom() - in.height() * 0.08);
        path.closeSubpath();
        p.fillPath(path, color);
    }
}

// A transparent `size` × `size` canvas, turned by `angle` degrees about its centre, with what
// `paint` draws on it.
QPixmap turnedCanvas(int size, double devicePixelRatio, double angle,
                     const std::function<void(QPainter&)>& paint) {
    QPixmap pixmap(QSize(size, size) * devicePixelRatio);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    if (angle != 0) {
        p.translate(size / 2.0, size / 2.0);
        p.rotate(angle);
        p.translate(-size / 2.0, -size / 2.0);
    }
    paint(p);
    return pixmap;
}

} // namespace

namespace SymbolArt {

QString themeName(const QString& symbol) {
    static const QHash<QString, QString> names{
        {QStringLiteral("eye"), QStringLiteral("view-visible")},
        {QStringLiteral("eye.slash"), QStringLiteral("view-hidden")},
        {QStringLiteral("arrow.clockwise"), QStringLiteral("view-refresh")},
        {QStringLiteral("slider.horizontal.3"), QStringLiteral("preferences-system")},
        {QStringLiteral("info.circle"), QStringLiteral("help-about")},
        {QStringLiteral("trash"), QStringLiteral("edit-delete")},
        {QStringLiteral("power"), QStringLiteral("system-shutdown")},
        {QStringLiteral("doc.on.clipboard"), QStringLiteral("edit-copy")},
        {QStringLiteral("checkmark"), QStringLiteral("object-select")},
        {QStringLiteral("arrow.up.right"), QStringLiteral("external-link")},
        {QStringLiteral("xmark"), QStringLiteral("process-stop")},
        {QStringLiteral("link"), QStringLiteral("insert-link")},
        {QStringLiteral("exclamationmark.triangle"), QStringLiteral("dialog-warning")},
        {QStringLiteral("key.horizontal"), QStringLiteral("dialog-password")},
        {QStringLiteral("square.stack.3d.up.slash"), QStringLiteral("folder")},
        {QStringLiteral("bell.slash"), QStringLiteral("notifications-disabled")},
    };
    return names.value(symbol);
}

QPixmap drawn(const QString& symbol, const QColor& color, int size, double devicePixelRatio,
              double angle) {
    return turnedCanvas(size, devicePixelRatio, angle, [&](QPainter& p) {
        p.setRenderHint(QPainter::Antialiasing);
        drawSymbol(p, symbol, QRectF(0, 0, size, size), color);
    });
}

QPixmap tinted(const QString& symbol, const QColor& color, int size, double devicePixelRatio,
               double angle) {
    const QIcon themed = QIcon::fromTheme(themeName(symbol));
    if (themed.isNull())
        return drawn(symbol, color, size, devicePixelRatio, angle);
    // The theme's shape in our colour, so the symbols follow the palette like the drawings do.
    QPixmap shape = themed.pixmap(QSize(size, size), devicePixelRatio);
    QPainter t(&shape);
    t.setCompositionMode(QPainter::CompositionMode_SourceIn);
    t.fillRect(shape.rect(), color);
    t.end();
    return turnedCanvas(size, devicePixelRatio, angle, [&](QPainter& p) {
        p.setRenderHint(QPainter::SmoothPixmapTransform);
        p.drawPixmap(QRectF(0, 0, size, size), shape, QRectF(shape.rect()));
    });
}

QIcon icon(const QString& symbol, const QColor& color) {
    const QString name = themeName(symbol);
    if (!name.isEmpty() && QIcon::hasThemeIcon(name))
        return QIcon::fromTheme(name);
    QIcon made;
    for (int size : {16, 22, 32})
        made.addPixmap(drawn(symbol, color, size, 1.0));
    return made;
}

} // namespace SymbolArt
