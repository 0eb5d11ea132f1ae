#pragma once

#include "core/monitor/ConnectionState.h"
#include "ui/panel/HeroMotion.h"

#include <QBrush>
#include <QColor>
#include <QImage>
#include <QPointer>
#include <QStaticText>
#include <QTimer>
#include <QWidget>

class StatusPalette;

// The large emblem in the panel header: a glowing prism in the overall tone that turns while
// something builds, breathes on failure, follows the pointer and sheds soft puffs as it moves,
// next to today's deployment count. The motion lives in HeroMotion; this view only paints it and
// feeds it frames while it is on screen.
class PrismHero : public QWidget {
    Q_OBJECT
public:
    explicit PrismHero(QWidget* parent = nullptr,
                       HeroMotion::Random random = HeroMotion::systemRandom());

    void setStatusPalette(StatusPalette* palette);
    void setTone(Tone tone);
    Tone tone() const { return motion_.tone(); }
    void setCount(int count);
    void setMonochrome(bool monochrome);

    // The colour of the tone's strokes and glow.
    QColor toneColor() const;
    // The gradient or flat colour the prism is filled with, over `bounds`.
    QBrush fill(const QRectF& bounds) const;
    // Strength of the outline layers (the glow uses `glow == true`).
    double layerOpacity(bool glow) const;
    double countOpacity() const;
    QString countText() const;

    HeroMotion& motion() { return motion_; }
    void tick();
    bool isAnimating() const { return timer_.isActive(); }

    QSize sizeHint() const override;
    void paintHero(QPainter& painter);

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    QColor paletteColor(QColor (StatusPalette::*color)() const, const char* fallback) const;
    void paintPuffs(QPainter& painter, QPointF origin);
    void paintPrism(QPainter& painter, QPointF origin);
    void paintCount(QPainter& painter, QPointF centre);
    // The oval's fill, glow and edge: they change only with the tone and the colours, so they
    // are drawn once into an image that each frame places, turns and fades.
    const QImage& bodyImage(double pixelRatio);
    static QImage glowImage(const QColor& color, double scale);

    struct BodyKey {
        Tone tone = Tone::idle;
        bool monochrome = false;
        QRgb color = 0;
        bool gradient = false;
        QRgb success = 0;
        QRgb queued = 0;
        double pixelRatio = 0;
        bool operator==(const BodyKey&) const = default;
    };

    HeroMotion motion_;
    QPointer<StatusPalette> palette_;
    int count_ = 0;
    bool monochrome_ = false;
    QTimer timer_;
    QImage body_;
    BodyKey bodyKey_;
    QStaticText countLayout_;
    QFont countFont_;
};
