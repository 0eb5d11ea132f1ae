#include "ui/panel/RowAction.h"
#include "ui/status/LayoutFont.h"

#include <QEnterEvent>
#include <QIcon>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QTimer>
#include <algorithm>
#include <cmath>

namespace {

constexpr double symbolSize = 9;
constexpr double titleSize = 10.5;
constexpr double spacing = 5;
constexpr double padX = 9;
constexpr double padY = 4;

QColor withAlpha(QColor color, double alpha) {
    color.setAlphaF(static_cast<float>(alpha));
    return color;
}

// Drawn in a unit square; used where the icon theme has nothing.
void drawOwnSymbol(QPainter& p, const QString& symbol, double s) {
    QPen pen(p.pen().color(), std::max(1.0, s * 0.13), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    p.setPen(pen);
    p.setBrush(Qt::NoBrush);
    if (symbol == QLatin1StringView("checkmark")) {
        QPainterPath path;
        path.moveTo(0.12 * s, 0.55 * s);
        path.lineTo(0.4 * s, 0.82 * s);
        path.lineTo(0.9 * s, 0.18 * s);
        p.drawPath(path);
    } else if (symbol == QLatin1StringView("arrow.up.right")) {
        p.drawLine(QPointF(0.15 * s, 0.85 * s), QPointF(0.85 * s, 0.15 * s));
        p.drawLine(QPointF(0.35 * s, 0.15 * s), QPointF(0.85 * s, 0.15 * s));
        p.drawLine(QPointF(0.85 * s, 0.15 * s), QPointF(0.85 * s, 0.65 * s));
    } else { // doc.on.clipboard: two overlapping sheets
        p.drawRoundedRect(QRectF(0.1 * s, 0.05 * s, 0.55 * s, 0.65 * s), 0.1 * s, 0.1 * s);
        p.setBrush(p.pen().color());
        p.drawRoundedRect(QRectF(0.35 * s, 0.3 * s, 0.55 * s, 0.65 * s), 0.1 * s, 0.1 * s);
    }
}

} // namespace

RowAction::RowAction(QWidget* parent) : QWidget(parent), timer_(new QTimer(this)) {
    setAttribute(Qt::WA_Hover);
    setCursor(Qt::PointingHandCursor);
    timer_->setInterval(1000 / 60);
    QObject::connect(timer_, &QTimer::timeout, this, [this] { tick(1.0 / 60); });
}

void RowAction::setTitle(const QString& title) {
    if (title_ == title)
        return;
    title_ = title;
    updateGeometry();
    update();
}

void RowAction::setSymbol(const QString& symbol) {
    symbol_ = symbol;
    update();
}

void RowAction::setTint(std::optional<QColor> tint) {
    tint_ = std::move(tint);
    update();
}

QColor RowAction::contentColor() const {
    return tint_ ? *tint_ : withAlpha(Qt::white, 0.85);
}

double RowAction::currentFillOpacity() const {
    const double eased = 1 - (1 - hover_) * (1 - hover_);
    return fillOpacity + (hoverFillOpacity - fillOpacity) * eased;
}

void RowAction::setHovering(bool hovering) {
    if (hovering_ == hovering)
        return;
    hovering_ = hovering;
    if (isVisible())
        timer_->start();
    else
        hover_ = hovering ? 1 : 0;
    update();
}

void RowAction::tick(double seconds) {
    const double step = seconds / hoverDuration;
    hover_ = hovering_ ? std::min(1.0, hover_ + step) : std::max(0.0, hover_ - step);
    if (hover_ == (hovering_ ? 1.0 : 0.0))
        timer_->stop();
    update();
}

void RowAction::trigger() {
    if (action_)
        action_();
}

QFont RowAction::titleFont() const {
    QFont font = this->font();
    setLayoutPixelSize(font, titleSize);
    font.setWeight(QFont::Medium);
    return font;
}

QSize RowAction::sizeHint() const {
    const QFontMetricsF metrics(titleFont());
    const double width = padX + symbolSize + spacing + metrics.horizontalAdvance(title_) + padX;
    const double height = std::max(symbolSize, metrics.height()) + 2 * padY;
    return {static_cast<int>(std::ceil(width)), static_cast<int>(std::ceil(height))};
}

QString RowAction::themeIconName(const QString& symbol) {
    if (symbol == QLatin1StringView("doc.on.clipboard"))
        return QStringLiteral("edit-copy");
    if (symbol == QLatin1StringView("checkmark"))
        return QStringLiteral("object-select");
    if (symbol == QLatin1StringView("arrow.up.right"))
        return QStringLiteral("external-link");
    return {};
}

QPixmap RowAction::symbolPixmap(const QString& symbol, const QColor& color, double size,
                                double devicePixelRatio) {
    const int pixels = static_cast<int>(std::ceil(size * devicePixelRatio));
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    const QIcon icon = QIcon::fromTheme(themeIconName(symbol));
    if (!icon.isNull()) {
        // Theme icons come in their own colours; keep only their shape, in the tint.
        p.drawPixmap(0, 0, icon.pixmap(QSize(pixels, pixels)));
        p.setCompositionMode(QPainter::CompositionMode_SourceIn);
        p.fillRect(pixmap.rect(), color);
    } else {
        p.setPen(color);
        drawOwnSymbol(p, symbol, pixels);
    }
    p.end();
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

void RowAction::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor base = tint_ ? *tint_ : QColor(Qt::white);
    const QRectF capsule = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    const double radius = capsule.height() / 2;
    p.setPen(QPen(withAlpha(base, outlineOpacity), 1));
    p.setBrush(withAlpha(base, currentFillOpacity()));
    p.drawRoundedRect(capsule, radius, radius);

    const QColor content = contentColor();
    const double top = (height() - symbolSize) / 2;
    p.drawPixmap(QPointF(padX, top),
                 symbolPixmap(symbol_, content, symbolSize, devicePixelRatioF()));
    p.setFont(titleFont());
    p.setPen(content);
    const QRectF text(padX + symbolSize + spacing, 0, width() - padX * 2 - symbolSize - spacing,
                      height());
    p.drawText(text, Qt::AlignLeft | Qt::AlignVCenter, title_);
}

void RowAction::enterEvent(QEnterEvent* event) {
    setHovering(true);
    QWidget::enterEvent(event);
}

void RowAction::leaveEvent(QEvent* event) {
    setHovering(false);
    QWidget::leaveEvent(event);
}

void RowAction::mousePressEvent(QMouseEvent* event) {
    event->accept(); // keeps the press from reaching the row, which would open the link
}

void RowAction::mouseReleaseEvent(QMouseEvent* event) {
    event->accept();
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
        trigger();
}
