#include "ui/status/LiveActivityView.h"

#include "core/common/Language.h"
#include "core/monitor/Clock.h"
#include "ui/status/BeakedCapsule.h"
#include "ui/status/CrossFade.h"
#include "ui/status/LiveActivityGeometry.h"
#include "ui/status/LiveActivityModel.h"
#include "ui/status/LiveActivityRow.h"
#include "ui/status/MotionBlurMask.h"
#include "ui/status/StatusPalette.h"

#include <QPainter>

namespace G = LiveActivityGeometry;

LiveActivityView::LiveActivityView(const LiveActivityModel& model, const StatusPalette& palette,
                                   TapAction onTap, const Clock* clock, QWidget* parent)
    : QWidget(parent), model_(model), palette_(palette), onTap_(std::move(onTap)), clock_(clock),
      fade_(new CrossFade(this)) {
    setAttribute(Qt::WA_TranslucentBackground);
    resize(sizeFor(1));
    ticker_.setInterval(tickMs);
    connect(&ticker_, &QTimer::timeout, this, &LiveActivityView::tick);
    connect(&model_, &LiveActivityModel::changed, this, [this] {
        fadeIfStatusesChange();
        syncRows();
        update(); // the beak may have moved
    });
    connect(&palette_, &StatusPalette::changed, this, qOverload<>(&QWidget::update));
    syncRows();
    statuses_ = rowStatuses();
}

LiveActivityView::~LiveActivityView() = default;

QList<DeployStatus> LiveActivityView::rowStatuses() const {
    QList<DeployStatus> statuses;
    for (const ProjectSnapshot& row : model_.rows())
        statuses.append(row.status());
    return statuses;
}

void LiveActivityView::fadeIfStatusesChange() {
    QList<DeployStatus> statuses = rowStatuses();
    if (statuses == statuses_)
        return;
    statuses_ = std::move(statuses);
    // Only what is on screen needs a transition; a hidden view just takes the new rows.
    if (isVisible())
        fade_->start(grab());
}

QSize LiveActivityView::sizeFor(int rows) {
    return {qRound(G::panelWidth), qRound(G::panelHeight(rows))};
}

QDateTime LiveActivityView::rowClock() const {
    return clock_ ? clock_->now() : QDateTime::currentDateTimeUtc();
}

QRectF LiveActivityView::contentRect() const {
    return {G::margin, G::margin, G::contentWidth, std::max(0.0, height() - 2 * G::margin)};
}

QRectF LiveActivityView::shapeRect() const {
    const QRectF content = contentRect();
    return {content.center().x() - shapeWidth / 2, content.top(), shapeWidth, content.height()};
}

double LiveActivityView::shapeBeakX() const {
    // Along a side the shape spans the content's height; along the top or bottom it is
    // narrower than the content and centred in it.
    if (!isHorizontal(model_.beakEdge()))
        return model_.beakX();
    return model_.beakX() - (G::contentWidth - shapeWidth) / 2;
}

BeakedCapsule LiveActivityView::outline() const {
    BeakedCapsule shape{shapeBeakX(), beak, radius};
    shape.edge = model_.beakEdge();
    return shape;
}

QPainterPath LiveActivityView::body() const {
    return outline().path(shapeRect());
}

QPainterPath LiveActivityView::coverage() const {
    // The outermost copies of the shadow reach `spread` beyond the body on either side. The beak
    // is the body's own: a beak drawn on the wide outline would be clamped to other limits and,
    // near a screen edge, stand apart from the one painted.
    const QRectF shape = shapeRect();
    const double spread = MotionBlurMask::spread;
    BeakedCapsule body = outline();
    body.showBeak = false;
    QPainterPath covered = body.path(shape.adjusted(-spread, 0, spread, 0));
    BeakedCapsule tip = outline();
    tip.onlyBeak = true;
    return covered.united(tip.path(shape));
}

void LiveActivityView::syncRows() {
    const QList<ProjectSnapshot>& snapshots = model_.rows();
    while (rows_.size() > snapshots.size())
        delete rows_.takeLast();
    while (rows_.size() < snapshots.size()) {
        auto* row = new LiveActivityRow(palette_, this);
        const int index = int(rows_.size());
        connect(row, &LiveActivityRow::tapped, this, [this, index] {
            if (index >= model_.rows().size())
                return;
            if (onTap_)
                onTap_(model_.rows()[index]);
            Q_EMIT rowTapped(index);
        });
        connect(row, &LiveActivityRow::menuRequested, this, [this, index](const QPoint& at) {
            if (index < model_.rows().size())
                Q_EMIT rowMenuRequested(index, at);
        });
        rows_.append(row);
    }
    const QDateTime now = rowClock();
    const bool french = Language::isFrench();
    for (int i = 0; i < rows_.size(); ++i)
        rows_[i]->setSnapshot(snapshots[i], i == 0 ? model_.overflow() : 0, now, french);
    placeRows();
}

void LiveActivityView::placeRows() {
    const QRectF content = contentRect();
    for (int i = 0; i < rows_.size(); ++i) {
        // The space the beak takes is above the rows, or below them when it points down; a
        // beak on a side takes none of the height, which is then shared above and below.
        const TrayEdge edge = model_.beakEdge();
        const double beakRoom = edge == TrayEdge::bottom ? 0
                                : edge == TrayEdge::top  ? G::spaceAbove
                                                         : G::spaceAbove / 2;
        const double top = content.top() + beakRoom + i * G::rowHeight;
        rows_[i]->move(qRound(content.left()), qRound(top));
        // A row the window is still growing towards appears once it fits.
        rows_[i]->setVisible(top + G::rowHeight <= content.bottom() + 0.5);
    }
}

void LiveActivityView::tick() {
    const QDateTime now = rowClock();
    for (LiveActivityRow* row : std::as_const(rows_))
        row->setNow(now);
}

void LiveActivityView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    tick(); // the time may have moved on while hidden
    ticker_.start();
}

void LiveActivityView::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    ticker_.stop();
}

void LiveActivityView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeRows();
}

const QImage& LiveActivityView::shadow() {
    const QRectF content = contentRect();
    const double ratio = devicePixelRatioF();
    const QString key = QStringLiteral("%1/%2/%3/%4")
                            .arg(shapeBeakX())
                            .arg(content.height())
                            .arg(ratio)
                            .arg(int(model_.beakEdge()));
    if (key != shadowKey_) {
        const MotionBlurMask mask{outline(), content.height()};
        shadow_ = mask.render(
            QSizeF(G::contentWidth + 2 * MotionBlurMask::spread, content.height()), ratio);
        shadowKey_ = key;
    }
    return shadow_;
}

// Black at 0.9 through the motion-blurred stack first: its copies overlap into a pill whose sides
// fade out, dark under the emblems and the trailing texts that reach past the body. Then the body
// and its beak as one layer in black at 0.6, which closes the centre and draws the outline.
void LiveActivityView::paintEvent(QPaintEvent*) {
    if (contentRect().height() <= 0)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF content = contentRect();
    const double ratio = devicePixelRatioF();
    const double margin = MotionBlurMask::margin(ratio);
    painter.setOpacity(fillOpacity);
    painter.drawImage(
        QPointF(content.left() - MotionBlurMask::spread - margin, content.top() - margin),
        shadow());
    painter.setOpacity(bodyOpacity);
    const QRectF shape = shapeRect();
    BeakedCapsule body = outline();
    painter.fillPath(body.path(shape), Qt::black);
    body.onlyBeak = true;
    painter.fillPath(body.path(shape), Qt::black);
}
