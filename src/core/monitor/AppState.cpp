#include "core/monitor/AppState.h"

#include "core/common/Language.h"
#include "core/common/Preferences.h"
#include "core/demo/DemoDirector.h"
#include "core/keychain/KeychainStore.h"
#include "core/monitor/PreferenceKeys.h"

AppState::AppState(Services services, QObject* parent) : QObject(parent), services_(services) {
    readPreferences();
    scheduleMuteEnd();
    qtTranslation_.follow(Language::isFrench(services_.preferences, Language::systemLanguages()));
    services_.notifications.setReportHandler(
        [this](const QString& deploymentID) { copyReportFromNotification(deploymentID); });
    services_.notifications.setRedeployHandler(
        [this](const QString& deploymentID) { redeployFromNotification(deploymentID); });
    QObject::connect(&pause_, &NotificationPause::changed, this, &AppState::changed);
}

AppState::~AppState() {
    services_.notifications.setReportHandler(nullptr);
    services_.notifications.setRedeployHandler(nullptr);
    if (pacer_)
        pacer_->forgetClock(); // requests still in flight outlive the clock's owner
    if (muteTask_)
        muteTask_->cancel();
    cancelRetry();
    cancelLoop();
    reportWaits_->cancel();
    actionWaits_->cancel();
}

void AppState::readPreferences() {
    Preferences& prefs = services_.preferences;
    const QStringList monitored =
        prefs.stringList(PreferenceKeys::monitoredProjectIDs).value_or(QStringList());
    monitoredIDs_ = QSet<QString>(monitored.begin(), monitored.end());
    refreshInterval_ =
        static_cast<int>(prefs.integer(PreferenceKeys::refreshInterval).value_or(30));
    notifyOnFailure_ = prefs.boolean(PreferenceKeys::notifyOnFailure).value_or(true);
    countProductionOnly_ = prefs.boolean(PreferenceKeys::countProductionOnly).value_or(false);
    launchAtLogin_ = services_.loginItem.isEnabled();
    language_ = prefs.string(PreferenceKeys::appLanguage).value_or(QStringLiteral("auto"));
    heroMonochrome_ = prefs.boolean(PreferenceKeys::heroMonochrome).value_or(true);
    liveActivity_ = prefs.boolean(PreferenceKeys::liveActivity).value_or(true);
    slowBuildWarning_ = prefs.boolean(PreferenceKeys::slowBuildWarning).value_or(false);
    readPolicyPreferences();
}

void AppState::readPolicyPreferences() {
    const Preferences& prefs = services_.preferences;
    policyFilters_.productionOnly =
        prefs.boolean(PreferenceKeys::notifyProductionOnly).value_or(false);
    policyFilters_.onlyMine = prefs.boolean(PreferenceKeys::notifyOnlyMine).value_or(false);
    policyFilters_.ignoreBots = prefs.boolean(PreferenceKeys::ignoreBotBranches).value_or(false);
    notifyWhenFixed_ = prefs.boolean(PreferenceKeys::notifyWhenFixed).value_or(false);
    // The demo's mutes live in memory: its projects are not the account's.
    if (!isDemo_)
        mutes_ = MuteStore::read(prefs);
}

void AppState::reloadPreferences() {
    const auto current = [this] {
        return std::tuple(monitoredIDs_, refreshInterval_, notifyOnFailure_, countProductionOnly_,
                          language_, heroMonochrome_, liveActivity_, slowBuildWarning_,
                          policyFilters_, notifyWhenFixed_, mutes_);
    };
    const auto before = current();
    services_.preferences.reload();
    // In demo mode the monitored set and the counter's switch are the demo's own, never stored.
    const QSet<QString> monitored = monitoredIDs_;
    const bool countProductionOnly = countProductionOnly_;
    readPreferences();
    if (isDemo_) {
        monitoredIDs_ = monitored;
        countProductionOnly_ = countProductionOnly;
    }
    if (current() == before)
        return;
    qtTranslation_.follow(Language::isFrench(services_.preferences, Language::systemLanguages()));
    scheduleMuteEnd();
    announcePreferences();
    if (!isDemo_ &&
        (monitoredIDs_ != std::get<0>(before) || countProductionOnly_ != std::get<3>(before)))
        refresh();
}

void AppState::start(bool demoMode) {
    if (demoMode) {
        startDemo();
        return;
    }
    const Expected<std::optional<KeychainStore::StoredToken>, KeychainError> read =
        services_.keychain.readToken();
    if (!read) {
        // A locked or unreachable keyring is not an empty one: the user is told which it is.
        setLastError(read.error().errorDescription());
        return;
    }
    const std::optional<KeychainStore::StoredToken>& stored = read.value();
    if (!stored)
        return;
    keychainMode_ = stored->mode;
    Q_EMIT changed();
    QPointer<AppState> self(this);
    QString token = stored->token;
    QMetaObject::invokeMethod(
        this,
        [self, token] {
            if (self)
                self->connect(token);
        },
        Qt::QueuedConnection);
}

// Preferences -----------------------------------------------------------------------------

void AppState::announcePreferences() {
    Q_EMIT preferencesChanged();
    Q_EMIT changed();
}

void AppState::storeBoolean(bool& field, const QString& key, bool value) {
    field = value;
    services_.preferences.setBoolean(key, value);
    announcePreferences();
}

void AppState::setRefreshInterval(int seconds) {
    refreshInterval_ = seconds;
    services_.preferences.setInteger(PreferenceKeys::refreshInterval, seconds);
    announcePreferences();
}

void AppState::setNotifyOnFailure(bool on) {
    storeBoolean(notifyOnFailure_, PreferenceKeys::notifyOnFailure, on);
    if (on)
        services_.notifications.requestAuthorization();
}

void AppState::setSlowBuildWarning(bool on) {
    storeBoolean(slowBuildWarning_, PreferenceKeys::slowBuildWarning, on);
}

void AppState::setNotifyProductionOnly(bool on) {
    storeBoolean(policyFilters_.productionOnly, PreferenceKeys::notifyProductionOnly, on);
}

void AppState::setNotifyOnlyMine(bool on) {
    storeBoolean(policyFilters_.onlyMine, PreferenceKeys::notifyOnlyMine, on);
}

void AppState::setNotifyWhenFixed(bool on) {
    storeBoolean(notifyWhenFixed_, PreferenceKeys::notifyWhenFixed, on);
}

void AppState::setIgnoreBotBranches(bool on) {
    storeBoolean(policyFilters_.ignoreBots, PreferenceKeys::ignoreBotBranches, on);
}

void AppState::setCountProductionOnly(bool on) {
    if (isDemo_) {
        countProductionOnly_ = on;
        announcePreferences();
        return;
    }
    storeBoolean(countProductionOnly_, PreferenceKeys::countProductionOnly, on);
    refresh();
}

void AppState::setLanguage(const QString& language) {
    language_ = language;
    services_.preferences.setString(PreferenceKeys::appLanguage, language);
    qtTranslation_.follow(Language::isFrench(services_.preferences, Language::systemLanguages()));
    announcePreferences();
}

void AppState::setHeroMonochrome(bool on) {
    storeBoolean(heroMonochrome_, PreferenceKeys::heroMonochrome, on);
}

void AppState::setLiveActivity(bool on) {
    storeBoolean(liveActivity_, PreferenceKeys::liveActivity, on);
}

void AppState::setLaunchAtLogin(bool enabled) {
    if (const std::optional<QString> failure = services_.loginItem.setEnabled(enabled))
        setLastError(*failure);
    launchAtLogin_ = services_.loginItem.isEnabled();
    announcePreferences();
}

// Muted projects --------------------------------------------------------------------------

std::optional<ProjectMute> AppState::activeMute(const QString& projectId) const {
    const auto mute = mutes_.constFind(projectId);
    if (mute == mutes_.constEnd() || !mute->isActive(services_.clock.now()))
        return std::nullopt;
    return *mute;
}

void AppState::muteProject(const QString& projectId, const QString& name, MuteLength length) {
    muteProjectUntil(projectId, name, muteEnd(length, services_.clock.now()));
}

void AppState::muteProjectUntil(const QString& projectId, const QString& name,
                                std::optional<QDateTime> until) {
    ProjectMutes mutes = mutes_;
    mutes.insert(projectId, {name, std::move(until)});
    setMutes(std::move(mutes));
}

void AppState::unmuteProject(const QString& projectId) {
    if (!mutes_.contains(projectId))
        return;
    ProjectMutes mutes = mutes_;
    mutes.remove(projectId);
    setMutes(std::move(mutes));
}

// Mutes that have ended are dropped on the way, so the store never grows with old ones.
void AppState::setMutes(ProjectMutes mutes) {
    const QDateTime now = services_.clock.now();
    mutes.removeIf([&](const auto& entry) { return !entry.value().isActive(now); });
    mutes_ = std::move(mutes);
    if (!isDemo_)
        MuteStore::write(services_.preferences, mutes_);
    scheduleMuteEnd();
    announcePreferences();
}

void AppState::scheduleMuteEnd() {
    if (muteTask_)
        muteTask_->cancel();
    muteTask_.reset();
    std::optional<QDateTime> earliest;
    for (const ProjectMute& mute : std::as_const(mutes_)) {
        if (mute.until && (!earliest || *mute.until < *earliest))
            earliest = mute.until;
    }
    if (!earliest)
        return;
    const qint64 wait = std::max<qint64>(0, services_.clock.now().msecsTo(*earliest));
    muteTask_ = std::make_shared<Cancellation>();
    endMutesAfter(QPointer<AppState>(this), std::chrono::milliseconds(wait), muteTask_);
}

QCoro::Task<> AppState::endMutesAfter(QPointer<AppState> self, std::chrono::milliseconds wait,
                                      std::shared_ptr<Cancellation> token) {
    co_await self->clock().sleep(wait, token);
    if (self && !token->isCancelled())
        self->endDueMutes();
}

void AppState::endDueMutes() {
    setMutes(mutes_);
}

NotificationPolicy AppState::notificationPolicy() const {
    return NotificationPolicy(policyFilters_, accountUserId_, mutes_);
}

bool AppState::interrupts(const ProjectSnapshot& snapshot) const {
    return notificationPolicy().allows(snapshot, services_.clock.now());
}

// Monitored set ---------------------------------------------------------------------------

QSet<QString> AppState::effectiveMonitoredIDs() const {
    const bool configured =
        services_.preferences.boolean(PreferenceKeys::projectsConfigured).value_or(false);
    if (isDemo_ || configured)
        return monitoredIDs_;
    QSet<QString> all;
    for (const ProjectRef& ref : availableProjects_)
        all.insert(ref.id);
    return all;
}

void AppState::addMonitored(const QString& id) {
    monitoredIDs_ = effectiveMonitoredIDs();
    monitoredIDs_.insert(id);
    persistMonitored();
}

void AppState::removeMonitored(const QString& id) {
    monitoredIDs_ = effectiveMonitoredIDs();
    monitoredIDs_.remove(id);
    persistMonitored();
}

void AppState::setAllMonitored(bool selected) {
    monitoredIDs_.clear();
    if (selected) {
        for (const ProjectRef& ref : availableProjects_)
            monitoredIDs_.insert(ref.id);
    }
    persistMonitored();
}

void AppState::persistMonitored() {
    announcePreferences();
    if (isDemo_) {
        rebuildDemoSnapshots();
        return;
    }
    QStringList ids(monitoredIDs_.begin(), monitoredIDs_.end());
    ids.sort();
    services_.preferences.setStringList(PreferenceKeys::monitoredProjectIDs, ids);
    services_.preferences.setBoolean(PreferenceKeys::projectsConfigured, true);
    refresh();
}

// Derived values --------------------------------------------------------------------------

Tone AppState::overallTone() const {
    if (previewTone_)
        return *previewTone_;
    if (!connection_.isConnected())
        return Tone::disconnected;
    auto any = [this](auto predicate) {
        return std::any_of(snapshots_.begin(), snapshots_.end(), predicate);
    };
    auto is = [](DeployStatus wanted) {
        return [wanted](const ProjectSnapshot& s) { return s.status() == wanted; };
    };
    if (any([](const ProjectSnapshot& s) { return isFailure(s.status()); }))
        return Tone::error;
    if (any(is(DeployStatus::building)))
        return Tone::building;
    if (any(is(DeployStatus::queued)) || any(is(DeployStatus::initializing)))
        return Tone::queued;
    const double nowSeconds = services_.clock.now().toMSecsSinceEpoch() / 1000.0;
    const bool freshSuccess = any([nowSeconds](const ProjectSnapshot& s) {
        return s.status() == DeployStatus::ready && s.latest->ready &&
               nowSeconds - *s.latest->ready / 1000.0 < 60.0;
    });
    return freshSuccess ? Tone::success : Tone::idle;
}

QString AppState::statusSummary() const {
    switch (connection_.kind) {
    case Connection::Kind::failed:
        return Language::text("Connection failed", "Connexion impossible");
    case Connection::Kind::checking:
        return Language::text("Connecting…", "Connexion…");
    case Connection::Kind::retrying:
        return Language::text("Waiting for Vercel", "En attente de Vercel");
    case Connection::Kind::noToken:
        return Language::text("Not connected", "Non connecté");
    case Connection::Kind::connected:
        break;
    }
    const auto failed = std::count_if(snapshots_.begin(), snapshots_.end(),
                                      [](const auto& s) { return isFailure(s.status()); });
    const auto building = std::count_if(snapshots_.begin(), snapshots_.end(),
                                        [](const auto& s) { return isInProgress(s.status()); });
    const bool french = Language::isFrench();
    if (failed >= 1) {
        if (french)
            return QStringLiteral("%1 échec%2").arg(failed).arg(failed == 1 ? "" : "s");
        return QStringLiteral("%1 failed").arg(failed);
    }
    if (snapshots_.isEmpty())
        return Language::text("No project monitored", "Aucun projet surveillé");
    if (building == 0)
        return Language::text("All systems live", "Tout est en ligne");
    if (french)
        return QStringLiteral("%1 build%2 en cours").arg(building).arg(building == 1 ? "" : "s");
    return QStringLiteral("%1 building").arg(building);
}

void AppState::setPreviewTone(std::optional<Tone> tone) {
    previewTone_ = tone;
    Q_EMIT changed();
}

// Publication helpers ---------------------------------------------------------------------

void AppState::setConnection(Connection connection) {
    if (connection_ == connection)
        return;
    connection_ = std::move(connection);
    Q_EMIT connectionChanged();
    Q_EMIT changed();
}

void AppState::setLastError(std::optional<QString> error) {
    if (lastError_ == error)
        return;
    lastError_ = std::move(error);
    Q_EMIT lastErrorChanged();
    Q_EMIT changed();
}

void AppState::setRefreshing(bool refreshing) {
    if (isRefreshing_ == refreshing)
        return;
    isRefreshing_ = refreshing;
    Q_EMIT refreshingChanged();
    Q_EMIT changed();
}

void AppState::publish(QList<ProjectSnapshot> snapshots, int todayCount) {
    snapshots_ = std::move(snapshots);
    todayCount_ = todayCount;
    lastRefresh_ = services_.clock.now();
    dropOutdatedProblems();
    Q_EMIT snapshotsChanged();
    Q_EMIT changed();
}

VercelAPI AppState::makeApi(const QString& token) const {
    return VercelAPI(token, services_.apiBase)
        .withTimeout(services_.requestTimeout)
        .withPacer(pacer_);
}
