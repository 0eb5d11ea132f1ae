#include "ui/status/LiveActivityWindow.h"
#include "ui/status/LayoutFont.h"

#include "core/common/Language.h"
#include "core/common/TimeTexts.h"
#include "ui/status/LiveActivityGeometry.h"
#include "ui/status/LiveActivityModel.h"
#include "ui/status/StatusPalette.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

namespace G = LiveActivityGeometry;

namespace {

constexpr int slideInMs = 350;
constexpr int slideOutMs = 300;
constexpr int resizeMs = 250;
constexpr int drop = 10;
constexpr double radius = 22;
constexpr double beakHeight = 6;
constexpr double beakHalfBase = 17;
constexpr double rowPadding = 18;

QFont textFont(double points, QFont::Weight weight = QFont::Normal) {
    QFont f;
    setLayoutPixelSize(f, points);
    f.setWeight(weight);
    return f;
}

QString subtitle(const ProjectSnapshot& snapshot) {
    const DeployStatus status = snapshot.status();
    if (!snapshot.latest)
        return title(status);
    const VercelDeployment& deployment = *snapshot.latest;
    const std::optional<double> duration = deployment.buildDuration();
    if (status == DeployStatus::ready) {
        const QString live = Language::text("Live", "En ligne");
        return duration ? Language::text("Live in ", "En ligne en ") + durationText(*duration)
                        : live;
    }
    if (status == DeployStatus::error) {
        const QString failed = Language::text("Failed", "Échec");
        return duration ? Language::text("Failed after ", "Échec après ") + durationText(*duration)
                        : failed;
    }
    return deployment.commitTitle().value_or(title(status));
}

QString trailing(DeployStatus status) {
    if (status == DeployStatus::ready)
        return Language::text("Live", "En ligne");
    if (status == DeployStatus::error)
        return Language::text("Failed", "Échec");
    return title(status);
}

} // namespace

LiveActivityWindow::LiveActivityWindow(const LiveActivityModel& model, const StatusPalette& palette)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                           Qt::WindowDoesNotAcceptFocus),
      model_(model), palette_(palette),
      slideGeometry_(new QPropertyAnimation(this, "geometry", &slide_)),
      slideOpacity_(new QPropertyAnimation(this, "windowOpacity", &slide_)),
      resize_(this, "geometry") {
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TranslucentBackground);
    setFocusPolicy(Qt::NoFocus);
    resize(qRound(G::panelWidth), qRound(G::panelHeight(1)));
    slide_.addAnimation(slideGeometry_);
    slide_.addAnimation(slideOpacity_);
    connect(&slide_, &QAbstractAnimation::finished, this, [this] {
        if (auto finished = std::exchange(afterSlideOut_, nullptr))
            finished();
    });
    connect(&model_, &LiveActivityModel::changed, this, [this] {
        updateMask(); // the beak may have moved
        update();
    });
    connect(&palette_, &StatusPalette::changed, this, qOverload<>(&QWidget::update));
}

void LiveActivityWindow::stopAnimations() {
    afterSlideOut_ = nullptr;
    slide_.stop();
    resize_.stop();
}

void LiveActivityWindow::slideIn(const QRect& target) {
    stopAnimations();
    const QRect start = target.translated(0, -drop);
    setGeometry(start);
    setWindowOpacity(0);
    show();
    slideGeometry_->setStartValue(start);
    slideGeometry_->setEndValue(target);
    slideOpacity_->setStartValue(0.0);
    slideOpacity_->setEndValue(1.0);
    for (QPropertyAnimation* animation : {slideGeometry_, slideOpacity_}) {
        animation->setDuration(slideInMs);
        animation->setEasingCurve(QEasingCurve::OutCubic);
    }
    slide_.start();
}

void LiveActivityWindow::resizeKeepingTop(int height) {
    const QRect from =
        resize_.state() == QAbstractAnimation::Running ? resize_.endValue().toRect() : geometry();
    if (from.height() == height)
        return;
    resize_.stop();
    resize_.setStartValue(geometry());
    resize_.setEndValue(QRect(from.topLeft(), QSize(from.width(), height)));
    resize_.setDuration(resizeMs);
    resize_.setEasingCurve(QEasingCurve::InOutCubic);
    resize_.start();
}

void LiveActivityWindow::slideOut(std::function<void()> finished) {
    stopAnimations();
    slideGeometry_->setStartValue(geometry());
    slideGeometry_->setEndValue(geometry().translated(0, -drop));
    slideOpacity_->setStartValue(windowOpacity());
    slideOpacity_->setEndValue(0.0);
    for (QPropertyAnimation* animation : {slideGeometry_, slideOpacity_}) {
        animation->setDuration(slideOutMs);
        animation->setEasingCurve(QEasingCurve::InCubic);
    }
    afterSlideOut_ = std::move(finished);
    slide_.start();
}

QRectF LiveActivityWindow::contentRect() const {
    return {G::margin, G::margin, G::contentWidth, height() - 2 * G::margin};
}

QPainterPath LiveActivityWindow::capsulePath() const {
    const QRectF content = contentRect();
    const QRectF body = content.adjusted(0, beakHeight, 0, 0);
    const double tip =
        std::clamp(content.left() + model_.beakX(), content.left() + radius + beakHalfBase,
                   content.right() - radius - beakHalfBase);
    const double w = beakHalfBase;
    const double top = body.top();
    QPainterPath path;
    path.addRoundedRect(body, radius, radius);
    QPainterPath beak;
    beak.moveTo(tip - w, top + 3);
    beak.lineTo(tip - w, top);
    beak.cubicTo(tip - 0.45 * w, top, tip - 0.28 * w, content.top(), tip, content.top());
    beak.cubicTo(tip + 0.28 * w, content.top(), tip + 0.45 * w, top, tip + w, top);
    beak.lineTo(tip + w, top + 3);
    beak.closeSubpath();
    return path.united(beak);
}

// Only the capsule takes clicks, so the margin kept for its shadow never covers the tray icon
// it hangs from; without a compositor the margin is not painted black either.
void LiveActivityWindow::updateMask() {
    setMask(QRegion(capsulePath().toFillPolygon().toPolygon()));
}

void LiveActivityWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    updateMask();
}

void LiveActivityWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 230));
    painter.drawPath(capsulePath());
    const QRectF content = contentRect();
    const QList<ProjectSnapshot>& rows = model_.rows();
    for (int i = 0; i < rows.size(); ++i) {
        const QRectF row(content.left(), content.top() + G::spaceAbove + i * G::rowHeight,
                         G::contentWidth, G::rowHeight);
        if (row.bottom() > content.bottom() + 0.5)
            break; // still growing towards this row
        paintRow(painter, row, rows[i], i == 0);
    }
}

void LiveActivityWindow::paintRow(QPainter& painter, const QRectF& row,
                                  const ProjectSnapshot& snapshot, bool first) const {
    const DeployStatus status = snapshot.status();
    const QColor color = palette_.statusColor(status);
    const QRectF inner = row.adjusted(rowPadding, 0, -rowPadding, 0);
    // Status marker: the tray's triangle, filled for a failure.
    const QPointF c(inner.left() + 9, inner.center().y());
    const QPolygonF triangle({{c.x(), c.y() - 7}, {c.x() + 8, c.y() + 6}, {c.x() - 8, c.y() + 6}});
    painter.setPen(QPen(color, 2));
    painter.setBrush(status == DeployStatus::error ? QBrush(color) : Qt::NoBrush);
    painter.drawPolygon(triangle);

    const double textLeft = inner.left() + 30;
    const QString trail = trailing(status);
    painter.setFont(textFont(13, QFont::Medium));
    const double trailWidth = painter.fontMetrics().horizontalAdvance(trail);
    painter.setPen(status == DeployStatus::ready ? StatusPalette::secondaryTextColor() : color);
    painter.drawText(QRectF(inner.right() - trailWidth, row.top(), trailWidth, row.height()),
                     Qt::AlignVCenter | Qt::AlignRight, trail);

    const double textWidth = inner.right() - trailWidth - 8 - textLeft;
    QString name = snapshot.name.toUpper();
    if (first && model_.overflow() >= 1)
        name += QStringLiteral("  +%1").arg(model_.overflow());
    painter.setFont(textFont(13));
    painter.setPen(Qt::white);
    const QRectF nameRect(textLeft, row.top() + 12, textWidth, 20);
    painter.drawText(nameRect, Qt::AlignLeft | Qt::AlignVCenter,
                     painter.fontMetrics().elidedText(name, Qt::ElideMiddle, qRound(textWidth)));
    painter.setFont(textFont(11));
    painter.setPen(status == DeployStatus::error ? color : StatusPalette::secondaryTextColor());
    const QRectF subRect(textLeft, row.top() + 32, textWidth, 18);
    painter.drawText(
        subRect, Qt::AlignLeft | Qt::AlignVCenter,
        painter.fontMetrics().elidedText(subtitle(snapshot), Qt::ElideRight, qRound(textWidth)));
}

void LiveActivityWindow::mouseReleaseEvent(QMouseEvent* event) {
    const double y = event->position().y() - G::margin - G::spaceAbove;
    const double x = event->position().x() - G::margin;
    if (y < 0 || x < 0 || x > G::contentWidth)
        return;
    const int row = static_cast<int>(y / G::rowHeight);
    if (row < model_.rows().size())
        Q_EMIT rowTapped(row);
}
