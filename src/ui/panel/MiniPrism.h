#pragma once

#include "core/vercel/DeployStatus.h"

#include <QColor>
#include <QImage>
#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <optional>

class StatusPalette;

// The status emblem at the start of a project row: a rounded prism in the status colour with a
// band of light (a pointed oval) through it. Progress fills the prism from the base, the light
// sweeps across while a deployment runs, and the row of the latest deployment gets a bright rim.
// Running and failed deployments glow; the widget keeps a margin around the 18 × 16 frame so the
// glow is not cut off.
class MiniPrism : public QWidget {
    Q_OBJECT
public:
    static constexpr QSize frameSize{18, 16};
    static constexpr int glowRadius = 5;
    static constexpr double sweepPeriod = 1.6; // seconds for the light to cross once

    explicit MiniPrism(QWidget* parent = nullptr);

    void setStatusPalette(StatusPalette* palette);
    void setStatus(DeployStatus status);
    DeployStatus status() const { return status_; }
    void setProgress(std::optional<double> progress);
    void setAccent(bool accent);

    bool hasGlow() const;
    QColor color() const;
    // Where the 18 × 16 emblem sits inside the widget.
    QRectF frameRect() const;
    void tick(double seconds);
    double phase() const { return phase_; }
    bool isAnimating() const { return timer_.isActive(); }

    QSize sizeHint() const override;

    // Draws the emblem into `frame` (18 × 16 or a multiple), glow included.
    void paintEmblem(QPainter& painter, const QRectF& frame);

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void updateTimer();
    const QImage& glowImage(const QRectF& frame, double scale);

    QPointer<StatusPalette> palette_;
    DeployStatus status_ = DeployStatus::unknown;
    std::optional<double> progress_;
    bool accent_ = false;
    double phase_ = 0;
    QTimer timer_;
    QImage glow_;
    QString glowKey_;
};
