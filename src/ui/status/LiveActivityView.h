#pragma once

#include "core/vercel/ProjectSnapshot.h"
#include "ui/status/BeakedCapsule.h"

#include <QImage>
#include <QList>
#include <QTimer>
#include <QWidget>
#include <functional>

class Clock;
class CrossFade;
class LiveActivityModel;
class LiveActivityRow;
class StatusPalette;

// The Live Activity's content: a dark capsule with a beak pointing at the tray icon, over a
// motion-blurred shadow of itself, holding one row per shown project. It redraws on every change
// of the model or the palette, and once a second while on screen so running times advance; a
// hidden capsule runs no timer. Its frame is the whole window: 46 pixels of margin around a
// content area 380 wide.
class LiveActivityView : public QWidget {
    Q_OBJECT
public:
    using TapAction = std::function<void(const ProjectSnapshot&)>;

    static constexpr int tickMs = 1000;
    static constexpr double shapeWidth = 330; // the capsule body, centred in the content
    static constexpr double radius = 22;
    static constexpr double beak = 6;
    static constexpr double fillOpacity = 0.9; // black, through the motion-blurred stack
    static constexpr double bodyOpacity = 0.6;

    // `clock` gives the row clock (the system time when absent); `onTap` is called with the
    // snapshot of a clicked row.
    LiveActivityView(const LiveActivityModel& model, const StatusPalette& palette,
                     TapAction onTap = {}, const Clock* clock = nullptr, QWidget* parent = nullptr);
    ~LiveActivityView() override;

    // The view's size for `rows` rows (one at least).
    static QSize sizeFor(int rows);
    // The outline of everything the backdrop covers, in the view's coordinates: what takes
    // clicks and, without a compositor, what is painted at all.
    QPainterPath coverage() const;
    // The capsule with its beak alone, without the shadow: the part that takes clicks.
    QPainterPath body() const;

    QList<LiveActivityRow*> rows() const { return rows_; }
    bool isTicking() const { return ticker_.isActive(); }
    const CrossFade* crossFade() const { return fade_; }
    QDateTime rowClock() const;

Q_SIGNALS:
    // A click on the row at this index of the model's rows.
    void rowTapped(int row);
    // A context menu asked for on the row at this index.
    void rowMenuRequested(int row, const QPoint& globalPosition);

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void syncRows();
    QList<DeployStatus> rowStatuses() const;
    void fadeIfStatusesChange();
    void placeRows();
    void tick();
    QRectF contentRect() const;
    QRectF shapeRect() const;
    double shapeBeakX() const;
    BeakedCapsule outline() const;
    const QImage& shadow();

    const LiveActivityModel& model_;
    const StatusPalette& palette_;
    TapAction onTap_;
    const Clock* clock_;
    QList<LiveActivityRow*> rows_;
    CrossFade* fade_;
    QList<DeployStatus> statuses_; // of the rows on screen, in row order
    QTimer ticker_;
    QImage shadow_;
    QString shadowKey_;
};
