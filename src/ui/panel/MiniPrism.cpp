#include "ui/panel/MiniPrism.h"
#include "ui/status/PaletteFollower.h"

#include "ui/panel/SoftBlur.h"
#include "ui/panel/Triangle.h"
#include "ui/panel/Vesica.h"
#include "ui/status/StatusPalette.h"

#include <QPainter>
#include <cmath>

namespace {

// The prism and its band of light, in a frame of 18 × 16 units scaled to `frame`.
struct EmblemShapes {
    QPainterPath prism;
    QPainterPath light;
};

EmblemShapes shapes(const QRectF& frame, double phase, bool sweeping) {
    const double unit = frame.width() / MiniPrism::frameSize.width();
    const QRectF body(frame.left() + 1 * unit, frame.top() + 1 * unit, 16 * unit, 14.5 * unit);
    const Triangle triangle{2.2 * unit, 0};
    // The light rests just left of the centre; while running it travels from edge to edge.
    const double centre = sweeping ? body.left() + body.width() * (0.15 + 0.7 * phase)
                                   : body.left() + body.width() * 0.44;
    const QRectF lens(centre - 3 * unit, frame.top(), 6 * unit, frame.height());
    return {triangle.path(body), Vesica::path(lens)};
}

} // namespace

MiniPrism::MiniPrism(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFixedSize(sizeHint());
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.setInterval(1000 / 60);
    connect(&timer_, &QTimer::timeout, this, [this] { tick(1.0 / 60); });
}

QSize MiniPrism::sizeHint() const {
    return frameSize + QSize(2 * glowRadius, 2 * glowRadius);
}

void MiniPrism::setStatusPalette(StatusPalette* palette) {
    followPalette(*this, palette_, palette);
}

void MiniPrism::setStatus(DeployStatus status) {
    status_ = status;
    updateTimer();
    update();
}

void MiniPrism::setProgress(std::optional<double> progress) {
    progress_ = progress;
    update();
}

void MiniPrism::setAccent(bool accent) {
    accent_ = accent;
    update();
}

bool MiniPrism::hasGlow() const {
    return isInProgress(status_) || status_ == DeployStatus::error;
}

QColor MiniPrism::color() const {
    return palette_ ? palette_->statusColor(status_) : StatusPalette::secondaryTextColor();
}

QRectF MiniPrism::frameRect() const {
    return QRectF(QPointF(glowRadius, glowRadius), QSizeF(frameSize));
}

void MiniPrism::tick(double seconds) {
    phase_ = std::fmod(phase_ + seconds / sweepPeriod, 1.0);
    update();
}

void MiniPrism::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintEmblem(painter, frameRect());
}

void MiniPrism::paintEmblem(QPainter& painter, const QRectF& frame) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const double scale = frame.width() / frameSize.width();
    if (hasGlow()) {
        painter.setOpacity(0.65);
        const QImage& glow = glowImage(frame, scale);
        const double margin = glowRadius * scale * 2;
        painter.drawImage(QRectF(frame.topLeft() - QPointF(margin, margin),
                                 frame.size() + QSizeF(2 * margin, 2 * margin)),
                          glow);
        painter.setOpacity(1);
    }
    const QColor base = color();
    const EmblemShapes emblem = shapes(frame, phase_, isInProgress(status_));
    painter.setPen(Qt::NoPen);
    if (progress_) {
        // Unbuilt share faint, built share solid, filling up from the base.
        QColor faint = base;
        faint.setAlphaF(0.35f);
        painter.fillPath(emblem.prism, faint);
        const QRectF bounds = emblem.prism.boundingRect();
        const double filled = bounds.height() * std::clamp(*progress_, 0.0, 1.0);
        painter.save();
        painter.setClipRect(
            QRectF(bounds.left(), bounds.bottom() - filled, bounds.width(), filled));
        painter.fillPath(emblem.prism, base);
        painter.restore();
    } else {
        painter.fillPath(emblem.prism, base);
    }
    painter.fillPath(emblem.prism.intersected(emblem.light), QColor(255, 255, 255, 96));
    if (accent_) {
        painter.setPen(QPen(QColor(255, 255, 255, 200), 1.1 * scale));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(emblem.prism);
    }
    painter.restore();
}

const QImage& MiniPrism::glowImage(const QRectF& frame, double scale) {
    const QString key = color().name(QColor::HexArgb) + QString::number(scale);
    if (key == glowKey_)
        return glow_;
    // The silhouette in the status colour, softened; the image spans the frame plus twice the
    // radius on each side so the blur fades out inside it.
    const double margin = glowRadius * scale;
    QImage silhouette(QSize(int(std::ceil(frame.width() + 2 * margin)),
                            int(std::ceil(frame.height() + 2 * margin))),
                      QImage::Format_ARGB32_Premultiplied);
    silhouette.fill(Qt::transparent);
    {
        QPainter painter(&silhouette);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF local(QPointF(margin, margin), frame.size());
        painter.fillPath(shapes(local, 0, false).prism, color());
    }
    glow_ = SoftBlur::blurred(silhouette, glowRadius * scale);
    glowKey_ = key;
    return glow_;
}

void MiniPrism::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    updateTimer();
}

void MiniPrism::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    timer_.stop();
}

void MiniPrism::updateTimer() {
    const bool run = isVisible() && isInProgress(status_);
    if (run && !timer_.isActive())
        timer_.start();
    else if (!run)
        timer_.stop();
}
