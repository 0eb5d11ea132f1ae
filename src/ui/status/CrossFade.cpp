#include "ui/status/CrossFade.h"

#include <QPainter>

CrossFade::CrossFade(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
    animation_.setDuration(durationMs);
    animation_.setStartValue(1.0);
    animation_.setEndValue(0.0);
    animation_.setEasingCurve(QEasingCurve::OutCubic);
    connect(&animation_, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
    connect(&animation_, &QVariantAnimation::finished, this, [this] {
        hide();
        before_ = {};
    });
}

void CrossFade::start(const QPixmap& before) {
    animation_.stop();
    before_ = before;
    setGeometry(parentWidget()->rect());
    raise();
    show();
    animation_.start();
}

double CrossFade::strength() const {
    return isRunning() ? animation_.currentValue().toDouble() : 0.0;
}

void CrossFade::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setOpacity(strength());
    painter.drawPixmap(0, 0, before_);
}
