#include "ui/panel/PanelView.h"

#include "ui/panel/FooterButton.h"

#include "core/common/Language.h"
#include "core/common/TimeTexts.h"
#include "core/monitor/AppState.h"
#include "ui/common/Spinner.h"
#include "ui/common/SymbolArt.h"
#include "ui/panel/PrismHero.h"
#include "ui/panel/ProjectRow.h"
#include "ui/status/StatusPalette.h"

#include <QApplication>
#include <QBuffer>
#include <QFrame>
#include <QHBoxLayout>
#include <QHash>
#include <QIcon>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QRadialGradient>
#include <QScrollArea>
#include <QShortcut>
#include <QToolButton>
#include <QVBoxLayout>
#include <cmath>
#include <limits>

namespace {

constexpr int spinStepMs = 30;
constexpr double spinTurnMs = 900;
constexpr int refreshSymbolPixels = 10;

QString cssColor(const QColor& color) {
    return QStringLiteral("rgba(%1,%2,%3,%4)")
        .arg(color.red())
        .arg(color.green())
        .arg(color.blue())
        .arg(color.alphaF());
}

// The symbol in `color`: the theme's icon recoloured, or our drawing.
QPixmap symbolPixmap(const QString& symbol, const QColor& color, int size, double angle = 0) {
    return SymbolArt::tinted(symbol, color, size, qApp->devicePixelRatio(), angle);
}

// An inline image of `pixmap` for rich text.
QString pixmapHtml(const QPixmap& pixmap) {
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    pixmap.save(&buffer, "PNG");
    const QSizeF size = pixmap.deviceIndependentSize();
    return QStringLiteral("<img src='data:image/png;base64,%1' width='%2' height='%3' "
                          "style='vertical-align: middle'>")
        .arg(QString::fromLatin1(png.toBase64()))
        .arg(size.width())
        .arg(size.height());
}

// The status dot: 6 px in the tone colour with a glow of the same colour (70 %, radius 3), as
// an inline image so it sits in the line's text.
QString glowingDotHtml(const QColor& color) {
    static QHash<QRgb, QString> cache; // one per tone colour
    const auto found = cache.constFind(color.rgba());
    if (found != cache.constEnd())
        return *found;
    const double ratio = qApp->devicePixelRatio();
    QImage image(QSize(12, 12) * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QRadialGradient glow(QPointF(6, 6), 6);
    QColor halo = color;
    halo.setAlphaF(0.7);
    glow.setColorAt(0.5, halo);
    halo.setAlphaF(0);
    glow.setColorAt(1, halo);
    painter.setPen(Qt::NoPen);
    painter.setBrush(glow);
    painter.drawEllipse(QRectF(0, 0, 12, 12));
    painter.setBrush(color);
    painter.drawEllipse(QRectF(3, 3, 6, 6));
    painter.end();
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    const QString html = QStringLiteral("<img src='data:image/png;base64,%1' width='12' "
                                        "height='12' style='vertical-align: middle'>")
                             .arg(QString::fromLatin1(png.toBase64()));
    cache.insert(color.rgba(), html);
    return html;
}

QFrame* rule(double opacity, int indent, QWidget* parent) {
    auto* holder = new QFrame(parent);
    holder->setFixedHeight(1);
    auto* layout = new QHBoxLayout(holder);
    layout->setContentsMargins(indent, 0, 0, 0);
    auto* line = new QFrame(holder);
    line->setFixedHeight(1);
    line->setStyleSheet(
        QStringLiteral("background: %1;").arg(cssColor(QColor::fromRgbF(1, 1, 1, opacity))));
    layout->addWidget(line);
    return holder;
}

} // namespace

PanelView::PanelView(AppState& state, StatusPalette& palette, QWidget* parent)
    : QWidget(parent), state_(state), palette_(palette) {
    setFixedWidth(panelWidth);
    setAutoFillBackground(false);
    QPalette dark;
    dark.setColor(QPalette::Window, Qt::black);
    dark.setColor(QPalette::Base, Qt::black);
    dark.setColor(QPalette::WindowText, ProjectRow::primaryText());
    dark.setColor(QPalette::Text, ProjectRow::primaryText());
    dark.setColor(QPalette::ButtonText, ProjectRow::primaryText());
    dark.setColor(QPalette::Button, QColor(40, 40, 40));
    setPalette(dark);

    auto* root = new QVBoxLayout(this);
    root->setContentsMargins(0, 0, 0, 0);
    root->setSpacing(0);
    buildHeader(root);
    root->addWidget(rule(0.07, 0, this));
    notices_ = new QLabel(this);
    notices_->setWordWrap(true);
    notices_->setTextFormat(Qt::RichText);
    notices_->setContentsMargins(16, 8, 16, 8);
    notices_->setStyleSheet(
        QStringLiteral("color: %1; font-size: 11px;").arg(cssColor(ProjectRow::secondaryText())));
    root->addWidget(notices_);
    bodyHolder_ = new QVBoxLayout;
    bodyHolder_->setContentsMargins(0, 0, 0, 0);
    bodyHolder_->setSpacing(0);
    root->addLayout(bodyHolder_);
    root->addWidget(rule(0.07, 0, this));
    buildFooter(root);

    auto* comma = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma), this);
    connect(comma, &QShortcut::activated, this, &PanelView::openSettings);
    auto* quitKey = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q), this);
    connect(quitKey, &QShortcut::activated, qApp, &QCoreApplication::quit);

    footerTimer_.setInterval(footerTickMs);
    connect(&footerTimer_, &QTimer::timeout, this, &PanelView::updateFooter);
    spinTimer_.setInterval(spinStepMs);
    connect(&spinTimer_, &QTimer::timeout, this, [this] {
        setRefreshAngle(std::fmod(spinAngle_ + 360.0 * spinStepMs / spinTurnMs, 360.0));
    });
    // When the refresh ends the symbol finishes its turn and eases to rest.
    spinSettle_.setDuration(350);
    spinSettle_.setEasingCurve(QEasingCurve::OutCubic);
    connect(&spinSettle_, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& angle) { setRefreshAngle(angle.toDouble()); });

    connect(&state_, &AppState::changed, this, &PanelView::redraw);
    connect(&state_, &AppState::connectionChanged, this, &PanelView::redraw);
    connect(&state_, &AppState::snapshotsChanged, this, &PanelView::redraw);
    connect(&state_, &AppState::preferencesChanged, this, &PanelView::redraw);
    connect(&state_, &AppState::refreshingChanged, this, &PanelView::updateRefreshSpin);
    connect(&palette_, &StatusPalette::changed, this, &PanelView::redraw);
    redraw();
}

PanelView::~PanelView() = default;

PanelView::Body PanelView::bodyFor(const Connection& connection, bool hasSnapshots,
                                   bool hasLoadedOnce) {
    switch (connection.kind) {
    case Connection::Kind::failed:
    case Connection::Kind::retrying:
        return Body::failed;
    case Connection::Kind::checking:
        return Body::checking;
    case Connection::Kind::noToken:
        return Body::noToken;
    case Connection::Kind::connected:
        break;
    }
    if (hasSnapshots)
        return Body::list;
    return hasLoadedOnce ? Body::noProjects : Body::loading;
}

std::optional<QString> PanelView::accentProjectId(const QList<ProjectSnapshot>& snapshots) {
    std::optional<QString> best;
    double bestTime = -std::numeric_limits<double>::infinity();
    for (const ProjectSnapshot& snap : snapshots) {
        if (!snap.latest || snap.latest->status() != DeployStatus::ready)
            continue;
        const double time = snap.latest->ready ? *snap.latest->ready / 1000.0
                                               : -std::numeric_limits<double>::infinity();
        if (!best || time > bestTime) {
            best = snap.id;
            bestTime = time;
        }
    }
    return best;
}

QColor PanelView::dotColor(Tone tone, const StatusPalette& palette) {
    switch (tone) {
    case Tone::disconnected:
        return StatusPalette::secondaryTextColor();
    case Tone::idle:
    case Tone::success:
        return Qt::white;
    case Tone::building:
        return palette.success();
    case Tone::queued:
        return palette.queued();
    case Tone::error:
        return palette.error();
    }
    return Qt::white;
}

void PanelView::buildHeader(QVBoxLayout* root) {
    auto* header = new QWidget(this);
    auto* layout = new QVBoxLayout(header);
    layout->setContentsMargins(12, 24, 12, 14);
    layout->setSpacing(10);
    hero_ = new PrismHero(header);
    hero_->setStatusPalette(&palette_);
    layout->addWidget(hero_, 0, Qt::AlignHCenter);
    status_ = new QLabel(header);
    status_->setAlignment(Qt::AlignCenter);
    status_->setTextFormat(Qt::RichText);
    QFont font = status_->font();
    font.setWeight(QFont::Medium);
    font.setLetterSpacing(QFont::AbsoluteSpacing, 1.1);
    font.setPixelSize(11);
    status_->setFont(font);
    layout->addWidget(status_);
    root->addWidget(header);

    refresh_ = new QToolButton(header);
    refresh_->setFixedSize(22, 22);
    refresh_->setAutoRaise(true);
    refresh_->setIconSize(QSize(refreshSymbolPixels, refreshSymbolPixels));
    refresh_->setStyleSheet(QStringLiteral("QToolButton { border: none; background: transparent; }"
                                           "QToolButton:hover { color: white; }"));
    setRefreshAngle(0);
    refresh_->move(panelWidth - 12 - 22, 8);
    refresh_->setCursor(Qt::PointingHandCursor);
    connect(refresh_, &QToolButton::clicked, this, [this] { state_.refresh(); });
}

void PanelView::buildFooter(QVBoxLayout* root) {
    auto* footer = new QWidget(this);
    auto* layout = new QHBoxLayout(footer);
    // The buttons' highlights reach 6 px past their padding, into the footer's margins.
    layout->setContentsMargins(6, 2, 6, 2);
    layout->setSpacing(4);
    auto makeButton = [&](const QString& symbol) { return new FooterButton(symbol, footer); };
    settings_ = makeButton(QStringLiteral("slider.horizontal.3"));
    connect(settings_, &QToolButton::clicked, this, &PanelView::openSettings);
    lastRefresh_ = new QLabel(footer);
    lastRefresh_->setAlignment(Qt::AlignCenter);
    lastRefresh_->setStyleSheet(
        QStringLiteral("color: %1; font-size: 11px;").arg(cssColor(ProjectRow::tertiaryText())));
    quit_ = makeButton(QStringLiteral("power"));
    connect(quit_, &QToolButton::clicked, qApp, &QCoreApplication::quit);
    layout->addWidget(settings_);
    layout->addStretch();
    layout->addWidget(lastRefresh_);
    layout->addStretch();
    layout->addWidget(quit_);
    root->addWidget(footer);
}

QString PanelView::statusText() const {
    return status_->text();
}

QString PanelView::lastRefreshText() const {
    return lastRefresh_->isHidden() ? QString() : lastRefresh_->text();
}

QString PanelView::noticesText() const {
    return notices_->isHidden() ? QString() : shownNotices_.join(QLatin1Char('\n'));
}

QString PanelView::bodyTitle() const {
    return cardTitle_ ? cardTitle_->text() : QString();
}

QString PanelView::bodyMessage() const {
    return cardMessage_ ? cardMessage_->text() : QString();
}

void PanelView::redraw() {
    updateHeader();
    updateNotices();
    const Body body =
        bodyFor(state_.connection(), !state_.snapshots().isEmpty(), state_.hasLoadedOnce());
    accentId_ = body == Body::list ? accentProjectId(state_.snapshots()) : std::nullopt;
    QStringList ids;
    if (body == Body::list)
        for (const ProjectSnapshot& snap : state_.snapshots())
            ids << snap.id;
    const QString languageKey = Language::text("en", "fr");
    const QString detail = state_.connectionMessage();
    if (!bodyWidget_ || body != body_ || ids != rowIds_ || languageKey != builtLanguageKey_ ||
        (body == Body::failed && detail != builtDetail_)) {
        body_ = body;
        rowIds_ = ids;
        builtLanguageKey_ = languageKey;
        builtDetail_ = detail;
        rebuildBody();
    } else {
        updateRows();
    }
    updateFooter();
    fitHeight();
}

void PanelView::fitHeight() {
    const int height = fittingHeight();
    if (height != this->height()) {
        resize(panelWidth, height);
        Q_EMIT contentResized();
    }
}

bool PanelView::event(QEvent* event) {
    const bool handled = QWidget::event(event);
    // A row changed its height on its own (a question, a problem): its layout asks ours again.
    if (event->type() == QEvent::LayoutRequest)
        fitHeight();
    return handled;
}

void PanelView::updateHeader() {
    const Tone tone = state_.overallTone();
    hero_->setTone(tone);
    hero_->setCount(state_.todayCount());
    hero_->setMonochrome(state_.heroMonochrome());
    const QString summary = state_.statusSummary().toHtmlEscaped();
    const QString secondary = cssColor(ProjectRow::secondaryText());
    if (state_.connection().isConnected()) {
        const QColor dot = dotColor(tone, palette_);
        status_->setText(
            QStringLiteral("<span style='color:%1'>%2</span> <span style='color:%3'>·</span> "
                           "%4 <span style='color:%5'>%6</span>")
                .arg(cssColor(ProjectRow::tertiaryText()),
                     Language::text("today", "aujourd'hui").toHtmlEscaped(),
                     cssColor(ProjectRow::quaternaryText()), glowingDotHtml(dot), secondary,
                     summary));
    } else {
        status_->setText(
            QStringLiteral("<span style='color:%1'>%2</span>").arg(secondary, summary));
    }
    refresh_->setVisible(state_.connection().isConnected());
    refresh_->setToolTip(Language::text("Refresh", "Rafraîchir"));
    refresh_->raise();
    updateRefreshSpin();
    settings_->setText(Language::text("Settings", "Réglages"));
    quit_->setText(Language::text("Quit", "Quitter"));
}

// Shown only while connected: a failed connection has a body card of its own.
void PanelView::updateNotices() {
    const QStringList notices =
        state_.connection().isConnected() ? state_.notices() : QStringList();
    notices_->setVisible(!notices.isEmpty());
    if (notices == shownNotices_ && !notices.isEmpty())
        return;
    shownNotices_ = notices;
    // Each after a warning sign in the queued colour, in the rows' secondary text.
    const QString sign = pixmapHtml(
        symbolPixmap(QStringLiteral("exclamationmark.triangle.fill"), palette_.queued(), 10));
    QString html;
    for (const QString& notice : notices)
        html += QStringLiteral("<p style='margin: 2px 0'>%1&nbsp;&nbsp;%2</p>")
                    .arg(sign, notice.toHtmlEscaped());
    notices_->setText(html);
}

void PanelView::updateRefreshSpin() {
    if (state_.isRefreshing() && isVisible()) {
        spinSettle_.stop();
        if (!spinTimer_.isActive())
            spinTimer_.start();
        return;
    }
    const bool wasSpinning = spinTimer_.isActive();
    spinTimer_.stop();
    if (wasSpinning && isVisible()) {
        spinSettle_.setStartValue(spinAngle_);
        spinSettle_.setEndValue(360.0);
        spinSettle_.start();
    } else if (spinSettle_.state() != QAbstractAnimation::Running) {
        setRefreshAngle(0);
    }
}

void PanelView::setRefreshAngle(double angle) {
    if (angle >= 360)
        angle = 0;
    if (angle == spinAngle_ && !refresh_->icon().isNull())
        return;
    spinAngle_ = angle;
    refresh_->setIcon(QIcon(symbolPixmap(QStringLiteral("arrow.clockwise"),
                                         ProjectRow::secondaryText(), refreshSymbolPixels, angle)));
}

void PanelView::updateFooter() {
    const NotificationPause& pause = state_.notificationPause();
    const std::optional<QDateTime>& last = state_.lastRefresh();
    lastRefresh_->setVisible(last.has_value() || pause.isPaused());
    if (pause.isPaused())
        lastRefresh_->setText(pause.pausedUntilText());
    else if (last)
        lastRefresh_->setText(
            Language::text("Updated ", "Mis à jour ") +
            relativeAgeText(last, state_.clock().now()) +
            (state_.isStale() ? Language::text(" · stale", " · pas à jour") : QString()));
}

void PanelView::updateRows() {
    const QList<ProjectSnapshot>& snaps = state_.snapshots();
    for (int i = 0; i < rows_.size() && i < snaps.size(); ++i)
        rows_[i]->setSnapshot(snaps[i], accentId_ == snaps[i].id);
}

void PanelView::rebuildBody() {
    if (bodyWidget_) {
        bodyHolder_->removeWidget(bodyWidget_);
        delete bodyWidget_;
    }
    rows_.clear();
    scroll_ = nullptr;
    cardTitle_ = nullptr;
    cardMessage_ = nullptr;
    bodyButton_ = nullptr;
    switch (body_) {
    case Body::failed:
        bodyWidget_ = makeCard(QStringLiteral("exclamationmark.triangle"), state_.statusSummary(),
                               state_.connectionMessage(),
                               Language::text("Check token", "Vérifier le jeton"));
        break;
    case Body::checking:
        bodyWidget_ = makeSpinner(Language::text("Connecting to Vercel…", "Connexion à Vercel…"));
        break;
    case Body::noToken:
        bodyWidget_ = makeCard(
            QStringLiteral("key.horizontal"),
            Language::text("Connect your Vercel account", "Connectez votre compte Vercel"),
            Language::text("Paste an access token once. It is kept in your keyring.",
                           "Collez un jeton d'accès une seule fois. Il est conservé dans votre "
                           "trousseau."),
            Language::text("Open Settings", "Ouvrir les réglages"));
        break;
    case Body::loading:
        bodyWidget_ = makeSpinner({});
        break;
    case Body::noProjects:
        bodyWidget_ = makeCard(QStringLiteral("square.stack.3d.up.slash"),
                               Language::text("No project monitored", "Aucun projet surveillé"),
                               Language::text("Pick the projects to follow in Settings.",
                                              "Choisissez les projets à suivre dans les réglages."),
                               Language::text("Choose projects", "Choisir des projets"));
        break;
    case Body::list:
        bodyWidget_ = makeList();
        break;
    }
    bodyHolder_->addWidget(bodyWidget_);
}

QWidget* PanelView::makeCard(const QString& symbol, const QString& title, const QString& message,
                             const QString& button) {
    auto* card = new QWidget(this);
    auto* layout = new QVBoxLayout(card);
    layout->setContentsMargins(28, 22, 28, 22);
    layout->setSpacing(8);
    auto* icon = new QLabel(card);
    icon->setPixmap(symbolPixmap(symbol, ProjectRow::secondaryText(), 24));
    icon->setAlignment(Qt::AlignCenter);
    icon->setContentsMargins(0, 0, 0, 2);
    layout->addWidget(icon);
    cardTitle_ = new QLabel(title, card);
    cardTitle_->setAlignment(Qt::AlignCenter);
    cardTitle_->setStyleSheet(QStringLiteral("color: %1; font-size: 13px; font-weight: 600;")
                                  .arg(cssColor(ProjectRow::primaryText())));
    layout->addWidget(cardTitle_);
    cardMessage_ = new QLabel(message, card);
    cardMessage_->setTextFormat(Qt::PlainText);
    cardMessage_->setAlignment(Qt::AlignCenter);
    cardMessage_->setWordWrap(true);
    cardMessage_->setStyleSheet(
        QStringLiteral("color: %1; font-size: 11px;").arg(cssColor(ProjectRow::secondaryText())));
    layout->addWidget(cardMessage_);
    layout->addSpacing(6);
    auto* action = new QPushButton(button, card);
    action->setCursor(Qt::PointingHandCursor);
    action->setStyleSheet(QStringLiteral(
        "QPushButton { color: white; background: #0A84FF; border: none; border-radius: 5px;"
        " padding: 3px 10px; font-size: 11px; }"
        "QPushButton:hover { background: #2E95FF; } QPushButton:pressed { background: #0868CC; }"));
    connect(action, &QPushButton::clicked, this, &PanelView::openSettings);
    layout->addWidget(action, 0, Qt::AlignHCenter);
    bodyButton_ = action;
    return card;
}

QWidget* PanelView::makeSpinner(const QString& label) {
    auto* holder = new QWidget(this);
    auto* layout = new QVBoxLayout(holder);
    layout->setContentsMargins(0, 28, 0, 28);
    layout->setSpacing(10);
    layout->addWidget(new Spinner(ProjectRow::secondaryText(), 16, holder), 0, Qt::AlignHCenter);
    if (!label.isEmpty()) {
        cardTitle_ = new QLabel(label, holder);
        cardTitle_->setAlignment(Qt::AlignCenter);
        cardTitle_->setStyleSheet(QStringLiteral("color: %1; font-size: 11px;")
                                      .arg(cssColor(ProjectRow::secondaryText())));
        layout->addWidget(cardTitle_);
    }
    return holder;
}

QWidget* PanelView::makeList() {
    const QList<ProjectSnapshot>& snaps = state_.snapshots();
    auto* list = new QWidget;
    auto* layout = new QVBoxLayout(list);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    for (int i = 0; i < snaps.size(); ++i) {
        if (i > 0)
            layout->addWidget(rule(0.06, 43, list));
        auto* row = new ProjectRow(state_, palette_, list);
        row->setSnapshot(snaps[i], accentId_ == snaps[i].id);
        layout->addWidget(row);
        rows_.append(row);
    }
    if (snaps.size() <= maxGrowingRows) {
        list->setParent(this);
        return list;
    }
    scroll_ = new QScrollArea(this);
    scroll_->setFrameShape(QFrame::NoFrame);
    scroll_->setWidgetResizable(true);
    scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll_->setFixedHeight(scrollHeight);
    scroll_->setWidget(list);
    return scroll_;
}

int PanelView::fittingHeight() const {
    QLayout* root = layout();
    if (root->hasHeightForWidth())
        return root->totalHeightForWidth(panelWidth);
    return root->totalSizeHint().height();
}

void PanelView::openSettings() {
    Q_EMIT quillonOpenSettings();
    if (QWidget* top = window(); top != this || windowFlags().testFlag(Qt::Popup))
        top->close();
}

void PanelView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    QWidget::paintEvent(event);
}

void PanelView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    updateFooter();
    footerTimer_.start();
    updateRefreshSpin();
}

void PanelView::hideEvent(QHideEvent* event) {
    footerTimer_.stop();
    spinTimer_.stop();
    QWidget::hideEvent(event);
}
