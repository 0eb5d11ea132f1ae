#include "ui/panel/ProjectRow.h"
#include "ui/status/LayoutFont.h"

#include "core/common/Language.h"
#include "core/monitor/AppState.h"
#include "ui/common/MuteMenu.h"
#include "ui/common/SymbolArt.h"
#include "ui/panel/LetterBleed.h"
#include "ui/panel/MiniPrism.h"
#include "ui/panel/ProgressLine.h"
#include "ui/panel/ProjectRowTexts.h"
#include "ui/panel/RowAction.h"
#include "ui/status/StatusPalette.h"

#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QEnterEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

namespace {

constexpr double nameSize = 15;
constexpr double nameTracking = 0.5;
constexpr double badgeSize = 9;
constexpr double badgeTracking = 0.6;
constexpr double smallSize = 11;
constexpr double titleSpacing = 6;
constexpr double lineSpacing = 2;
constexpr double actionsGap = 5;
constexpr double actionSpacing = 6;
constexpr double badgePadX = 5;
constexpr double badgePadY = 2;
constexpr double muteMarkSize = 13;

QColor withAlpha(QColor color, double alpha) {
    color.setAlphaF(static_cast<float>(alpha));
    return color;
}

const QString previewText = QStringLiteral("PREVIEW");

// The emblem drawn at the row's opacity; a QGraphicsEffect would misplace it in render().
class FadingPrism final : public MiniPrism {
public:
    using MiniPrism::MiniPrism;
    void setOpacity(double opacity) {
        if (opacity_ == opacity)
            return;
        opacity_ = opacity;
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setOpacity(opacity_);
        paintEmblem(painter, frameRect());
    }

private:
    double opacity_ = 1;
};

} // namespace

struct ProjectRow::Metrics {
    QFont nameFont, badgeFont, ageFont, descriptionFont;
    double textLeft = 0, textRight = 0, top = 0, baseline = 0;
    double titleHeight = 0, descriptionTop = 0, descriptionHeight = 0, actionsTop = 0;
    QRectF badge, age, muteMark;
    QString ageText;
};

QColor ProjectRow::primaryText() {
    return withAlpha(Qt::white, 0.88);
}
QColor ProjectRow::secondaryText() {
    return withAlpha(Qt::white, 0.55);
}
QColor ProjectRow::tertiaryText() {
    return withAlpha(Qt::white, 0.33);
}
QColor ProjectRow::quaternaryText() {
    return withAlpha(Qt::white, 0.18);
}

ProjectRow::ProjectRow(AppState& state, StatusPalette& palette, QWidget* parent)
    : QWidget(parent), state_(state), palette_(palette),
      opener_([](const QUrl& url) { QDesktopServices::openUrl(url); }),
      emblem_(new FadingPrism(this)), bleed_(new LetterBleed(this)),
      progressLine_(new ProgressLine(this)), copy_(new RowAction(this)), log_(new RowAction(this)),
      alive_(std::make_shared<Cancellation>()) {
    setMouseTracking(true);
    setAttribute(Qt::WA_Hover);
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    emblem_->setStatusPalette(&palette_);
    emblem_->setAttribute(Qt::WA_TransparentForMouseEvents);
    bleed_->setFontSize(nameSize);
    bleed_->setTracking(nameTracking);
    progressLine_->setAttribute(Qt::WA_TransparentForMouseEvents);
    copy_->setAction([this] { copyForAI(); });
    log_->setAction([this] { openDashboard(); });
    redrawTimer_.setInterval(idleRedrawMs);
    QObject::connect(&redrawTimer_, &QTimer::timeout, this, &ProjectRow::redraw);
    QObject::connect(&palette_, &StatusPalette::changed, this, [this] { applySnapshot(); });
    applySnapshot();
}

ProjectRow::~ProjectRow() {
    alive_->cancel();
}

void ProjectRow::setSnapshot(const ProjectSnapshot& snap, bool accent) {
    snap_ = snap;
    accent_ = accent;
    applySnapshot();
}

QDateTime ProjectRow::now() const {
    return state_.clock().now();
}

DeployStatus ProjectRow::status() const {
    return snap_.status();
}

QColor ProjectRow::statusColor() const {
    return palette_.statusColor(status());
}

bool ProjectRow::isFresh() const {
    return ProjectRowTexts::isFresh(snap_, now());
}

QString ProjectRow::ageText() const {
    return ProjectRowTexts::ageText(snap_, now(), Language::isFrench());
}

QString ProjectRow::descriptionText() const {
    return ProjectRowTexts::description(snap_, Language::isFrench());
}

bool ProjectRow::hasBadge() const {
    return ProjectRowTexts::showsPreviewBadge(snap_);
}

QColor ProjectRow::nameColor() const {
    return isFresh() ? primaryText() : tertiaryText();
}

QColor ProjectRow::ageColor() const {
    if (isInProgress(status()))
        return statusColor();
    return isFresh() ? tertiaryText() : quaternaryText();
}

QColor ProjectRow::descriptionColor() const {
    if (status() == DeployStatus::error)
        return withAlpha(palette_.error(), 0.9);
    return isFresh() ? tertiaryText() : quaternaryText();
}

double ProjectRow::emblemOpacity() const {
    return isFresh() ? 1.0 : staleEmblemOpacity;
}

QString ProjectRow::shownName() const {
    QFont font = metrics().nameFont;
    return QFontMetricsF(font).elidedText(snap_.name.toUpper(), Qt::ElideMiddle,
                                          nameFrame_.width());
}

void ProjectRow::applySnapshot() {
    mute_ = state_.activeMute(snap_.id);
    setToolTip(mute_ ? mutedText(*mute_, now()) : QString());
    const bool inProgress = isInProgress(status());
    const bool failed = status() == DeployStatus::error;
    emblem_->setStatus(status());
    emblem_->setAccent(accent_);
    bleed_->setText(snap_.name);
    progressLine_->setColor(statusColor());
    progressLine_->setVisible(inProgress);
    copy_->setTint(palette_.error());
    copy_->setVisible(failed);
    log_->setTint(std::nullopt);
    log_->setVisible(failed);
    applyCopied();
    redrawTimer_.setInterval(inProgress ? inProgressRedrawMs : idleRedrawMs);
    updateGeometry();
    redraw();
}

void ProjectRow::applyCopied() {
    copy_->setTitle(copied_ ? Language::text("Copied", "Copié")
                            : Language::text("Copy for AI", "Copier pour l'IA"));
    copy_->setSymbol(copied_ ? QStringLiteral("checkmark") : QStringLiteral("doc.on.clipboard"));
    log_->setTitle(Language::text("View log", "Voir les logs"));
    log_->setSymbol(QStringLiteral("arrow.up.right"));
    layoutChildren();
}

void ProjectRow::redraw() {
    const std::optional<double> progress = snap_.progress(now());
    emblem_->setProgress(progress);
    static_cast<FadingPrism*>(emblem_)->setOpacity(emblemOpacity());
    if (isInProgress(status()))
        progressLine_->setProgress(progress);
    layoutChildren(); // the age text's width moves the name's room
    update();
}

ProjectRow::Metrics ProjectRow::metrics() const {
    Metrics m;
    m.nameFont = font();
    setLayoutPixelSize(m.nameFont, nameSize);
    m.nameFont.setWeight(QFont::Normal);
    m.nameFont.setLetterSpacing(QFont::AbsoluteSpacing, nameTracking);
    m.badgeFont = font();
    setLayoutPixelSize(m.badgeFont, badgeSize);
    m.badgeFont.setWeight(QFont::Bold);
    m.badgeFont.setLetterSpacing(QFont::AbsoluteSpacing, badgeTracking);
    // The desktop's sans fonts draw digits of one width, so the running time does not jitter.
    m.ageFont = font();
    setLayoutPixelSize(m.ageFont, smallSize);
    m.ageFont.setWeight(isInProgress(status()) ? QFont::Medium : QFont::Normal);
    m.descriptionFont = font();
    setLayoutPixelSize(m.descriptionFont, smallSize);

    const QFontMetricsF name(m.nameFont), badge(m.badgeFont), age(m.ageFont),
        description(m.descriptionFont);
    m.textLeft = paddingX + MiniPrism::frameSize.width() + emblemSpacing;
    m.textRight = width() - paddingX;
    m.top = paddingY;
    m.baseline = m.top + name.ascent();
    m.titleHeight = name.height();

    m.ageText = snap_.latest ? ageText() : QString();
    const double ageWidth = age.horizontalAdvance(m.ageText);
    m.age = QRectF(m.textRight - ageWidth, m.baseline - age.ascent(), ageWidth, age.height());
    if (mute_)
        m.muteMark =
            QRectF(0, m.top + (m.titleHeight - muteMarkSize) / 2, muteMarkSize, muteMarkSize);
    if (hasBadge()) {
        const double w = badge.horizontalAdvance(previewText) + 2 * badgePadX;
        const double h = badge.height() + 2 * badgePadY;
        m.badge = QRectF(0, m.baseline - 1 - badge.ascent() - badgePadY, w, h);
    }
    m.descriptionTop = m.top + m.titleHeight + lineSpacing;
    m.descriptionHeight = description.height();
    m.actionsTop = m.descriptionTop + m.descriptionHeight + actionsGap;
    return m;
}

void ProjectRow::layoutChildren() {
    Metrics m = metrics();
    // The name takes what the badge and the age leave, truncated in the middle beyond that.
    double room = m.textRight - m.textLeft;
    if (!m.ageText.isEmpty())
        room -= m.age.width() + titleSpacing;
    if (hasBadge())
        room -= m.badge.width() + titleSpacing;
    if (mute_)
        room -= m.muteMark.width() + titleSpacing;
    const double natural = QFontMetricsF(m.nameFont).horizontalAdvance(snap_.name.toUpper());
    nameFrame_ =
        QRectF(m.textLeft, m.top, std::clamp(natural, 0.0, std::max(0.0, room)), m.titleHeight);
    bleed_->setGeometry(QRect(qRound(nameFrame_.x()), qRound(nameFrame_.y()),
                              qRound(nameFrame_.width()), qRound(nameFrame_.height())));

    const QRectF frame = emblem_->frameRect();
    emblem_->move(qRound(paddingX - frame.x()), qRound(paddingY + 0.5 - frame.y()));

    const QSize copySize = copy_->sizeHint(), logSize = log_->sizeHint();
    const int rowHeight = std::max(copySize.height(), logSize.height());
    const int top = qRound(m.actionsTop);
    copy_->setGeometry(qRound(m.textLeft), top + (rowHeight - copySize.height()) / 2,
                       copySize.width(), copySize.height());
    log_->setGeometry(copy_->geometry().right() + 1 + qRound(actionSpacing),
                      top + (rowHeight - logSize.height()) / 2, logSize.width(), logSize.height());

    progressLine_->setGeometry(qRound(paddingX), height() - ProgressLine::thickness,
                               std::max(0, width() - 2 * qRound(paddingX)),
                               ProgressLine::thickness);
}

int ProjectRow::heightForWidth(int) const {
    const Metrics m = metrics();
    double bottom = m.descriptionTop + m.descriptionHeight;
    if (status() == DeployStatus::error)
        bottom = m.actionsTop + std::max(copy_->sizeHint().height(), log_->sizeHint().height());
    // The emblem may reach lower than a short text column.
    bottom = std::max(bottom, paddingY + 0.5 + MiniPrism::frameSize.height());
    return static_cast<int>(std::ceil(bottom + paddingY));
}

QSize ProjectRow::sizeHint() const {
    return {320, heightForWidth(320)};
}

void ProjectRow::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const Metrics m = metrics();
    const DeployStatus s = status();

    if (isInProgress(s) || s == DeployStatus::error) {
        const QColor color = s == DeployStatus::error ? palette_.error() : statusColor();
        QLinearGradient gradient(0, 0, width(), 0);
        gradient.setColorAt(0, withAlpha(color, s == DeployStatus::error ? 0.16 : 0.22));
        gradient.setColorAt(1, withAlpha(color, s == DeployStatus::error ? 0 : 0.02));
        p.fillRect(rect(), gradient);
    }

    // The plain name; LetterBleed lays only its blurred copies over it.
    p.setFont(m.nameFont);
    p.setPen(nameColor());
    p.drawText(nameFrame_, Qt::AlignLeft | Qt::AlignVCenter, shownName());

    double afterName = nameFrame_.right();
    if (mute_) {
        const QRectF mark = muteMarkFrame();
        p.drawPixmap(mark.topLeft(), SymbolArt::drawn(QStringLiteral("bell.slash"), secondaryText(),
                                                      qRound(mark.width()), devicePixelRatioF()));
        afterName = mark.right();
    }

    if (hasBadge()) {
        QRectF badge = m.badge;
        badge.moveLeft(afterName + titleSpacing);
        p.setPen(Qt::NoPen);
        p.setBrush(withAlpha(primaryText(), 0.08));
        p.drawRoundedRect(badge, 4, 4);
        p.setFont(m.badgeFont);
        p.setPen(secondaryText());
        p.drawText(badge, Qt::AlignCenter, previewText);
    }

    if (!m.ageText.isEmpty()) {
        p.setFont(m.ageFont);
        p.setPen(ageColor());
        p.drawText(QPointF(m.age.left(), m.baseline), m.ageText);
    }

    p.setFont(m.descriptionFont);
    p.setPen(descriptionColor());
    const QRectF line(m.textLeft, m.descriptionTop, m.textRight - m.textLeft, m.descriptionHeight);
    p.drawText(line, Qt::AlignLeft | Qt::AlignVCenter,
               QFontMetricsF(m.descriptionFont)
                   .elidedText(descriptionText(), Qt::ElideRight, line.width()));
}

void ProjectRow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layoutChildren();
}

void ProjectRow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    redraw();
    redrawTimer_.start();
}

void ProjectRow::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    redrawTimer_.stop();
}

void ProjectRow::setPointer(QPointF pointer, bool hovering) {
    pointer_ = pointer;
    hovering_ = hovering;
    bleed_->setFocus(pointer_ - nameFrame_.topLeft());
    bleed_->setActive(hovering_);
}

void ProjectRow::enterEvent(QEnterEvent* event) {
    setPointer(event->position(), true);
    QWidget::enterEvent(event);
}

void ProjectRow::leaveEvent(QEvent* event) {
    hovering_ = false; // the pointer keeps its last place
    bleed_->setActive(false);
    QWidget::leaveEvent(event);
}

void ProjectRow::mouseMoveEvent(QMouseEvent* event) {
    setPointer(event->position(), true);
    QWidget::mouseMoveEvent(event);
}

void ProjectRow::mousePressEvent(QMouseEvent* event) {
    pressed_ = event->button() == Qt::LeftButton;
    event->accept();
}

void ProjectRow::mouseReleaseEvent(QMouseEvent* event) {
    const bool click = pressed_ && event->button() == Qt::LeftButton &&
                       rect().contains(event->position().toPoint());
    pressed_ = false;
    event->accept();
    if (click)
        openDashboard();
}

QRectF ProjectRow::muteMarkFrame() const {
    if (!mute_)
        return {};
    QRectF mark = metrics().muteMark;
    mark.moveLeft(nameFrame_.right() + titleSpacing);
    return mark;
}

void ProjectRow::fillContextMenu(QMenu& menu) {
    addMuteActions(menu, state_, snap_.id, snap_.name);
}

void ProjectRow::contextMenuEvent(QContextMenuEvent* event) {
    event->accept();
    // Its actions hold the state, not the row; closed, it deletes itself.
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    fillContextMenu(*menu);
    menu->popup(event->globalPos());
}

void ProjectRow::openDashboard() {
    if (const std::optional<QUrl> url = snap_.dashboardURL(); url && opener_)
        opener_(*url);
}

void ProjectRow::copyForAI() {
    confirmCopy(this, state_, snap_, alive_);
}

QCoro::Task<> ProjectRow::confirmCopy(QPointer<ProjectRow> self, AppState& state,
                                      ProjectSnapshot snap, std::shared_ptr<Cancellation> token) {
    Clock& clock = state.clock();
    co_await state.copyFailureReport(std::move(snap));
    if (!self)
        co_return;
    self->copied_ = true;
    self->applyCopied();
    co_await clock.sleep(copiedDuration, token);
    // Each press clears the confirmation at its own end, also when cut short.
    if (!self)
        co_return;
    self->copied_ = false;
    self->applyCopied();
}
