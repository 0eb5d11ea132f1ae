#pragma once

#include <QColor>
#include <QTimer>
#include <QWidget>
#include <optional>

// The 2-point build-progress line along the bottom of a building row: a faint track with either
// the known share as a bar that glides to each new value, or a sliding segment when the share
// is unknown. Its timer runs only while the line is on screen and something moves.
class ProgressLine : public QWidget {
    Q_OBJECT
public:
    static constexpr int thickness = 2;
    static constexpr double minimumBar = 4;
    static constexpr double barDuration = 1.0;   // seconds for a change of the known share
    static constexpr double segmentPeriod = 1.4; // seconds for one slide of the segment
    static constexpr double segmentShare = 0.3;

    explicit ProgressLine(QWidget* parent = nullptr);

    void setProgress(std::optional<double> progress);
    std::optional<double> progress() const { return progress_; }
    void setColor(const QColor& color);
    QColor color() const { return color_; }

    // One frame of `seconds`; the timer calls it, tests call it directly.
    void tick(double seconds);
    // The bar for a known share (as shown now, mid-animation) or the sliding segment.
    QRectF indicatorRect() const;
    double phase() const { return phase_; }
    bool isAnimating() const { return timer_.isActive(); }

    QSize sizeHint() const override { return {120, thickness}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    bool needsFrames() const;
    void updateTimer();

    std::optional<double> progress_;
    QColor color_{Qt::white};
    double phase_ = 0;
    double shown_ = 0; // share drawn right now
    double from_ = 0;  // share when the current glide began
    double glideTime_ = barDuration;
    QTimer timer_;
};
