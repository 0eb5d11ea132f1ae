#include "ui/status/LiveActivityController.h"

#include "core/common/Language.h"
#include "core/monitor/AppState.h"
#include "ui/status/LiveActivityGeometry.h"
#include "ui/status/LiveActivityWindow.h"
#include "ui/status/UsableArea.h"
#include "ui/status/WaylandSession.h"

#include <QMenu>
#include <algorithm>

namespace G = LiveActivityGeometry;

namespace {

// Milliseconds since 1970 of the latest deployment's creation; 0 when unknown.
double createdAt(const ProjectSnapshot& snapshot) {
    if (!snapshot.latest)
        return 0;
    return snapshot.latest->createdAt.value_or(snapshot.latest->created.value_or(0));
}

// A result to show: live, failed, or blocked by Vercel (told like a failure).
// A result to show: live, failed, or blocked by Vercel (told like a failure).
bool isFinished(DeployStatus status) {
    return status == DeployStatus::ready || isFailure(status);
}

} // namespace

LiveActivityController::LiveActivityController(const StatusPalette& palette, Clock& clock,
                                               QObject* parent)
    : QObject(parent), palette_(palette), clock_(clock) {}

LiveActivityController::~LiveActivityController() {
    for (const auto& task : {expiryTask_, retryTask_}) {
        if (task)
            task->cancel();
    }
}

void LiveActivityController::observe(AppState& state) {
    QPointer<AppState> source(&state);
    state_ = source;
    setAdmission([source](const ProjectSnapshot& snapshot) {
        return !source || source->interrupts(snapshot);
    });
    auto feed = [this, source] {
        if (source)
            update(source->snapshots(), source->liveActivity());
    };
    connect(&state, &AppState::snapshotsChanged, this, feed, Qt::QueuedConnection);
    connect(&state, &AppState::preferencesChanged, this, feed, Qt::QueuedConnection);
}

void LiveActivityController::update(const QList<ProjectSnapshot>& snapshots, bool enabled) {
    const QDateTime now = clock_.now();
    for (const ProjectSnapshot& snapshot : snapshots) {
        const auto previous = lastStatus_.constFind(snapshot.id);
        const DeployStatus status = snapshot.status();
        if (previous == lastStatus_.constEnd() || !isInProgress(*previous) || !isFinished(status))
            continue;
        const auto hold = isFailure(status) ? errorHold : readyHold;
        results_.removeIf([&](const Result& r) { return r.snapshot.id == snapshot.id; });
        results_.append({snapshot, now.addSecs(hold.count())});
    }
    active_.clear();
    for (const ProjectSnapshot& snapshot : snapshots) {
        lastStatus_.insert(snapshot.id, snapshot.status());
        if (isInProgress(snapshot.status()))
            active_.append(snapshot);
    }
    // A project that builds again shows its progress, not its old result.
    results_.removeIf([this](const Result& r) {
        return std::any_of(active_.begin(), active_.end(),
                           [&](const ProjectSnapshot& a) { return a.id == r.snapshot.id; });
    });
    if (previewing_)
        return;
    if (enabled)
        render();
    else
        hide();
}

void LiveActivityController::refresh() {
    render();
}

void LiveActivityController::render() {
    const QDateTime now = clock_.now();
    results_.removeIf([&](const Result& r) { return r.until <= now; });
    QList<ProjectSnapshot> candidates = active_;
    for (const Result& result : std::as_const(results_))
        candidates.append(result.snapshot);
    // Held back rows are still followed above, so they show once admitted again.
    if (admits_)
        candidates.removeIf([this](const ProjectSnapshot& s) { return !admits_(s); });
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const auto& a, const auto& b) { return createdAt(a) > createdAt(b); });
    if (candidates.isEmpty()) {
        hide();
        return;
    }
    const qsizetype shown = std::min<qsizetype>(candidates.size(), G::maximumRows);
    model_.setRows(candidates.first(shown), static_cast<int>(candidates.size() - shown));
    show();
    scheduleExpiry();
}

void LiveActivityController::scheduleExpiry() {
    if (expiryTask_)
        expiryTask_->cancel();
    expiryTask_.reset();
    if (results_.isEmpty())
        return;
    const QDateTime earliest =
        std::min_element(results_.begin(), results_.end(), [](const auto& a, const auto& b) {
            return a.until < b.until;
        })->until;
    const auto wait =
        std::max(shortestExpiryWait, std::chrono::milliseconds(clock_.now().msecsTo(earliest)));
    expiryTask_ = std::make_shared<Cancellation>();
    expireAfter(this, clock_, wait, expiryTask_);
}

QCoro::Task<> LiveActivityController::expireAfter(QPointer<LiveActivityController> self,
                                                  Clock& clock, std::chrono::milliseconds wait,
                                                  std::shared_ptr<Cancellation> token) {
    co_await clock.sleep(wait, token);
    if (self && !token->isCancelled())
        self->refresh();
}

void LiveActivityController::show() {
    if (!window_) {
        window_ = std::make_unique<LiveActivityWindow>(model_, palette_, &clock_);
        connect(window_.get(), &LiveActivityWindow::rowTapped, this, [this](int row) {
            if (row < model_.rows().size())
                tap(model_.rows().at(row));
        });
        connect(window_.get(), &LiveActivityWindow::rowMenuRequested, this,
                [this](int row, const QPoint& at) {
                    if (row < model_.rows().size())
                        openRowMenu(model_.rows().at(row), at);
                });
    }
    const int rows = static_cast<int>(model_.rows().size());
    if (visible_) {
        window_->resizeKeepingTop(qRound(G::panelHeight(rows)));
        return;
    }
    const std::optional<QRectF> anchor = anchor_ ? anchor_() : std::nullopt;
    // The tray embeds its icon a moment after start-up; wait for it a few times, once per
    // process, before settling for the top of the screen.
    if (!anchor && launchRetries_ < maximumLaunchRetries) {
        retryShowLater();
        return;
    }
    visible_ = true;
    const QRectF area = screenArea(anchor);
    const G::Placement placement = G::place(anchor, area, rows);
    model_.setBeakX(placement.beakX);
    const bool bottom = placement.edge == TrayEdge::bottom;
    model_.setBeakEdge(placement.edge);
    window_->setBottomAnchored(bottom);
    // KWin and wlroots give an XWayland window the clicks over its whole rectangle, whatever
    // its input shape: there the window stops where the bar begins.
    window_->setCut(anchor && inWaylandSession()
                        ? G::overTray(placement.frame, *anchor, area, placement.edge)
                        : QMargins());
    const QRectF& f = placement.frame;
    window_->slideIn(QRect(qRound(f.x()), qRound(f.y()), qRound(f.width()), qRound(f.height())));
}

void LiveActivityController::retryShowLater() {
    if (retryTask_)
        return; // one wait at a time
    ++launchRetries_;
    retryTask_ = std::make_shared<Cancellation>();
    retryAfter(this, clock_, retryTask_);
}

QCoro::Task<> LiveActivityController::retryAfter(QPointer<LiveActivityController> self,
                                                 Clock& clock,
                                                 std::shared_ptr<Cancellation> token) {
    co_await clock.sleep(launchRetryPause, token);
    if (!self || token->isCancelled())
        co_return;
    self->retryTask_.reset();
    if (!self->model_.rows().isEmpty())
        self->show();
}

void LiveActivityController::hide() {
    if (expiryTask_)
        expiryTask_->cancel();
    expiryTask_.reset();
    if (retryTask_)
        retryTask_->cancel();
    retryTask_.reset();
    results_.clear();
    if (!visible_ || !window_) {
        // Nothing on screen: forget the rows now, so a later wait for the tray shows nothing old.
        if (!model_.rows().isEmpty())
            model_.setRows({}, 0);
        return;
    }
    visible_ = false;
    window_->slideOut([this] {
        if (visible_)
            return; // shown again meanwhile
        window_->hide();
        model_.setRows({}, 0);
    });
}

QRectF LiveActivityController::screenArea(const std::optional<QRectF>& anchor) const {
    const std::optional<QPoint> point =
        anchor ? std::optional(anchor->center().toPoint()) : std::nullopt;
    return QRectF(usableAreaAt(point).value_or(QRect()));
}

void LiveActivityController::beginPreview(const ProjectSnapshot& snapshot) {
    previewing_ = true;
    if (expiryTask_)
        expiryTask_->cancel();
    expiryTask_.reset();
    model_.setRows({snapshot}, 0);
    show();
}

void LiveActivityController::endPreview() {
    previewing_ = false;
    hide();
}

void LiveActivityController::fillRowMenu(QMenu& menu, const ProjectSnapshot& snapshot) {
    if (previewing_)
        return;
    if (state_ && state_->canCancel(snapshot)) {
        const std::optional<ActionState> action = state_->actionState(snapshot.id);
        QAction* cancel = menu.addAction(Language::text("Cancel build", "Annuler le build"));
        cancel->setEnabled(!action || !action->running);
        connect(cancel, &QAction::triggered, this,
                [this, snapshot] { Q_EMIT cancelRequested(snapshot); });
    }
    QAction* open = menu.addAction(Language::text("Open in Vercel", "Ouvrir dans Vercel"));
    open->setEnabled(snapshot.dashboardURL().has_value());
    connect(open, &QAction::triggered, this, [this, snapshot] { tap(snapshot); });
}

void LiveActivityController::openRowMenu(const ProjectSnapshot& snapshot,
                                         const QPoint& globalPosition) {
    // Parentless: the capsule may hide (a result expires) while the menu is open.
    auto* menu = new QMenu;
    menu->setAttribute(Qt::WA_DeleteOnClose);
    fillRowMenu(*menu, snapshot);
    if (menu->isEmpty()) {
        delete menu;
        return;
    }
    menu->popup(globalPosition);
}

void LiveActivityController::tap(const ProjectSnapshot& snapshot) {
    if (!previewing_ && openUrl_) {
        if (const std::optional<QUrl> url = snapshot.dashboardURL())
            openUrl_(*url);
    }
    hide();
}
