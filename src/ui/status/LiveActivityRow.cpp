#include "ui/status/LiveActivityRow.h"
#include "ui/status/LayoutFont.h"

#include "ui/panel/MiniPrism.h"
#include "ui/panel/ProgressLine.h"
#include "ui/status/LiveActivityRowTexts.h"
#include "ui/status/StatusPalette.h"

#include <QContextMenuEvent>
#include <QMouseEvent>
#include <QPainter>
#include <cmath>

namespace {

constexpr double emblemSpacing = 12;
constexpr double lineSpacing = 2;
constexpr double overflowSpacing = 6;
constexpr double leastGap = 8;
constexpr double lineInset = 22;
constexpr double lineRise = 6;

QFont layoutFont(double pixels, QFont::Weight weight) {
    QFont f;
    setLayoutPixelSize(f, pixels);
    f.setWeight(weight);
    return f;
}

QColor primaryText() {
    return QColor(255, 255, 255, 235);
}

// Every digit takes the width of the widest one, so a running time does not jitter.
double tabularWidth(const QFontMetricsF& metrics, const QString& text, double digitWidth) {
    double width = 0;
    for (const QChar c : text)
        width += c.isDigit() ? digitWidth : metrics.horizontalAdvance(c);
    return width;
}

double widestDigit(const QFontMetricsF& metrics) {
    double widest = 0;
    for (char d = '0'; d <= '9'; ++d)
        widest = std::max(widest, metrics.horizontalAdvance(QLatin1Char(d)));
    return widest;
}

void drawTabular(QPainter& painter, QPointF baseline, const QString& text, double digitWidth) {
    const QFontMetricsF metrics(painter.font());
    for (const QChar c : text) {
        const double advance = metrics.horizontalAdvance(c);
        const double cell = c.isDigit() ? digitWidth : advance;
        painter.drawText(QPointF(baseline.x() + (cell - advance) / 2, baseline.y()), QString(c));
        baseline.rx() += cell;
    }
}

// The row's emblem, scaled about its centre; the widget leaves room for the grown glow.
class ScaledPrism final : public MiniPrism {
public:
    explicit ScaledPrism(QWidget* parent) : MiniPrism(parent) {
        const double glow = 2 * glowRadius * LiveActivityRow::emblemScale;
        setFixedSize(int(std::ceil(frameSize.width() * LiveActivityRow::emblemScale + 2 * glow)),
                     int(std::ceil(frameSize.height() * LiveActivityRow::emblemScale + 2 * glow)));
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const QSizeF size = QSizeF(frameSize) * LiveActivityRow::emblemScale;
        const QPointF centre = QRectF(rect()).center();
        paintEmblem(painter, QRectF(centre - QPointF(size.width(), size.height()) / 2, size));
    }
};

} // namespace

struct LiveActivityRow::Layout {
    QRectF emblem; // the emblem's unscaled 18 × 16 frame
    QRectF name, overflow, subtitle, trailing;
    double digitWidth = 0;
    QString elidedName;
};

LiveActivityRow::LiveActivityRow(const StatusPalette& palette, QWidget* parent)
    : QWidget(parent), palette_(palette), emblem_(new ScaledPrism(this)),
      line_(new ProgressLine(this)) {
    setFixedSize(rowWidth, rowHeight);
    setCursor(Qt::PointingHandCursor);
    // The emblem only reads the palette; it follows its changes like every other view.
    emblem_->setStatusPalette(const_cast<StatusPalette*>(&palette_));
    emblem_->setAccent(true);
    line_->hide();
    connect(&palette_, &StatusPalette::changed, this, [this] {
        line_->setColor(palette_.statusColor(snapshot_.status()));
        update();
    });
    placeChildren();
}

QFont LiveActivityRow::nameFont() {
    QFont f = layoutFont(13, QFont::Normal);
    f.setLetterSpacing(QFont::AbsoluteSpacing, 0.5);
    return f;
}
QFont LiveActivityRow::overflowFont() {
    return layoutFont(10, QFont::Medium);
}
QFont LiveActivityRow::subtitleFont() {
    return layoutFont(11, QFont::Normal);
}
QFont LiveActivityRow::trailingFont() {
    return layoutFont(13, QFont::Medium);
}

void LiveActivityRow::setSnapshot(const ProjectSnapshot& snapshot, int overflow,
                                  const QDateTime& now, bool french) {
    snapshot_ = snapshot;
    overflow_ = overflow;
    french_ = french;
    subtitle_ = LiveActivityRowTexts::subtitle(snapshot_, french_);
    const QColor color = palette_.statusColor(snapshot_.status());
    emblem_->setStatus(snapshot_.status());
    line_->setColor(color);
    line_->setVisible(LiveActivityRowTexts::showsProgressLine(snapshot_));
    setNow(now);
    update();
}

void LiveActivityRow::setNow(const QDateTime& now) {
    const std::optional<double> progress = LiveActivityRowTexts::progress(snapshot_, now);
    emblem_->setProgress(progress);
    line_->setProgress(progress);
    const QString trailing = LiveActivityRowTexts::trailing(snapshot_, now, french_);
    if (trailing != trailing_) {
        trailing_ = trailing;
        update();
    }
}

QString LiveActivityRow::nameText() const {
    return layout().elidedName;
}

QString LiveActivityRow::overflowText() const {
    return overflow_ >= 1 ? QStringLiteral("+%1").arg(overflow_) : QString();
}

LiveActivityRow::Layout LiveActivityRow::layout() const {
    Layout l;
    const double mid = height() / 2.0;
    const QSizeF frame(MiniPrism::frameSize);
    l.emblem = QRectF(QPointF(padding, mid - frame.height() / 2), frame);
    const double textLeft = l.emblem.right() + emblemSpacing;

    const QFontMetricsF trailMetrics(trailingFont());
    l.digitWidth = widestDigit(trailMetrics);
    const double trailWidth = tabularWidth(trailMetrics, trailing_, l.digitWidth);
    const double right = width() - padding;
    l.trailing = QRectF(right - trailWidth, 0, trailWidth, height());
    const double textRight = l.trailing.left() - leastGap;

    const QFontMetricsF nameMetrics(nameFont()), subMetrics(subtitleFont());
    const double top = mid - (nameMetrics.height() + lineSpacing + subMetrics.height()) / 2;
    const QString more = overflowText();
    const double moreWidth =
        more.isEmpty() ? 0 : QFontMetricsF(overflowFont()).horizontalAdvance(more);
    const double nameRoom =
        std::max(0.0, textRight - textLeft - (more.isEmpty() ? 0 : moreWidth + overflowSpacing));
    l.elidedName = nameMetrics.elidedText(snapshot_.name.toUpper(), Qt::ElideMiddle, nameRoom);
    const double nameWidth = std::min(nameRoom, nameMetrics.horizontalAdvance(l.elidedName));
    l.name = QRectF(textLeft, top, nameWidth + 1, nameMetrics.height());
    l.overflow =
        QRectF(l.name.right() - 1 + overflowSpacing, top, moreWidth + 1, nameMetrics.height());
    l.subtitle = QRectF(textLeft, l.name.bottom() + lineSpacing,
                        std::max(0.0, textRight - textLeft), subMetrics.height());
    return l;
}

void LiveActivityRow::paintEvent(QPaintEvent*) {
    const Layout l = layout();
    const DeployStatus status = snapshot_.status();
    const QColor color = palette_.statusColor(status);
    QPainter painter(this);
    painter.setRenderHint(QPainter::TextAntialiasing);

    painter.setFont(nameFont());
    painter.setPen(primaryText());
    painter.drawText(l.name, Qt::AlignLeft | Qt::AlignVCenter, l.elidedName);
    if (!overflowText().isEmpty()) {
        painter.setFont(overflowFont());
        painter.setPen(StatusPalette::secondaryTextColor());
        painter.drawText(l.overflow, Qt::AlignLeft | Qt::AlignVCenter, overflowText());
    }

    painter.setFont(subtitleFont());
    QColor subColor = StatusPalette::secondaryTextColor();
    if (isFailure(status)) {
        subColor = color;
        subColor.setAlphaF(0.9f * color.alphaF());
    }
    painter.setPen(subColor);
    const QFontMetricsF subMetrics(painter.font());
    painter.drawText(l.subtitle, Qt::AlignLeft | Qt::AlignVCenter,
                     subMetrics.elidedText(subtitle_, Qt::ElideRight, l.subtitle.width()));

    painter.setFont(trailingFont());
    painter.setPen(status == DeployStatus::ready ? StatusPalette::secondaryTextColor() : color);
    const QFontMetricsF trailMetrics(painter.font());
    const double baseline =
        l.trailing.center().y() + (trailMetrics.ascent() - trailMetrics.descent()) / 2;
    drawTabular(painter, QPointF(l.trailing.left(), baseline), trailing_, l.digitWidth);
}

void LiveActivityRow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeChildren();
}

void LiveActivityRow::placeChildren() {
    const QPointF centre = layout().emblem.center();
    emblem_->move(qRound(centre.x() - emblem_->width() / 2.0),
                  qRound(centre.y() - emblem_->height() / 2.0));
    line_->setGeometry(qRound(lineInset), height() - qRound(lineRise) - ProgressLine::thickness,
                       width() - 2 * qRound(lineInset), ProgressLine::thickness);
}

void LiveActivityRow::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

void LiveActivityRow::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
        Q_EMIT tapped();
}

void LiveActivityRow::contextMenuEvent(QContextMenuEvent* event) {
    event->accept();
    Q_EMIT menuRequested(event->globalPos());
}
