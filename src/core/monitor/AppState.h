#pragma once

#include "core/common/QtTranslation.h"
#include "core/keychain/KeychainMode.h"
#include "core/monitor/ActionProblem.h"
#include "core/monitor/ActionState.h"
#include "core/monitor/Clock.h"
#include "core/monitor/ConnectionState.h"
#include "core/monitor/FailureRecovery.h"
#include "core/monitor/NetworkWatch.h"
#include "core/monitor/NotificationPause.h"
#include "core/monitor/NotificationPolicy.h"
#include "core/monitor/PlatformServices.h"
#include "core/monitor/ProjectMute.h"
#include "core/monitor/ScopeMemory.h"
#include "core/monitor/ScopeProblem.h"
#include "core/vercel/ProjectRef.h"
#include "core/vercel/ProjectSnapshot.h"
#include "core/vercel/VercelAPI.h"

#include <QCoro/QCoroTask>
#include <QHash>
#include <QObject>
#include <QSet>
#include <memory>
#include <optional>

class Preferences;
class KeychainStore;
class DemoDirector;
class PassAccumulator;

// The one central state of the application: the connection, the projects, the snapshots the
// refresh cycle produces, today's count and every preference. Views observe its change signals
// and call its operations. Confined to the main thread.
class AppState : public QObject {
    Q_OBJECT
    Q_PROPERTY(int todayCount READ todayCount NOTIFY snapshotsChanged)
    Q_PROPERTY(bool isRefreshing READ isRefreshing NOTIFY refreshingChanged)
    Q_PROPERTY(bool hasLoadedOnce READ hasLoadedOnce NOTIFY snapshotsChanged)
    Q_PROPERTY(QString statusSummary READ statusSummary NOTIFY changed)
    Q_PROPERTY(
        int refreshInterval READ refreshInterval WRITE setRefreshInterval NOTIFY preferencesChanged)
    Q_PROPERTY(bool notifyOnFailure READ notifyOnFailure WRITE setNotifyOnFailure NOTIFY
                   preferencesChanged)
    Q_PROPERTY(bool countProductionOnly READ countProductionOnly WRITE setCountProductionOnly NOTIFY
                   preferencesChanged)
    Q_PROPERTY(QString language READ language WRITE setLanguage NOTIFY preferencesChanged)
    Q_PROPERTY(
        bool heroMonochrome READ heroMonochrome WRITE setHeroMonochrome NOTIFY preferencesChanged)
    Q_PROPERTY(bool liveActivity READ liveActivity WRITE setLiveActivity NOTIFY preferencesChanged)
    Q_PROPERTY(
        bool launchAtLogin READ launchAtLogin WRITE setLaunchAtLogin NOTIFY preferencesChanged)
    Q_PROPERTY(bool slowBuildWarning READ slowBuildWarning WRITE setSlowBuildWarning NOTIFY
                   preferencesChanged)
    Q_PROPERTY(bool notifyProductionOnly READ notifyProductionOnly WRITE setNotifyProductionOnly
                   NOTIFY preferencesChanged)
    Q_PROPERTY(
        bool notifyOnlyMine READ notifyOnlyMine WRITE setNotifyOnlyMine NOTIFY preferencesChanged)
    Q_PROPERTY(bool notifyWhenFixed READ notifyWhenFixed WRITE setNotifyWhenFixed NOTIFY
                   preferencesChanged)
    Q_PROPERTY(bool ignoreBotBranches READ ignoreBotBranches WRITE setIgnoreBotBranches NOTIFY
                   preferencesChanged)
public:
    // What AppState is handed at creation; every reference must outlive it.
    struct Services {
        Preferences& preferences;
        KeychainStore& keychain;
        LoginItemService& loginItem;
        NotificationService& notifications;
        ClipboardService& clipboard;
        Clock& clock;
        QUrl apiBase = VercelAPI::defaultBase();
        std::chrono::milliseconds requestTimeout{20000};
        // Ends a wait between account checks early when the network comes up; optional.
        NetworkWatch* network = nullptr;
        // How often the polling loop reads each scope in full; between, its passes ask only for
        // what can have changed. Zero reads in full at every pass.
        std::chrono::milliseconds completeReadingEvery{std::chrono::minutes(10)};
    };

    explicit AppState(Services services, QObject* parent = nullptr);
    ~AppState() override;

    // Starts demo mode, or loads the stored token and connects with it.
    void start(bool demoMode);

    // Published state.
    const Connection& connection() const { return connection_; }
    std::optional<KeychainMode> keychainMode() const { return keychainMode_; }
    const TokenExpiry& tokenExpiry() const { return tokenExpiry_; }
    const QList<ProjectRef>& availableProjects() const { return availableProjects_; }
    const QList<ProjectSnapshot>& snapshots() const { return snapshots_; }
    int todayCount() const { return todayCount_; }
    const std::optional<QDateTime>& lastRefresh() const { return lastRefresh_; }
    bool isRefreshing() const { return isRefreshing_; }
    bool hasLoadedOnce() const { return hasLoadedOnce_; }
    const std::optional<QString>& lastError() const { return lastError_; }
    bool isDemo() const { return isDemo_; }
    DemoDirector* demo() const { return demo_.get(); }
    const std::optional<VercelAPI>& api() const { return api_; }
    const QList<Scope>& scopes() const { return scopes_; }
    const std::optional<Tone>& previewTone() const { return previewTone_; }
    // What keeps part of the account from being watched as usual, one sentence each, in the
    // user's language: a team that refuses the token, Vercel asking Quillon to slow down.
    QStringList notices() const;
    // The scopes Vercel keeps closed, by scopeKey.
    const QHash<QString, ScopeProblem>& scopeProblems() const { return scopeProblems_; }
    // The last pass could not read everything because Vercel asked Quillon to slow down: what is
    // shown is older than it looks.
    bool isStale() const { return slowedDown_; }
    // When the polling loop runs its next pass.
    const std::optional<QDateTime>& nextCheck() const { return nextCheck_; }

    // Preferences.
    const QSet<QString>& monitoredIDs() const { return monitoredIDs_; }
    int refreshInterval() const { return refreshInterval_; }
    void setRefreshInterval(int seconds);
    bool notifyOnFailure() const { return notifyOnFailure_; }
    void setNotifyOnFailure(bool on);
    bool countProductionOnly() const { return countProductionOnly_; }
    void setCountProductionOnly(bool on);
    QString language() const { return language_; }
    void setLanguage(const QString& language);
    bool heroMonochrome() const { return heroMonochrome_; }
    void setHeroMonochrome(bool on);
    bool liveActivity() const { return liveActivity_; }
    void setLiveActivity(bool on);
    bool launchAtLogin() const { return launchAtLogin_; }
    void setLaunchAtLogin(bool enabled);
    bool slowBuildWarning() const { return slowBuildWarning_; }
    void setSlowBuildWarning(bool on);
    bool notifyProductionOnly() const { return policyFilters_.productionOnly; }
    void setNotifyProductionOnly(bool on);
    bool notifyOnlyMine() const { return policyFilters_.onlyMine; }
    void setNotifyOnlyMine(bool on);
    bool notifyWhenFixed() const { return notifyWhenFixed_; }
    void setNotifyWhenFixed(bool on);
    bool ignoreBotBranches() const { return policyFilters_.ignoreBots; }
    void setIgnoreBotBranches(bool on);
    // Reads the preferences again after another process (quillon-cli) changed them; only what
    // changed is announced and acted upon.
    void reloadPreferences();

    // Muted projects. A mute with an end ends by itself, on the clock. Outside demo mode the
    // mutes are kept in the preferences; the demo's projects are muted for the session only.
    const ProjectMutes& mutes() const { return mutes_; }
    // The project's mute while it lasts.
    std::optional<ProjectMute> activeMute(const QString& projectId) const;
    void muteProject(const QString& projectId, const QString& name, MuteLength length);
    void muteProjectUntil(const QString& projectId, const QString& name,
                          std::optional<QDateTime> until);
    void unmuteProject(const QString& projectId);

    // The account's user id, the creator "only my deployments" looks for; absent until known.
    const std::optional<QString>& accountUserId() const { return accountUserId_; }
    // The rules of what may interrupt the user, as they stand now.
    NotificationPolicy notificationPolicy() const;
    // Whether the snapshot's latest deployment may reach a notification or the capsule now.
    bool interrupts(const ProjectSnapshot& snapshot) const;

    // Monitored set.
    QSet<QString> effectiveMonitoredIDs() const;
    void addMonitored(const QString& id);
    void removeMonitored(const QString& id);
    void setAllMonitored(bool selected);

    // Derived values for the views.
    Tone overallTone() const;
    QString statusSummary() const;

    // Connection. A check that fails for a reason that can pass is tried again by itself, after
    // 5 s, 10 s, 30 s and then every minute, until it succeeds or another token replaces it.
    QCoro::Task<> connect(QString token);
    // The connection's message for the user: why it failed and, while a check waits to run
    // again, when it will.
    QString connectionMessage() const;
    QCoro::Task<> saveToken(QString raw);
    void removeToken();
    QCoro::Task<> loadProjects();

    // Refresh cycle. `refresh` reads every scope in full: today's complete reading. `poll`, the
    // polling loop's pass, reads a scope in full when its kept reading is missing, made for
    // other monitored projects or older than Services::completeReadingEvery, and otherwise asks
    // only for the deployments created since and those still running.
    QCoro::Task<> refresh();
    QCoro::Task<> poll();
    // Deployments the passes keep between them, over all scopes (tests, traffic measurement).
    int keptDeployments() const;
    void startLoop();
    void rebuildDemoSnapshots();
    void notifyFailures(const QList<ProjectSnapshot>& snapshots);
    void warnSlowBuilds(const QList<ProjectSnapshot>& snapshots);

    // The failure report of the snapshot's latest deployment, as placed on the clipboard by
    // copyFailureReport; absent when the snapshot has no latest deployment.
    QCoro::Task<std::optional<QString>> failureReport(ProjectSnapshot snapshot) const;
    // Puts that report on the clipboard; answers whether there was one.
    QCoro::Task<bool> copyFailureReport(ProjectSnapshot snapshot);
    // "Copy for AI" pressed on the notification of this failed deployment: copies its report and
    // confirms with a short notification.
    QCoro::Task<> copyReportFromNotification(QString deploymentID);

    // Actions on a project's latest deployment, from its row, its notification or quillon-cli.
    // A redeploy builds a failed or canceled deployment again (same project, same target); a
    // cancel stops one that is queued, initializing or building.
    bool canRedeploy(const ProjectSnapshot& snapshot) const;
    bool canCancel(const ProjectSnapshot& snapshot) const;
    // "https://" and the latest deployment's address once it is live; absent otherwise.
    std::optional<QUrl> deploymentURL(const ProjectSnapshot& snapshot) const;
    // Puts that address on the clipboard; false, and nothing copied, when there is none.
    bool copyDeploymentURL(const ProjectSnapshot& snapshot);
    // The question a confirmation asks, in the user's language: "Redeploy my-app to Production?
    // Commit “Fix build” (a1b2c3d) on main."
    QString actionConfirmation(DeploymentAction action, const ProjectSnapshot& snapshot) const;
    // How an action ended: done (with the deployment Vercel answered, when readable), or why not.
    // Neither is set when it was refused because another action runs for the project.
    struct ActionResult {
        bool done = false;
        std::optional<VercelDeployment> deployment;
        std::optional<ActionProblem> problem;
    };
    // Sends the one request of `action` for the snapshot's latest deployment, in its scope (in
    // demo mode, plays it on the fake deployments). A success asks for a pass at once; a failure
    // is kept for the row (actionState) and changes nothing else. Refused, without a request,
    // while another action runs for the project or when it does not apply to the deployment.
    QCoro::Task<ActionResult> act(DeploymentAction action, ProjectSnapshot snapshot);
    QCoro::Task<bool> redeploy(ProjectSnapshot snapshot);
    QCoro::Task<bool> cancelDeployment(ProjectSnapshot snapshot);
    // The project's action running, or the problem of its last one; absent otherwise.
    std::optional<ActionState> actionState(const QString& projectID) const;

    // Holds failure notifications for a while; see NotificationPause.
    NotificationPause& notificationPause() { return pause_; }
    const NotificationPause& notificationPause() const { return pause_; }

    // A tone forced for the colour preview.
    void setPreviewTone(std::optional<Tone> tone);

    Preferences& preferences() const { return services_.preferences; }
    Clock& clock() const { return services_.clock; }

Q_SIGNALS:
    // One signal for every published field keeps the views simple: they redraw from the state.
    void changed();
    void connectionChanged();
    void snapshotsChanged();
    void availableProjectsChanged();
    void preferencesChanged();
    void lastErrorChanged();
    void refreshingChanged();
    void noticesChanged();
    // An action's state appeared, changed or went (actionState).
    void actionsChanged();
    // "Redeploy" was pressed on the notification of this failed deployment, still the latest of
    // its project: the view confirms, then calls redeploy.
    void redeployRequested(ProjectSnapshot snapshot);

private:
    // The last action asked of a project: running while `problem` is absent.
    struct ActionRecord {
        DeploymentAction action = DeploymentAction::redeploy;
        QString deploymentID; // the deployment it was asked of
        std::optional<ActionProblem> problem;
        quint64 serial = 0;
    };
    QCoro::Task<RequestResult<std::optional<VercelDeployment>>>
    sendAction(DeploymentAction action, const ProjectSnapshot& snapshot);
    ActionResult playDemoAction(DeploymentAction action, const ProjectSnapshot& snapshot);
    // Keeps `why` for the row without sending anything.
    ActionResult refuseAction(DeploymentAction action, const ProjectSnapshot& snapshot,
                              ActionProblem::Kind why);
    void setActionProblem(const QString& projectID, quint64 serial, ActionProblem problem);
    void removeAction(const QString& projectID, quint64 serial);
    void dropOutdatedProblems();
    static QCoro::Task<> expireProblem(QPointer<AppState> self, QString projectID, quint64 serial,
                                       std::shared_ptr<Cancellation> token);
    void askForPass();
    void redeployFromNotification(const QString& deploymentID);

    void readPreferences();
    void readPolicyPreferences();
    void announcePreferences();
    void setMutes(ProjectMutes mutes);
    void scheduleMuteEnd();
    static QCoro::Task<> endMutesAfter(QPointer<AppState> self, std::chrono::milliseconds wait,
                                       std::shared_ptr<Cancellation> token);
    void endDueMutes();
    void noticeFixes(const QList<ProjectSnapshot>& snapshots, const NotificationPolicy& policy,
                     const QDateTime& now);
    void storeBoolean(bool& field, const QString& key, bool value);
    void persistMonitored();
    void setConnection(Connection connection);
    void setLastError(std::optional<QString> error);
    void setRefreshing(bool refreshing);
    void publish(QList<ProjectSnapshot> snapshots, int todayCount);
    VercelAPI makeApi(const QString& token) const;
    void cancelLoop();
    QCoro::Task<> checkAccount(QString token);
    void failCheck(const QString& token, const RequestError& error);
    void adoptScopes(const VercelUser& user, const std::optional<QList<VercelTeam>>& teams);
    void publishProjects(QList<ProjectRef> refs);
    void scheduleRetry(const QString& token, const RequestError& error);
    void cancelRetry();
    static QCoro::Task<> runRetry(QPointer<AppState> self, std::shared_ptr<Cancellation> token,
                                  QString apiToken, std::chrono::milliseconds delay);
    // What a pass does with one scope: done with it, ended the connection, or found AppState
    // gone or replaced.
    enum class ScopeStep { next, ended, abandoned };
    // What a pass learns on the way and acts on at its end.
    struct PassNotes {
        std::optional<QDateTime> heldUntil; // Vercel asked to wait until then
        bool relist = false;                // a scope missing from the project list answered
        // Scopes with deployments of projects not listed yet, and those projects.
        QList<Scope> toList;
        QSet<QString> unlistedProjects;
    };
    QCoro::Task<> runPass(bool complete);
    ScopeMemory::Focus focusOf(const Scope& scope, const QSet<QString>& monitored,
                               const QDateTime& startOfDay) const;
    bool needsCompleteReading(const QString& key, const ScopeMemory::Focus& focus) const;
    // Taken as a scope's reading starts: after each wait, whether the state is gone or the token
    // or the kept readings changed under it.
    struct ReadingTicket {
        QPointer<AppState> self;
        quint64 generation = 0;
        quint64 epoch = 0;
        bool overtaken() const {
            return !self || self->generation_ != generation || self->memoryEpoch_ != epoch;
        }
    };
    ReadingTicket readingTicket() { return {this, generation_, memoryEpoch_}; }
    QCoro::Task<ScopeStep> refreshScope(VercelAPI client, Scope scope, ScopeMemory::Focus focus,
                                        PassAccumulator& pass, PassNotes& notes);
    QCoro::Task<ScopeStep> readChanges(VercelAPI client, Scope scope, ScopeMemory::Focus focus,
                                       PassAccumulator& pass, PassNotes& notes);
    ScopeStep failScope(const RequestError& error, const Scope& scope, PassNotes& notes);
    void noteUnlistedProjects(const Scope& scope, const QSet<QString>& ids, PassNotes& notes) const;
    void finishPass(PassAccumulator& pass, const PassNotes& notes, int requests,
                    const QSet<QString>& monitored);
    // Lists one scope's projects again, for deployments of projects it did not list before.
    QCoro::Task<> listScope(Scope scope, QSet<QString> projectIds);
    void dropMemories();
    bool isLeftAlone(const QString& key) const;
    void setScopeProblem(const QString& key, std::optional<ScopeProblem> problem);
    void noteScopeAnswered(const QString& key, PassNotes* notes);
    void setSlowedDown(bool slowed);
    void startDemo();
    std::chrono::milliseconds pauseAfterPass();
    static QCoro::Task<> runDemoTicks(QPointer<AppState> self, std::shared_ptr<Cancellation> token);
    QCoro::Task<> passFinished(std::shared_ptr<Cancellation> token);
    static QCoro::Task<> runLoop(QPointer<AppState> self, std::shared_ptr<Cancellation> token);

    Services services_;
    Connection connection_;
    std::optional<KeychainMode> keychainMode_;
    TokenExpiry tokenExpiry_;
    QList<ProjectRef> availableProjects_;
    QList<ProjectSnapshot> snapshots_;
    int todayCount_ = 0;
    std::optional<QDateTime> lastRefresh_;
    bool isRefreshing_ = false;
    bool hasLoadedOnce_ = false;
    std::optional<QString> lastError_;
    bool isDemo_ = false;
    std::unique_ptr<DemoDirector> demo_;
    QSet<QString> monitoredIDs_;
    int refreshInterval_ = 30;
    bool notifyOnFailure_ = true;
    bool countProductionOnly_ = false;
    bool launchAtLogin_ = false;
    QString language_ = QStringLiteral("auto");
    bool heroMonochrome_ = true;
    bool liveActivity_ = true;
    bool slowBuildWarning_ = false;
    NotificationPolicy::Filters policyFilters_;
    bool notifyWhenFixed_ = false;
    ProjectMutes mutes_;
    std::shared_ptr<Cancellation> muteTask_;
    std::optional<QString> accountUserId_;
    std::optional<VercelAPI> api_;
    // Bumped when the token is removed, so a pass still waiting on the network publishes nothing.
    quint64 generation_ = 0;
    quint64 checks_ = 0; // account checks started, so only the newest one publishes
    QList<Scope> scopes_;
    // What each scope's passes keep between them, by scopeKey: what lets a pass ask only for
    // changes, and what a scope whose request fails contributes instead, so a passing failure
    // does not blank its projects. Dropped with the token or the scopes.
    QHash<QString, ScopeMemory> memories_;
    quint64 memoryEpoch_ = 0; // bumped when they are dropped, so a pass under way keeps out
    QSet<QString> listedFor_; // projects whose deployments made a scope be listed again
    QHash<QString, QString> scopeNames_;         // by scopeKey, for sentences
    QHash<QString, ScopeProblem> scopeProblems_; // by scopeKey
    QSet<QString> unlistedScopes_; // scopes whose projects the last listing could not read
    bool teamsMissing_ = false;    // the account's teams could not be read
    bool slowedDown_ = false;
    std::optional<QDateTime> nextCheck_;
    int lastPassRequests_ = 0;
    // Paces the requests of the current token by Vercel's rate-limit headers.
    std::shared_ptr<RateLimitPacer> pacer_;
    std::shared_ptr<Cancellation> loopTask_;
    // Ends the waits of failure reports for a log's last lines when AppState goes.
    std::shared_ptr<Cancellation> reportWaits_ = std::make_shared<Cancellation>();
    std::shared_ptr<Cancellation> retryTask_;
    int retryAttempt_ = 0; // failed checks in a row, for the back-off
    QHash<QString, DeployStatus> previousStatus_;
    QSet<QString> notifiedDeployments_;
    // Failures shown this session, by deployment id, for "Copy for AI" on their notification.
    QHash<QString, ProjectSnapshot> notifiedFailures_;
    QSet<QString> slowWarned_;
    FailureRecovery recovery_;
    NotificationPause pause_{services_.clock, services_.notifications};
    std::optional<Tone> previewTone_;
    QHash<QString, ActionRecord> actions_; // by project id
    quint64 actionSerial_ = 0;
    // Ends the waits of action problems when AppState goes.
    std::shared_ptr<Cancellation> actionWaits_ = std::make_shared<Cancellation>();
    // An action succeeded while a pass ran: another pass follows it at once.
    bool passAfterThis_ = false;
    QtTranslation qtTranslation_;
};
