#include "ui/status/LiveActivityWindow.h"

#include "ui/status/LiveActivityGeometry.h"
#include "ui/status/LiveActivityModel.h"
#include "ui/status/LiveActivityView.h"
#include "ui/status/X11InputShape.h"

#include <QPainterPath>

namespace G = LiveActivityGeometry;

namespace {

constexpr int slideInMs = 350;
constexpr int slideOutMs = 300;
constexpr int resizeMs = 250;
constexpr int drop = 10;

// Window managers move a managed window whose margin crosses the work area back inside it
// (KWin, Muffin), and Wayland compositors place the windows they get through XWayland where they
// like (sway centres them). A window that bypasses the window manager stays where it is put, on
// every workspace, as the panel does.
constexpr Qt::WindowFlags capsuleFlags = Qt::Tool | Qt::FramelessWindowHint |
                                         Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus |
                                         Qt::X11BypassWindowManagerHint;

} // namespace

LiveActivityWindow::LiveActivityWindow(const LiveActivityModel& model, const StatusPalette& palette,
                                       const Clock* clock)
    : QWidget(nullptr, capsuleFlags), view_(new LiveActivityView(model, palette, {}, clock, this)),
      slidePosition_(new QPropertyAnimation(this, "pos", &slide_)),
      slideOpacity_(new QPropertyAnimation(this, "windowOpacity", &slide_)), resize_(this, "size") {
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TranslucentBackground);
    setFocusPolicy(Qt::NoFocus);
    resize(qRound(G::panelWidth), qRound(G::panelHeight(1)));
    view_->setGeometry(rect());
    slide_.addAnimation(slidePosition_);
    slide_.addAnimation(slideOpacity_);
    connect(&slide_, &QAbstractAnimation::finished, this, [this] {
        if (auto finished = std::exchange(afterSlideOut_, nullptr))
            finished();
    });
    connect(view_, &LiveActivityView::rowTapped, this, &LiveActivityWindow::rowTapped);
    connect(view_, &LiveActivityView::rowMenuRequested, this,
            &LiveActivityWindow::rowMenuRequested);
    // Above a bottom tray the window grows upwards: its bottom edge stays at the tray.
    connect(&resize_, &QVariantAnimation::valueChanged, this, [this] {
        if (bottomAnchored_)
            move(x(), resizeBottom_ - height() + 1);
    });
    // The beak may have moved; a window raised meanwhile would hide the new rows.
    connect(&model, &LiveActivityModel::changed, this, [this] {
        updateMask();
        if (isVisible())
            raise();
    });
}

void LiveActivityWindow::stopAnimations() {
    afterSlideOut_ = nullptr;
    slide_.stop();
    resize_.stop();
}

void LiveActivityWindow::slideIn(const QRect& whole) {
    stopAnimations();
    const QRect target = whole.marginsRemoved(cut_);
    const QRect start = target.translated(0, bottomAnchored_ ? drop : -drop);
    setGeometry(start);
    setWindowOpacity(0);
    show();
    updateMask(); // its input shape needs the X window
    raise();      // nothing keeps a window that bypasses the window manager above the others
    slidePosition_->setStartValue(start.topLeft());
    slidePosition_->setEndValue(target.topLeft());
    slideOpacity_->setStartValue(0.0);
    slideOpacity_->setEndValue(1.0);
    for (QPropertyAnimation* animation : {slidePosition_, slideOpacity_}) {
        animation->setDuration(slideInMs);
        animation->setEasingCurve(QEasingCurve::OutCubic);
    }
    slide_.start();
}

void LiveActivityWindow::resizeKeepingTop(int height) {
    const QSize to(width(), height - cut_.top() - cut_.bottom());
    const QSize from =
        resize_.state() == QAbstractAnimation::Running ? resize_.endValue().toSize() : size();
    if (from == to)
        return;
    resize_.stop();
    resizeBottom_ = geometry().bottom();
    resize_.setStartValue(size());
    resize_.setEndValue(to);
    resize_.setDuration(resizeMs);
    resize_.setEasingCurve(QEasingCurve::InOutCubic);
    resize_.start();
}

void LiveActivityWindow::slideOut(std::function<void()> finished) {
    stopAnimations();
    slidePosition_->setStartValue(pos());
    slidePosition_->setEndValue(pos() + QPoint(0, bottomAnchored_ ? drop : -drop));
    slideOpacity_->setStartValue(windowOpacity());
    slideOpacity_->setEndValue(0.0);
    for (QPropertyAnimation* animation : {slidePosition_, slideOpacity_}) {
        animation->setDuration(slideOutMs);
        animation->setEasingCurve(QEasingCurve::InCubic);
    }
    afterSlideOut_ = std::move(finished);
    slide_.start();
}

// Only the capsule takes clicks, so the margin kept for its shadow never covers the tray icon
// it hangs from; without a compositor the margin is not painted black either.
void LiveActivityWindow::updateMask() {
    const auto region = [this](const QPainterPath& path) {
        return QRegion(path.toFillPolygon().toPolygon()).translated(view_->pos());
    };
    setMask(region(view_->coverage()));
    if (testAttribute(Qt::WA_WState_Created))
        x11SetInputShape(winId(), region(view_->body()));
}

void LiveActivityWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    view_->setGeometry(rect().marginsAdded(cut_));
    updateMask();
}
