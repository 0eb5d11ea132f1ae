#pragma once

#include <QMargins>
#include <QParallelAnimationGroup>
#include <QPropertyAnimation>
#include <QWidget>
#include <functional>

class Clock;
class LiveActivityModel;
class LiveActivityView;
class StatusPalette;

// The floating window of the Live Activity: frameless, translucent, above other windows, and
// never taking the focus from what the user is doing. It hosts the capsule view, which fills
// it whatever its size, and animates in, out and between row counts.
class LiveActivityWindow : public QWidget {
    Q_OBJECT
public:
    // `clock` gives the rows their running times (the system time when absent).
    LiveActivityWindow(const LiveActivityModel& model, const StatusPalette& palette,
                       const Clock* clock = nullptr);

    LiveActivityView* view() const { return view_; }

    // Above a tray at the bottom of the screen the window moves the other way: it rises into
    // place, grows upwards and sinks away, so its edge at the tray stays where it is.
    void setBottomAnchored(bool anchored) { bottomAnchored_ = anchored; }
    // Leaves out this much of the window's edges, margin only. Where the compositor takes no
    // notice of the window's shape (wlroots through XWayland) the transparent margin over the
    // tray would take the clicks meant for its icons. Set before slideIn().
    void setCut(const QMargins& cut) { cut_ = cut; }

    // Appears at `target`, dropping 10 pixels from above while fading in (0.35 s, ease-out).
    void slideIn(const QRect& target);
    // Grows or shrinks downwards to `height`, its top edge staying put (0.25 s); also while it
    // slides in or out, which moves it without resizing it.
    void resizeKeepingTop(int height);
    // Rises 10 pixels while fading out (0.3 s, ease-in), then calls `finished`.
    void slideOut(std::function<void()> finished);

Q_SIGNALS:
    // A click on the row at this index of the model's rows.
    void rowTapped(int row);
    void rowMenuRequested(int row, const QPoint& globalPosition);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void stopAnimations();
    void updateMask();

    LiveActivityView* view_;
    QParallelAnimationGroup slide_;
    QPropertyAnimation* slidePosition_;
    QPropertyAnimation* slideOpacity_;
    QPropertyAnimation resize_; // of the size only, so a slide and a resize never fight
    std::function<void()> afterSlideOut_;
    bool bottomAnchored_ = false;
    QMargins cut_;
    int resizeBottom_ = 0; // the bottom edge a resize keeps when bottom-anchored
};
