#include "ui/status/ToneIcon.h"

#include "ui/status/CountGlyphs.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace {

// The triangle is laid out on an 18-unit square: a 13.5-unit base, apex up, lifted half a unit
// above centre, stroked 2 units wide with mitred joins.
constexpr qreal grid = 18.0;
constexpr qreal halfBase = 6.75;
constexpr qreal height = 11.691;
constexpr qreal baseBelowCentre = 5.8455 - 0.5;
constexpr qreal lineWidth = 2.0;
// With a count: the triangle scaled into the top of the square, the number in the rest.
constexpr qreal countedScale = 0.62;
constexpr qreal countedTop = 0.9;
constexpr qreal countedLineWidth = 1.6;
constexpr qreal countTop = 9.2;
// The size Qt gave the count when it was drawn as 8.5-point text (whole pixels).
constexpr qreal countPixelSize = 9.0;

QPainterPath trianglePath(const QPointF& apex, qreal scale) {
    QPainterPath path;
    path.moveTo(apex);
    path.lineTo(apex.x() + halfBase * scale, apex.y() + height * scale);
    path.lineTo(apex.x() - halfBase * scale, apex.y() + height * scale);
    path.closeSubpath();
    return path;
}

void drawTriangle(QPainter& painter, const ToneIconLook& look) {
    const bool counted = !look.count.isEmpty();
    const QPointF apex(grid / 2, counted ? countedTop : grid / 2 + baseBelowCentre - height);
    QPen pen(look.color, counted ? countedLineWidth : lineWidth);
    pen.setJoinStyle(Qt::MiterJoin);
    painter.setPen(pen);
    painter.setBrush(look.filled ? QBrush(look.color) : Qt::NoBrush);
    painter.drawPath(trianglePath(apex, counted ? countedScale : 1.0));
}

void drawCount(QPainter& painter, const ToneIconLook& look) {
    const qreal width = CountGlyphs::width(look.count, countPixelSize);
    const qreal ascent = CountGlyphs::ascent * countPixelSize;
    const qreal lineHeight = ascent + CountGlyphs::descent * countPixelSize;
    // Centred in the rest of the square, as a line of text would be.
    const QPointF origin((grid - width) / 2,
                         countTop + (grid - countTop - lineHeight) / 2 + ascent);
    painter.setPen(Qt::NoPen);
    painter.setBrush(look.countColor);
    painter.drawPath(CountGlyphs::path(look.count, countPixelSize).translated(origin));
}

} // namespace

namespace ToneIcon {

QString countText(int todayCount) {
    if (todayCount < 1)
        return {};
    if (todayCount >= 100)
        return QStringLiteral("99+");
    return QString::number(todayCount);
}

QImage draw(const ToneIconLook& look, int pixels) {
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(pixels / grid, pixels / grid);
    drawTriangle(painter, look);
    if (!look.count.isEmpty())
        drawCount(painter, look);
    return image;
}

QIcon icon(const ToneIconLook& look) {
    QIcon result;
    for (const int pixels : {16, 22, 24, 32, 48, 64})
        result.addPixmap(QPixmap::fromImage(draw(look, pixels)));
    return result;
}

} // namespace ToneIcon
