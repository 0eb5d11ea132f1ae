#include "ui/panel/RowAction.h"
#include "ui/common/SymbolArt.h"
#include "ui/status/LayoutFont.h"

#include <QEnterEvent>
#include <QMouseEvent>
#include <QPainter>
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
    if (symbol_.isEmpty() != symbol.isEmpty())
        updateGeometry();
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
    const double mark = symbol_.isEmpty() ? 0 : symbolSize + spacing;
    const double width = padX + mark + metrics.horizontalAdvance(title_) + padX;
    const double height = std::max(symbolSize, metrics.height()) + 2 * padY;
    return {static_cast<int>(std::ceil(width)), static_cast<int>(std::ceil(height))};
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
    double mark = 0;
    if (!symbol_.isEmpty()) {
        const double top = (height() - symbolSize) / 2;
        p.drawPixmap(
            QPointF(padX, top),
            SymbolArt::tinted(symbol_, content, static_cast<int>(symbolSize), devicePixelRatioF()));
        mark = symbolSize + spacing;
    }
    p.setFont(titleFont());
    p.setPen(content);
    const QRectF text(padX + mark, 0, width() - padX * 2 - mark, height());
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
