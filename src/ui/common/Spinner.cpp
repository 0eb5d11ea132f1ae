#include "ui/common/Spinner.h"

#include "ui/common/SymbolArt.h"

#include <QPainter>
#include <cmath>

namespace {
constexpr int stepMs = 80; // one spoke a step: the motion needs no more frames than that
constexpr double stepDegrees = 30;
} // namespace

Spinner::Spinner(QColor color, int size, QWidget* parent)
    : QWidget(parent), color_(std::move(color)) {
    setFixedSize(size, size);
    timer_.setInterval(stepMs);
    connect(&timer_, &QTimer::timeout, this, [this] {
        angle_ = std::fmod(angle_ + stepDegrees, 360.0);
        update();
    });
}

void Spinner::showEvent(QShowEvent* event) {
    timer_.start();
    QWidget::showEvent(event);
}

void Spinner::hideEvent(QHideEvent* event) {
    timer_.stop();
    QWidget::hideEvent(event);
}

void Spinner::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.drawPixmap(rect(), SymbolArt::drawn(QStringLiteral("spinner"), color_, width(),
                                                devicePixelRatioF(), angle_));
}
