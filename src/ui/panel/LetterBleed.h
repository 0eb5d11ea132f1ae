#pragma once

#include <QImage>
#include <QPointF>
#include <QString>
#include <QTimer>
#include <QWidget>
#include <array>

// The hover effect on a row's project name: blurred copies of the name bleed out around the
// pointer through a soft spotlight that glides after it. It is laid exactly over the row's
// plain name, which stays unchanged underneath, and ignores the mouse itself.
class LetterBleed : public QWidget {
    Q_OBJECT
public:
    static constexpr double spotlightRadius = 72;
    static constexpr double fadeDuration = 0.3;
    static constexpr int wobbleFrames = 7; // frames between two swaps of the copies' offsets

    struct Copy {
        double blur;
        double opacity;
        QPointF wobbled;
        QPointF resting;
    };
    static constexpr std::array<Copy, 3> copies{{
        {16, 0.7, {2.5, -1.5}, {-1.5, 2}},
        {9, 0.8, {-1.8, 1.2}, {2.2, -1}},
        {4, 0.9, {0.8, -0.6}, {-1, 0.8}},
    }};

    explicit LetterBleed(QWidget* parent = nullptr);

    void setText(const QString& text);
    void setFontSize(double points);
    void setTracking(double tracking);
    void setActive(bool active);
    bool isActive() const { return active_; }
    // The pointer, in this widget's coordinates.
    void setFocus(QPointF focus) { focus_ = focus; }

    // One 1/60-second frame: the spring, the wobble and the spotlight fade.
    void tick();
    double x() const { return x_; }
    double vx() const { return vx_; }
    bool wobble() const { return wobble_; }
    double spotlight() const; // 0…1, eased
    bool isAnimating() const { return timer_.isActive(); }

    QFont letterFont() const;
    QString shownText() const; // upper case, elided in the middle to the width

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void updateTimer();
    void invalidate();
    const std::array<QImage, 3>& blurredCopies();

    QString text_;
    double fontSize_ = 13;
    double tracking_ = 0;
    bool active_ = false;
    QPointF focus_;
    bool wobble_ = false;
    double x_ = 0;
    double vx_ = 0;
    bool primed_ = false; // the spring has started from the pointer since the last activation
    double fade_ = 0;     // linear 0…1, eased when drawn
    int frame_ = 0;
    QTimer timer_;
    std::array<QImage, 3> blurred_;
    bool blurredValid_ = false;
};
