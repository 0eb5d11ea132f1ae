#include "ui/status/ToneIcon.h"

#include <QFont>
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
constexpr qreal countFontSize = 8.5;

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
    QFont font;
    font.setStyleHint(QFont::SansSerif);
    font.setPointSizeF(countFontSize); // painted at one unit per point
    font.setWeight(QFont::Bold);
    font.setLetterSpacing(QFont::AbsoluteSpacing, -0.3); // three characters fit the slot
    painter.setFont(font);
    painter.setPen(look.countColor);
    painter.drawText(QRectF(-2, countTop, grid + 4, grid - countTop),
                     Qt::AlignHCenter | Qt::AlignVCenter, look.count);
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
    // At 72 dots per inch a point is one unit before scaling, so the text scales with the grid
    // whatever the pixel size.
    const int dotsPerMetre = qRound(72.0 / 0.0254);
    image.setDotsPerMeterX(dotsPerMetre);
    image.setDotsPerMeterY(dotsPerMetre);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
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
