#include "ui/panel/FooterButton.h"

#include "ui/common/SymbolArt.h"
#include "ui/panel/ProjectRow.h"

#include <QApplication>
#include <QPainter>

namespace {

constexpr int symbolPixels = 13;
constexpr int iconFrame = 16;
constexpr int padX = 9;
constexpr int padY = 5;
// The highlight reaches this far past the padding on every side.
constexpr int reach = 6;
constexpr int fontPixels = 11;

QColor mix(const QColor& from, const QColor& to, double t) {
    return QColor::fromRgbF(from.redF() + (to.redF() - from.redF()) * t,
                            from.greenF() + (to.greenF() - from.greenF()) * t,
                            from.blueF() + (to.blueF() - from.blueF()) * t,
                            from.alphaF() + (to.alphaF() - from.alphaF()) * t);
}

} // namespace

FooterButton::FooterButton(QString symbol, QWidget* parent)
    : QToolButton(parent), symbol_(std::move(symbol)) {
    setCursor(Qt::PointingHandCursor);
    setAttribute(Qt::WA_Hover);
    QFont label = font();
    label.setPixelSize(fontPixels);
    setFont(label);
    ease_.setDuration(350);
    ease_.setEasingCurve(QEasingCurve::OutCubic);
    connect(&ease_, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        hover_ = value.toDouble();
        update();
    });
}

QSize FooterButton::sizeHint() const {
    const int textWidth = fontMetrics().horizontalAdvance(text());
    return {2 * (reach + padX) + iconFrame + 4 + textWidth,
            2 * (reach + padY) + std::max(iconFrame, fontMetrics().height())};
}

void FooterButton::enterEvent(QEnterEvent* event) {
    easeTo(1);
    QToolButton::enterEvent(event);
}

void FooterButton::leaveEvent(QEvent* event) {
    easeTo(0);
    QToolButton::leaveEvent(event);
}

void FooterButton::easeTo(double target) {
    ease_.stop();
    ease_.setStartValue(hover_);
    ease_.setEndValue(target);
    ease_.start();
}

void FooterButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (isDown())
        painter.setOpacity(0.6);
    const QRectF highlight = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromRgbF(1, 1, 1, 0.16 * hover_));
    painter.drawRoundedRect(highlight, 14, 14);

    const QColor color = mix(ProjectRow::secondaryText(), ProjectRow::primaryText(), hover_);
    const QRect content = rect().adjusted(reach + padX, reach + padY, -reach - padX, -reach - padY);
    const QPixmap symbol = SymbolArt::tinted(symbol_, color, symbolPixels, devicePixelRatioF());
    const QRect frame(content.left(), content.center().y() - iconFrame / 2 + 1, iconFrame,
                      iconFrame);
    painter.drawPixmap(QRect(frame.center().x() - symbolPixels / 2 + 1,
                             frame.center().y() - symbolPixels / 2 + 1, symbolPixels, symbolPixels),
                       symbol);
    painter.setPen(color);
    painter.drawText(content.adjusted(iconFrame + 4, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter,
                     text());
}
