#include "ui/panel/ProgressLine.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

ProgressLine::ProgressLine(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFixedHeight(thickness);
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.setInterval(1000 / 60);
    connect(&timer_, &QTimer::timeout, this, [this] { tick(1.0 / 60); });
}

void ProgressLine::setProgress(std::optional<double> progress) {
    if (progress)
        progress = std::clamp(*progress, 0.0, 1.0);
    if (progress == progress_)
        return;
    if (progress) {
        // A bar that was not shown (unknown before) starts from the leading edge.
        from_ = progress_ ? shown_ : 0;
        shown_ = from_;
        glideTime_ = 0;
    }
    progress_ = progress;
    updateTimer();
    update();
}

void ProgressLine::setColor(const QColor& color) {
    color_ = color;
    update();
}

void ProgressLine::tick(double seconds) {
    if (progress_) {
        glideTime_ = std::min(glideTime_ + seconds, barDuration);
        shown_ = from_ + (*progress_ - from_) * (glideTime_ / barDuration);
    } else {
        phase_ = std::fmod(phase_ + seconds / segmentPeriod, 1.0);
    }
    updateTimer();
    update();
}

QRectF ProgressLine::indicatorRect() const {
    const double w = width();
    if (progress_)
        return {0, 0, std::min(std::max(w * shown_, minimumBar), w), double(height())};
    return {phase_ * w * (1 - segmentShare), 0, w * segmentShare, double(height())};
}

void ProgressLine::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QColor track = color_;
    track.setAlphaF(0.15f * color_.alphaF());
    const double radius = height() / 2.0;
    painter.setBrush(track);
    painter.drawRoundedRect(rect(), radius, radius);
    painter.setBrush(color_);
    painter.drawRoundedRect(indicatorRect(), radius, radius);
}

void ProgressLine::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    updateTimer();
}

void ProgressLine::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    timer_.stop();
}

bool ProgressLine::needsFrames() const {
    return !progress_ || glideTime_ < barDuration;
}

void ProgressLine::updateTimer() {
    const bool run = isVisible() && needsFrames();
    if (run && !timer_.isActive())
        timer_.start();
    else if (!run)
        timer_.stop();
}
