// Turning a token into a connection: the user check, the teams and scopes, the token's expiry;
// retried checks; storing and removing the token.
#include "core/common/Language.h"
#include "core/common/TimeTexts.h"
#include "core/keychain/KeychainStore.h"
#include "core/monitor/AppState.h"
#include "core/vercel/VercelPages.h"
#include "core/vercel/VercelTime.h"

namespace {

const VercelAPI::Query noQuery;
const VercelAPI::Query limit100{{QStringLiteral("limit"), QStringLiteral("100")}};

QList<Scope> scopesFor(const VercelUser& user, const QList<VercelTeam>& teams) {
    QList<Scope> scopes;
    const bool defaultTeamFound =
        user.defaultTeamId && std::any_of(teams.begin(), teams.end(), [&](const VercelTeam& t) {
            return t.id == *user.defaultTeamId;
        });
    if (defaultTeamFound) {
        for (const VercelTeam& team : teams) {
            if (team.id == *user.defaultTeamId)
                scopes.append({team.id, team.slug});
        }
        for (const VercelTeam& team : teams) {
            if (team.id != *user.defaultTeamId)
                scopes.append({team.id, team.slug});
        }
        return scopes;
    }
    scopes.append({std::nullopt, user.username});
    for (const VercelTeam& team : teams)
        scopes.append({team.id, team.slug});
    return scopes;
}

TokenExpiry expiryFrom(const RequestResult<TokenInfoResponse>& answer) {
    if (!answer)
        return TokenExpiry::unknown();
    if (!answer->token.expiresAt)
        return TokenExpiry::never();
    return TokenExpiry::at(dateFromMilliseconds(*answer->token.expiresAt));
}

// The waits between account checks that failed for a reason that can pass.
std::chrono::milliseconds retryDelay(int attempt) {
    using namespace std::chrono_literals;
    constexpr std::array delays{5s, 10s, 30s, 60s};
    return delays[std::min<std::size_t>(attempt, delays.size() - 1)];
}

// Why the account check failed. A 403 that does not reject the token comes from a token made for
// one project only (Vercel's project-scoped tokens): it cannot see the account.
QString accountCheckMessage(const RequestError& error) {
    if (error.isForbidden())
        return Language::text("This token is limited to one project: create a token for your "
                              "whole account on vercel.com.",
                              "Ce jeton est limité à un seul projet : créez sur vercel.com un "
                              "jeton pour tout votre compte.");
    return error.message();
}

} // namespace

QCoro::Task<> AppState::connect(QString token) {
    cancelRetry();
    retryAttempt_ = 0;
    // A new token starts with no word from Vercel on its pace.
    if (pacer_)
        pacer_->forgetClock();
    Clock& clock = services_.clock;
    pacer_ = std::make_shared<RateLimitPacer>([&clock] { return clock.now(); });
    co_await checkAccount(std::move(token));
}

void AppState::failCheck(const QString& token, const RequestError& error) {
    api_.reset();
    if (error.canPass())
        scheduleRetry(token, error);
    else
        setConnection(Connection::failed(accountCheckMessage(error)));
}

void AppState::adoptScopes(const VercelUser& user, const std::optional<QList<VercelTeam>>& teams) {
    const QList<VercelTeam> known = teams.value_or(QList<VercelTeam>());
    scopes_ = scopesFor(user, known);
    teamsMissing_ = !teams;
    dropMemories();
    unlistedScopes_.clear();
    scopeNames_.clear();
    scopeProblems_.clear();
    scopeNames_.insert(scopeKey({std::nullopt, user.username}), user.username);
    const QDateTime askAgain = ScopeProblem::askAgainFrom(services_.clock.now());
    for (const VercelTeam& team : known) {
        const QString key = scopeKey({team.id, team.slug});
        scopeNames_.insert(key, teamDisplayName(team));
        // Asking a team the token may not read would only earn a 403: it waits a while.
        if (const std::optional<ScopeProblem> problem = ScopeProblem::fromTeam(team, askAgain))
            scopeProblems_.insert(key, *problem);
    }
    Q_EMIT noticesChanged();
}

QCoro::Task<> AppState::checkAccount(QString token) {
    QPointer<AppState> self(this);
    // A check still on the network when the token is removed, or when a newer check started,
    // changes nothing: the newest check wins.
    const quint64 generation = generation_;
    const quint64 check = ++checks_;
    auto abandoned = [&] {
        return !self || self->generation_ != generation || self->checks_ != check;
    };
    setConnection(Connection::checking());
    const VercelAPI client = makeApi(token);

    const RequestResult<UserResponse> user =
        co_await client.get<UserResponse>(QStringLiteral("/v2/user"), noQuery);
    if (abandoned())
        co_return;
    if (!user) {
        failCheck(token, user.error());
        co_return;
    }
    // Teams that fail for a reason that can pass are asked again like the account; without them
    // the teams' projects would go unwatched until the next check.
    const RequestResult<TeamsResponse> teams =
        co_await getAllPages<TeamsResponse>(client, QStringLiteral("/v2/teams"), limit100);
    if (abandoned())
        co_return;
    if (!teams && teams.error().canPass()) {
        failCheck(token, teams.error());
        co_return;
    }
    retryAttempt_ = 0;
    api_ = client;
    adoptScopes(user->user, teams ? std::optional(teams->teams) : std::nullopt);
    accountUserId_ = user->user.id;
    setConnection(Connection::connected(user->user.username));
    setLastError(std::nullopt);

    const RequestResult<TokenInfoResponse> info =
        co_await client.get<TokenInfoResponse>(QStringLiteral("/v5/user/tokens/current"), noQuery);
    if (abandoned())
        co_return;
    tokenExpiry_ = expiryFrom(info);
    Q_EMIT changed();

    co_await loadProjects();
    if (abandoned())
        co_return;
    startLoop();
}

QCoro::Task<> AppState::saveToken(QString raw) {
    if (isDemo_)
        co_return;
    const QString token = raw.trimmed();
    if (token.isEmpty())
        co_return;
    const auto stored = services_.keychain.storeToken(token);
    if (!stored) {
        setLastError(stored.error().errorDescription());
        co_return;
    }
    keychainMode_ = stored.value();
    setLastError(std::nullopt);
    Q_EMIT changed();
    co_await connect(token);
}

void AppState::scheduleRetry(const QString& token, const RequestError& error) {
    std::chrono::milliseconds delay = retryDelay(retryAttempt_++);
    // Vercel asked to wait: the next check comes no sooner.
    if (error.isRateLimited() && error.apiError()->retryAt())
        delay = std::max(delay, std::chrono::milliseconds(
                                    services_.clock.now().msecsTo(*error.apiError()->retryAt())));
    setConnection(
        Connection::retrying(error.message(), services_.clock.now().addMSecs(delay.count())));
    cancelRetry();
    retryTask_ = std::make_shared<Cancellation>();
    if (services_.network)
        services_.network->watch();
    runRetry(QPointer<AppState>(this), retryTask_, token, delay);
}

QString AppState::connectionMessage() const {
    if (connection_.kind != Connection::Kind::retrying)
        return connection_.detail;
    const double wait = services_.clock.now().msecsTo(connection_.retryAt) / 1000.0;
    return connection_.detail + QLatin1Char(' ') +
           Language::text("Trying again in %1.", "Nouvel essai dans %1.")
               .arg(durationText(std::max(wait, 0.0)));
}

void AppState::cancelRetry() {
    if (retryTask_)
        retryTask_->cancel();
    retryTask_.reset();
}

// Waits for the next attempt, or less when the desktop says the network came up.
QCoro::Task<> AppState::runRetry(QPointer<AppState> self, std::shared_ptr<Cancellation> token,
                                 QString apiToken, std::chrono::milliseconds delay) {
    auto wake = std::make_shared<Cancellation>();
    QObject::connect(token.get(), &Cancellation::cancelled, wake.get(), &Cancellation::cancel);
    if (NetworkWatch* network = self->services_.network)
        QObject::connect(network, &NetworkWatch::cameOnline, wake.get(), &Cancellation::cancel);
    co_await self->clock().sleep(delay, wake);
    if (!self || token->isCancelled())
        co_return;
    co_await self->checkAccount(std::move(apiToken));
}

void AppState::removeToken() {
    if (isDemo_)
        return;
    const std::optional<KeychainError> kept = services_.keychain.deleteToken();
    cancelRetry();
    cancelLoop();
    ++generation_;
    setRefreshing(false);
    api_.reset();
    scopes_.clear();
    dropMemories();
    scopeProblems_.clear();
    unlistedScopes_.clear();
    slowedDown_ = false;
    nextCheck_.reset();
    accountUserId_.reset();
    keychainMode_.reset();
    tokenExpiry_ = TokenExpiry::unknown();
    snapshots_.clear();
    availableProjects_.clear();
    todayCount_ = 0;
    hasLoadedOnce_ = false;
    Q_EMIT snapshotsChanged();
    Q_EMIT availableProjectsChanged();
    setConnection(Connection::noToken());
    Q_EMIT noticesChanged();
    // A copy left in a keyring that stayed locked is marked outdated and never read again.
    setLastError(
        kept ? std::optional<QString>(kept->errorDescription() + QLatin1Char(' ') +
                                      Language::text("Quillon will not use the token kept there "
                                                     "again.",
                                                     "Quillon n'utilisera plus le jeton qui y "
                                                     "est conservé."))
             : std::nullopt);
    Q_EMIT changed();
}
