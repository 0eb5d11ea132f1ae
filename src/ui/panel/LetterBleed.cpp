#include "ui/panel/LetterBleed.h"
#include "ui/status/LayoutFont.h"

#include "ui/panel/SoftBlur.h"

#include <QPainter>
#include <QRadialGradient>
#include <algorithm>

LetterBleed::LetterBleed(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.setInterval(1000 / 60);
    connect(&timer_, &QTimer::timeout, this, &LetterBleed::tick);
}

void LetterBleed::setText(const QString& text) {
    text_ = text;
    invalidate();
}

void LetterBleed::setFontSize(double points) {
    fontSize_ = points;
    invalidate();
}

void LetterBleed::setTracking(double tracking) {
    tracking_ = tracking;
    invalidate();
}

void LetterBleed::setActive(bool active) {
    if (active == active_)
        return;
    active_ = active;
    if (active_)
        primed_ = false;
    updateTimer();
}

void LetterBleed::tick() {
    if (active_) {
        if (!primed_) {
            // Start under the pointer instead of gliding in from the left edge.
            x_ = focus_.x();
            vx_ = 0;
            primed_ = true;
        }
        vx_ = (vx_ + (focus_.x() - x_) * 0.028) * 0.9;
        x_ += vx_;
        if (++frame_ % wobbleFrames == 0)
            wobble_ = !wobble_;
    }
    const double step = 1.0 / 60 / fadeDuration;
    fade_ = std::clamp(fade_ + (active_ ? step : -step), 0.0, 1.0);
    updateTimer();
    update();
}

double LetterBleed::spotlight() const {
    const double t = 1 - fade_;
    return 1 - t * t * t; // ease out
}

QFont LetterBleed::letterFont() const {
    QFont font = this->font();
    setLayoutPixelSize(font, fontSize_);
    font.setWeight(QFont::Normal);
    font.setLetterSpacing(QFont::AbsoluteSpacing, tracking_);
    return font;
}

QString LetterBleed::shownText() const {
    return QFontMetrics(letterFont()).elidedText(text_.toUpper(), Qt::ElideMiddle, width());
}

void LetterBleed::invalidate() {
    blurredValid_ = false;
    update();
}

const std::array<QImage, 3>& LetterBleed::blurredCopies() {
    if (blurredValid_)
        return blurred_;
    QImage plain(size(), QImage::Format_ARGB32_Premultiplied);
    plain.fill(Qt::transparent);
    {
        QPainter painter(&plain);
        painter.setFont(letterFont());
        painter.setPen(Qt::white);
        painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter, shownText());
    }
    for (std::size_t i = 0; i < copies.size(); ++i)
        blurred_[i] = SoftBlur::blurred(plain, copies[i].blur);
    blurredValid_ = true;
    return blurred_;
}

void LetterBleed::paintEvent(QPaintEvent*) {
    const double light = spotlight();
    if (light <= 0 || width() <= 0 || height() <= 0)
        return;
    // Compose the copies apart, then keep only what the spotlight covers.
    QImage layer(size(), QImage::Format_ARGB32_Premultiplied);
    layer.fill(Qt::transparent);
    QPainter composer(&layer);
    composer.setRenderHint(QPainter::SmoothPixmapTransform);
    const auto& images = blurredCopies();
    for (std::size_t i = 0; i < copies.size(); ++i) {
        const double margin = (images[i].width() - width()) / 2.0;
        composer.setOpacity(copies[i].opacity);
        const QPointF offset = wobble_ ? copies[i].wobbled : copies[i].resting;
        composer.drawImage(offset - QPointF(margin, margin), images[i]);
    }
    composer.setOpacity(1);
    // The spotlight lives in a 400-point frame centred on x; past its rim it is transparent, so
    // filling the whole layer with it also clears everything outside the frame.
    const QPointF centre(x_, height() / 2.0);
    QRadialGradient spot(centre, spotlightRadius);
    spot.setColorAt(0, QColor(255, 255, 255, 255));
    spot.setColorAt(0.35, QColor(255, 255, 255, 191));
    spot.setColorAt(1, QColor(255, 255, 255, 0));
    composer.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    composer.fillRect(layer.rect(), spot);
    composer.end();

    QPainter painter(this);
    painter.setOpacity(light);
    painter.drawImage(0, 0, layer);
}

void LetterBleed::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    updateTimer();
}

void LetterBleed::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    timer_.stop();
    blurred_ = {}; // a closed panel holds no blurred copies; they are made again on hover
    blurredValid_ = false;
}

void LetterBleed::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    invalidate();
}

void LetterBleed::updateTimer() {
    // Frames are needed while the pointer is over the name and until the spotlight has faded.
    const bool run = isVisible() && (active_ || fade_ > 0);
    if (run && !timer_.isActive())
        timer_.start();
    else if (!run)
        timer_.stop();
}
