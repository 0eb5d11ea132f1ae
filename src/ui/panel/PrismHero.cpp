#include "ui/panel/PrismHero.h"
#include "ui/status/LayoutFont.h"
#include "ui/status/PaletteFollower.h"

#include "ui/panel/SoftBlur.h"
#include "ui/panel/Triangle.h"
#include "ui/panel/Vesica.h"
#include "ui/status/StatusPalette.h"

#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QRadialGradient>
#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

// The prism's pointed oval, as traced by HeroMotion's outline table.
const QRectF prismBounds(-41, -79, 82, 158);
// The triangle in the upper half of the oval, clear of its curved sides.
const QRectF coreBounds(-21, -56, 42, 38);
// The count sits in the lower half of the oval, upright even while the prism turns.
constexpr QPointF countCentre(0, 22);
// The scene (prism and puffs) is drawn a little smaller than its own coordinates so the prism
// stays whole in the 196-point-high canvas over most of its drift.
constexpr double sceneScale = 0.8;
// Room around the oval for the softened glow strokes.
constexpr double glowMargin = 18;

QColor withAlpha(QColor color, double alpha) {
    color.setAlphaF(float(color.alphaF() * alpha));
    return color;
}

// The oval with room for its glow, in scene units.
QRectF glowArea() {
    return prismBounds.adjusted(-glowMargin, -glowMargin, glowMargin, glowMargin);
}

// A transparent picture of the glow area at `scale` pixels per scene unit.
QImage emptyCanvas(double scale) {
    QImage image((glowArea().size() * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

// Lets `painter` draw on such a picture in scene units.
void paintInScene(QPainter& painter, double scale) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    painter.translate(-glowArea().topLeft());
}

} // namespace

PrismHero::PrismHero(QWidget* parent, HeroMotion::Random random)
    : QWidget(parent), motion_(std::move(random)) {
    setFixedSize(sizeHint());
    setMouseTracking(true);
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.setInterval(1000 / 60);
    connect(&timer_, &QTimer::timeout, this, &PrismHero::tick);
}

QSize PrismHero::sizeHint() const {
    return {int(HeroMotion::canvasSize.x()), int(HeroMotion::canvasSize.y())};
}

void PrismHero::setStatusPalette(StatusPalette* palette) {
    followPalette(*this, palette_, palette);
}

void PrismHero::setTone(Tone tone) {
    motion_.setTone(tone);
    update();
}

void PrismHero::setCount(int count) {
    count_ = count;
    update();
}

void PrismHero::setMonochrome(bool monochrome) {
    monochrome_ = monochrome;
    update();
}

QColor PrismHero::paletteColor(QColor (StatusPalette::*color)() const, const char* fallback) const {
    return palette_ ? (palette_.data()->*color)() : QColor(fallback);
}

QColor PrismHero::toneColor() const {
    switch (motion_.tone()) {
    case Tone::disconnected:
        return QColor(255, 255, 255, 89);
    case Tone::idle:
    case Tone::success:
        return Qt::white;
    case Tone::building:
        return paletteColor(&StatusPalette::success, "#0CF1E8");
    case Tone::queued:
        return paletteColor(&StatusPalette::queued, "#C05BEC");
    case Tone::error:
        return paletteColor(&StatusPalette::error, "#FF0074");
    }
    return Qt::white;
}

QBrush PrismHero::fill(const QRectF& bounds) const {
    const Tone tone = motion_.tone();
    if (monochrome_ || (tone != Tone::idle && tone != Tone::success))
        return toneColor();
    const QColor success = paletteColor(&StatusPalette::success, "#0CF1E8");
    QLinearGradient gradient(bounds.topLeft(), bounds.bottomLeft());
    gradient.setColorAt(0, success);
    gradient.setColorAt(0.5, paletteColor(&StatusPalette::queued, "#C05BEC"));
    gradient.setColorAt(1, success);
    return gradient;
}

double PrismHero::layerOpacity(bool glow) const {
    switch (motion_.tone()) {
    case Tone::disconnected:
        return glow ? 0.27 : 0.3;
    case Tone::error:
        return 0.57 + 0.38 * motion_.breatheLevel();
    default:
        return 0.9 + 0.1 * motion_.idleLevel();
    }
}

double PrismHero::countOpacity() const {
    switch (motion_.tone()) {
    case Tone::disconnected:
        return 0.3;
    case Tone::error:
        return 0.6 + 0.4 * motion_.breatheLevel();
    default:
        return 1;
    }
}

QString PrismHero::countText() const {
    return motion_.tone() == Tone::disconnected ? QStringLiteral("–") : QString::number(count_);
}

void PrismHero::tick() {
    motion_.tick();
    update();
}

void PrismHero::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintHero(painter);
}

void PrismHero::paintHero(QPainter& painter) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QPointF origin = HeroMotion::canvasSize / 2;
    painter.save();
    painter.translate(origin);
    painter.scale(sceneScale, sceneScale);
    paintPuffs(painter, {});
    paintPrism(painter, motion_.pos());
    painter.restore();
    paintCount(painter, origin + (motion_.pos() + countCentre) * sceneScale);
    painter.restore();
}

void PrismHero::paintPuffs(QPainter& painter, QPointF origin) {
    // Puffs swell and thin out over their life, like breath on glass.
    const QColor color = toneColor();
    painter.setPen(Qt::NoPen);
    // Their gradients fade to nothing at the edge, so smoothing it would hardly change a pixel; it
    // would send each fill through Qt's thread pool (see paintPrism), 60 times a second.
    painter.setRenderHint(QPainter::Antialiasing, false);
    for (const Puff& puff : motion_.puffs()) {
        const double life = std::clamp(puff.age / puff.life, 0.0, 1.0);
        const double radius = puff.size / 2 * (0.45 + 0.55 * life);
        const double alpha = 0.36 * (1 - life) * (1 - life) * layerOpacity(true);
        QRadialGradient cloud(origin + puff.p, radius);
        cloud.setColorAt(0, withAlpha(color, alpha));
        cloud.setColorAt(0.6, withAlpha(color, alpha * 0.4));
        cloud.setColorAt(1, withAlpha(color, 0));
        painter.setBrush(cloud);
        painter.drawEllipse(origin + puff.p, radius, radius);
    }
}

void PrismHero::paintPrism(QPainter& painter, QPointF centre) {
    painter.save();
    painter.translate(centre);
    painter.rotate(motion_.turn() * 180 / std::numbers::pi);
    const double swell =
        motion_.tone() == Tone::error ? 0.03 * motion_.breatheLevel() : 0.012 * motion_.idleLevel();
    painter.scale(1 + swell, 1 + swell);

    const double strength = layerOpacity(false);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setOpacity(strength);
    // The picture's border is transparent, so its turned edges need no smoothing. Without it Qt
    // fills the picture in batches of 64 lines on this thread; a smoothed fill of more lines is
    // split across Qt's thread pool and waited for, which costs more in wake-ups than it saves.
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.drawImage(glowArea(), bodyImage(painter.device()->devicePixelRatioF()));
    painter.setRenderHint(QPainter::Antialiasing);

    // The core leans with the slow idle motion and with sideways speed.
    const double lean =
        std::clamp(0.25 * motion_.idleLevel() + std::abs(motion_.velocity().x()) / 400, 0.0, 1.0);
    painter.fillPath(Triangle{7, lean}.path(coreBounds), fill(coreBounds));
    painter.restore();
}

const QImage& PrismHero::bodyImage(double pixelRatio) {
    const BodyKey key{motion_.tone(),
                      monochrome_,
                      toneColor().rgba(),
                      fill(prismBounds).gradient() != nullptr,
                      paletteColor(&StatusPalette::success, "#0CF1E8").rgba(),
                      paletteColor(&StatusPalette::queued, "#C05BEC").rgba(),
                      pixelRatio};
    if (key == bodyKey_ && !body_.isNull())
        return body_;
    // At the scale the scene is shown, so that each frame places it nearly one to one. The
    // layers are faded relative to the edge, which the frame fades as a whole.
    const double scale = sceneScale * pixelRatio;
    const QRectF area = glowArea();
    body_ = emptyCanvas(scale);
    QPainter painter(&body_);
    paintInScene(painter, scale);
    const QPainterPath oval = Vesica::path(prismBounds);
    painter.setOpacity(0.16);
    painter.fillPath(oval, fill(prismBounds));
    const QColor color = toneColor();
    painter.setOpacity(layerOpacity(true) / layerOpacity(false));
    painter.drawImage(area, glowImage(color, scale));
    painter.setOpacity(1);
    painter.setPen(QPen(color, 2.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(oval);
    painter.end();
    bodyKey_ = key;
    return body_;
}

QImage PrismHero::glowImage(const QColor& color, double scale) {
    QImage strokes = emptyCanvas(scale);
    {
        QPainter painter(&strokes);
        paintInScene(painter, scale);
        const QPainterPath oval = Vesica::path(prismBounds);
        for (const auto& [width, alpha] : {std::pair{14.0, 0.35}, std::pair{7.0, 0.6}}) {
            painter.setPen(QPen(withAlpha(color, alpha), width));
            painter.drawPath(oval);
        }
    }
    const QImage soft = SoftBlur::blurred(strokes, 6 * scale);
    const int margin = (soft.width() - strokes.width()) / 2;
    return soft.copy(margin, margin, strokes.width(), strokes.height());
}

void PrismHero::paintCount(QPainter& painter, QPointF centre) {
    // Laid out once per text and font; each frame only places it.
    QFont font = this->font();
    setLayoutPixelSize(font, 34);
    font.setWeight(QFont::Thin);
    font.setStyleHint(QFont::SansSerif);
    if (countLayout_.text() != countText() || countFont_ != font) {
        countLayout_.setText(countText());
        countLayout_.setTextFormat(Qt::PlainText);
        countLayout_.prepare(QTransform(), font);
        countFont_ = font;
    }
    painter.setFont(font);
    painter.setOpacity(countOpacity());
    painter.setPen(Qt::white);
    const QSizeF size = countLayout_.size();
    painter.drawStaticText(centre - QPointF(size.width(), size.height()) / 2, countLayout_);
    painter.setOpacity(1);
}

void PrismHero::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    motion_.reset(); // every opening starts the motion afresh
    timer_.start();
}

void PrismHero::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    timer_.stop();
    body_ = QImage(); // a closed panel holds no picture; the next opening draws it again
}

void PrismHero::mouseMoveEvent(QMouseEvent* event) {
    motion_.setPointer(event->position());
    QWidget::mouseMoveEvent(event);
}

void PrismHero::leaveEvent(QEvent* event) {
    motion_.setPointer(std::nullopt);
    QWidget::leaveEvent(event);
}
