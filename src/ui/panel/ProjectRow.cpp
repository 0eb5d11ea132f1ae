#include "ui/panel/ProjectRow.h"
#include "ui/status/LayoutFont.h"

#include "core/common/Language.h"
#include "core/monitor/AppState.h"
#include "ui/common/MuteMenu.h"
#include "ui/common/SymbolArt.h"
#include "ui/panel/InlineConfirmation.h"
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
constexpr double problemGap = 4;
constexpr int problemFlags = Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap;
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
    // Under the description: the open question or the action line, then the problem sentence.
    QRectF question, actions, problem;
    QList<QRectF> places; // of the action line's capsules, wrapped when they do not fit
    double bottom = 0;
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
      redeploy_(new RowAction(this)), cancel_(new RowAction(this)), copyURL_(new RowAction(this)),
      confirmation_(new InlineConfirmation(this)), alive_(std::make_shared<Cancellation>()) {
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
    redeploy_->setAction([this] { ask(DeploymentAction::redeploy); });
    cancel_->setAction([this] { ask(DeploymentAction::cancel); });
    copyURL_->setAction([this] { copyURL(); });
    confirmation_->hide();
    QObject::connect(confirmation_, &InlineConfirmation::confirmed, this, &ProjectRow::confirm);
    QObject::connect(confirmation_, &InlineConfirmation::kept, this, &ProjectRow::keep);
    QObject::connect(&state_, &AppState::actionsChanged, this, [this] { applySnapshot(); });
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
    emblem_->setStatus(status());
    emblem_->setAccent(accent_);
    bleed_->setText(snap_.name);
    progressLine_->setColor(statusColor());
    progressLine_->setVisible(inProgress);
    applyActions();
    redrawTimer_.setInterval(inProgress ? inProgressRedrawMs : idleRedrawMs);
    updateGeometry();
    redraw();
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

ProjectRow::Metrics ProjectRow::metrics(std::optional<int> width) const {
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
    m.textRight = width.value_or(this->width()) - paddingX;
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

    const double column = std::max(0.0, m.textRight - m.textLeft);
    m.bottom = m.descriptionTop + m.descriptionHeight;
    if (asking_) {
        m.question =
            QRectF(m.textLeft, m.actionsTop, column, confirmation_->heightForWidth(int(column)));
        m.bottom = m.question.bottom();
    } else if (const QList<RowAction*> line = actionLine(); !line.isEmpty()) {
        // French titles are longer: what does not fit goes on a second line.
        double x = m.textLeft, y = m.actionsTop;
        for (const RowAction* action : line) {
            const QSizeF size = action->sizeHint();
            if (x > m.textLeft && x + size.width() > m.textRight) {
                x = m.textLeft;
                y = m.places.last().bottom() + actionSpacing;
            }
            m.places << QRectF(QPointF(x, y), size);
            x += size.width() + actionSpacing;
        }
        m.actions =
            QRectF(m.textLeft, m.actionsTop, column, m.places.last().bottom() - m.actionsTop);
        m.bottom = m.actions.bottom();
    }
    if (const QString problem = problemText(); !problem.isEmpty()) {
        const double h = QFontMetricsF(m.descriptionFont)
                             .boundingRect(QRectF(0, 0, column, 1e6), problemFlags, problem)
                             .height();
        m.problem = QRectF(m.textLeft, m.bottom + problemGap, column, h);
        m.bottom = m.problem.bottom();
    }
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

    const QList<RowAction*> line = actionLine();
    for (qsizetype i = 0; i < line.size() && i < m.places.size(); ++i)
        line[i]->setGeometry(m.places[i].toRect());
    if (asking_)
        confirmation_->setGeometry(m.question.toAlignedRect());
    // Over the end of the description line, which gives way to it.
    const QSize url = copyURL_->sizeHint();
    copyURL_->setGeometry(qRound(m.textRight) - url.width(),
                          qRound(m.descriptionTop + (m.descriptionHeight - url.height()) / 2),
                          url.width(), url.height());

    progressLine_->setGeometry(qRound(paddingX), height() - ProgressLine::thickness,
                               std::max(0, width() - 2 * qRound(paddingX)),
                               ProgressLine::thickness);
}

int ProjectRow::heightForWidth(int width) const {
    // The action line and the sentences under it wrap at the width.
    const Metrics m = metrics(width);
    // The emblem may reach lower than a short text column.
    const double bottom = std::max(m.bottom, paddingY + 0.5 + MiniPrism::frameSize.height());
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
    double lineRight = m.textRight;
    if (!copyURL_->isHidden())
        lineRight = copyURL_->geometry().left() - actionSpacing;
    const QRectF line(m.textLeft, m.descriptionTop, std::max(0.0, lineRight - m.textLeft),
                      m.descriptionHeight);
    p.drawText(line, Qt::AlignLeft | Qt::AlignVCenter,
               QFontMetricsF(m.descriptionFont)
                   .elidedText(descriptionText(), Qt::ElideRight, line.width()));

    if (!m.problem.isEmpty()) {
        p.setPen(withAlpha(palette_.error(), 0.9));
        p.drawText(m.problem, problemFlags, problemText());
    }
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
    applyActions();
    QWidget::enterEvent(event);
}

void ProjectRow::leaveEvent(QEvent* event) {
    hovering_ = false; // the pointer keeps its last place
    bleed_->setActive(false);
    applyActions();
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
