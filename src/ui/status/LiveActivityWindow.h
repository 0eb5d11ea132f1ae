#pragma once

#include <QPainterPath>
#include <QParallelAnimationGroup>
#include <QPropertyAnimation>
#include <QWidget>
#include <functional>

class LiveActivityModel;
class StatusPalette;
struct ProjectSnapshot;

// The floating window of the Live Activity: frameless, translucent, above other windows, and
// never taking the focus from what the user is doing. For now it draws a plain dark capsule
// with one line of text per row.
class LiveActivityWindow : public QWidget {
    Q_OBJECT
public:
    LiveActivityWindow(const LiveActivityModel& model, const StatusPalette& palette);

    // Appears at `target`, dropping 10 pixels from above while fading in (0.35 s, ease-out).
    void slideIn(const QRect& target);
    // Grows or shrinks downwards to `height`, its top edge staying put (0.25 s).
    void resizeKeepingTop(int height);
    // Rises 10 pixels while fading out (0.3 s, ease-in), then calls `finished`.
    void slideOut(std::function<void()> finished);

Q_SIGNALS:
    // A click on the row at this index of the model's rows.
    void rowTapped(int row);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void stopAnimations();
    QRectF contentRect() const;
    QPainterPath capsulePath() const;
    void updateMask();
    void paintRow(QPainter& painter, const QRectF& row, const ProjectSnapshot& snapshot,
                  bool first) const;

    const LiveActivityModel& model_;
    const StatusPalette& palette_;
    QParallelAnimationGroup slide_;
    QPropertyAnimation* slideGeometry_;
    QPropertyAnimation* slideOpacity_;
    QPropertyAnimation resize_;
    std::function<void()> afterSlideOut_;
};
