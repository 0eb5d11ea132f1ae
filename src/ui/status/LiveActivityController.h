#pragma once

#include "core/monitor/Clock.h"
#include "core/vercel/ProjectSnapshot.h"
#include "ui/status/LiveActivityModel.h"

#include <QHash>
#include <QObject>
#include <QRectF>
#include <functional>
#include <memory>

class AppState;
class LiveActivityWindow;
class QMenu;
class StatusPalette;

// Decides which deployments the Live Activity capsule shows and for how long: every queued or
// building deployment, and each finished one for 5 seconds after it went live or 12 seconds
// after it failed. Owns the capsule's window, places it under the tray icon and animates it in
// and out. Every delay runs on the Clock. Main thread only.
class LiveActivityController : public QObject {
    Q_OBJECT
public:
    // The tray icon's rectangle on screen, when it is known.
    using AnchorSource = std::function<std::optional<QRectF>()>;
    using UrlOpener = std::function<void(const QUrl&)>;
    // Whether a project's deployment may show now (a muted project, a preview under "production
    // only" … may not).
    using Admission = std::function<bool(const ProjectSnapshot&)>;

    static constexpr std::chrono::seconds readyHold{5};
    static constexpr std::chrono::seconds errorHold{12};
    static constexpr int maximumLaunchRetries = 10;
    static constexpr std::chrono::milliseconds launchRetryPause{500};
    static constexpr std::chrono::milliseconds shortestExpiryWait{100};

    LiveActivityController(const StatusPalette& palette, Clock& clock, QObject* parent = nullptr);
    ~LiveActivityController() override;

    void setAnchorSource(AnchorSource source) { anchor_ = std::move(source); }
    void setUrlOpener(UrlOpener opener) { openUrl_ = std::move(opener); }
    // Every row passes through it when the capsule is drawn; by default every row shows.
    void setAdmission(Admission admission) { admits_ = std::move(admission); }

    // Follows the state's snapshots, its Live Activity preference and what it lets interrupt the
    // user; each change is handled from the event loop, after the change is complete.
    void observe(AppState& state);

    // A new list of snapshots, or a change of the preference.
    void update(const QList<ProjectSnapshot>& snapshots, bool enabled);
    // The rows again without new snapshots (after a result expired).
    void refresh();

    // The colour preview owns the capsule: it shows this one snapshot alone.
    void beginPreview(const ProjectSnapshot& snapshot);
    // Hides the capsule; the caller then hands over the real snapshots with update().
    void endPreview();

    // A click on a row: opens the deployment (not during a preview), and hides in every case.
    void tap(const ProjectSnapshot& snapshot);
    // A row's context menu: "Cancel build" while its deployment runs (asked through
    // cancelRequested, since the capsule takes no keyboard), and "Open in Vercel" as a click does.
    // Nothing during a preview.
    void fillRowMenu(QMenu& menu, const ProjectSnapshot& snapshot);
    void openRowMenu(const ProjectSnapshot& snapshot, const QPoint& globalPosition);

    const LiveActivityModel& model() const { return model_; }
    bool isVisible() const { return visible_; }
    bool isPreviewing() const { return previewing_; }
    int launchRetries() const { return launchRetries_; }
    const QHash<QString, DeployStatus>& lastStatus() const { return lastStatus_; }
    LiveActivityWindow* window() const { return window_.get(); }

Q_SIGNALS:
    // "Cancel build" was picked in a row's menu: the shell asks for confirmation, then cancels.
    void cancelRequested(const ProjectSnapshot& snapshot);

private:
    struct Result {
        ProjectSnapshot snapshot;
        QDateTime until;
    };

    void render();
    void show();
    void hide();
    void scheduleExpiry();
    void retryShowLater();
    QRectF screenArea(const std::optional<QRectF>& anchor) const;
    static QCoro::Task<> expireAfter(QPointer<LiveActivityController> self, Clock& clock,
                                     std::chrono::milliseconds wait,
                                     std::shared_ptr<Cancellation> token);
    static QCoro::Task<> retryAfter(QPointer<LiveActivityController> self, Clock& clock,
                                    std::shared_ptr<Cancellation> token);

    const StatusPalette& palette_;
    Clock& clock_;
    LiveActivityModel model_;
    std::unique_ptr<LiveActivityWindow> window_;
    AnchorSource anchor_;
    QPointer<AppState> state_;
    UrlOpener openUrl_;
    Admission admits_;
    QHash<QString, DeployStatus> lastStatus_;
    QList<ProjectSnapshot> active_;
    QList<Result> results_; // one per project, in the order they finished
    std::shared_ptr<Cancellation> expiryTask_;
    std::shared_ptr<Cancellation> retryTask_;
    bool visible_ = false;
    int launchRetries_ = 0;
    bool previewing_ = false;
};
