// One scope of a refresh pass, and the scopes Vercel keeps closed or asks to slow down.
#include "core/common/Language.h"
#include "core/common/TimeTexts.h"
#include "core/monitor/AppState.h"
#include "core/monitor/PassAccumulator.h"
#include "core/vercel/VercelPages.h"

using namespace std::chrono_literals;

namespace {

const VercelAPI::Query limit100{{QStringLiteral("limit"), QStringLiteral("100")}};

// Project pages are read until every monitored project of the scope has been seen.
std::function<bool(const ProjectsResponse&)> findsAll(QSet<QString> wanted) {
    return [wanted](const ProjectsResponse& soFar) {
        QSet<QString> missing = wanted;
        for (const VercelProject& project : soFar.projects)
            missing.remove(project.id);
        return !missing.isEmpty();
    };
}

} // namespace

// A complete reading of one scope: its projects (with their latest deployments) and its
// deployments back to local midnight.
QCoro::Task<AppState::ScopeStep> AppState::refreshScope(VercelAPI client, Scope scope,
                                                        ScopeMemory::Focus focus,
                                                        PassAccumulator& pass, PassNotes& notes) {
    const ReadingTicket ticket = readingTicket();
    const QString key = scopeKey(scope);
    // What the scope answered last stands in for what it cannot answer now, so a passing
    // failure does not blank its projects.
    ScopeMemory memory = memories_.value(key);
    const QDateTime sentAt = services_.clock.now();
    const VercelAPI::Query query = VercelAPI::withTeam(scope.teamId, limit100);
    const auto projects = co_await getPages<ProjectsResponse>(
        client, QStringLiteral("/v9/projects"), query, findsAll(focus.monitored));
    if (ticket.overtaken())
        co_return ScopeStep::abandoned;
    if (!projects) {
        memory.feed(pass, scope.slug);
        co_return failScope(projects.error(), scope, notes);
    }

    // Back to local midnight for today's count; the first page alone holds what the latest
    // deployments and the medians need.
    const auto deployments = co_await getPages<DeploymentsResponse>(
        client, QStringLiteral("/v6/deployments"), query,
        whileNotOlderThan(localStartOfDay(services_.clock.now())));
    if (ticket.overtaken())
        co_return ScopeStep::abandoned;
    if (!deployments) {
        memory.replaceLatest(projects->projects, focus);
        memories_.insert(key, memory);
        memory.feed(pass, scope.slug);
        co_return failScope(deployments.error(), scope, notes);
    }
    const QSet<QString> unlisted = memory.replace(projects->projects, deployments->deployments,
                                                  focus, {sentAt, services_.clock.now()});
    memories_.insert(key, memory);
    // The answers themselves, not what is kept of them: a complete reading stays the reference
    // the kept window is held to.
    pass.addProjects(projects->projects);
    pass.addDeployments(scope.slug, deployments->deployments);
    noteUnlistedProjects(scope, unlisted, notes);
    noteScopeAnswered(key, &notes);
    co_return ScopeStep::next;
}

AppState::ScopeStep AppState::failScope(const RequestError& error, const Scope& scope,
                                        PassNotes& notes) {
    // A rejected token ends the connection and the loop; nothing of the pass is published.
    if (error.isUnauthorized()) {
        setConnection(Connection::failed(error.message()));
        cancelLoop();
        dropMemories();
        setRefreshing(false);
        return ScopeStep::ended;
    }
    const QString key = scopeKey(scope);
    if (error.isForbidden()) {
        setScopeProblem(
            key, ScopeProblem::fromError(*error.apiError(), scopeNames_.value(key, scope.slug),
                                         ScopeProblem::askAgainFrom(services_.clock.now())));
        return ScopeStep::next;
    }
    // A rate limit is also told for as long as it lasts (notices); the message shows meanwhile.
    if (error.isRateLimited())
        notes.heldUntil = error.apiError()->retryAt().value_or(services_.clock.now());
    setLastError(error.message());
    return ScopeStep::next;
}

bool AppState::isLeftAlone(const QString& key) const {
    const auto found = scopeProblems_.constFind(key);
    return found != scopeProblems_.constEnd() && services_.clock.now() < found->askAgainAt;
}

void AppState::setScopeProblem(const QString& key, std::optional<ScopeProblem> problem) {
    if (problem)
        scopeProblems_.insert(key, *problem);
    else if (!scopeProblems_.remove(key))
        return;
    Q_EMIT noticesChanged();
    Q_EMIT changed();
}

void AppState::noteScopeAnswered(const QString& key, PassNotes* notes) {
    setScopeProblem(key, std::nullopt);
    if (notes && unlistedScopes_.contains(key))
        notes->relist = true;
}

void AppState::setSlowedDown(bool slowed) {
    if (slowedDown_ == slowed)
        return;
    slowedDown_ = slowed;
    Q_EMIT noticesChanged();
    Q_EMIT changed();
}

QStringList AppState::notices() const {
    QStringList notices;
    for (const Scope& scope : scopes_) {
        const auto found = scopeProblems_.constFind(scopeKey(scope));
        if (found != scopeProblems_.constEnd())
            notices << found->sentence();
    }
    if (slowedDown_) {
        QString slowDown = Language::text("Vercel asked Quillon to slow down.",
                                          "Vercel a demandé à Quillon de ralentir.");
        // A pass due before Vercel's wait is over sends nothing: the check comes after both.
        std::optional<QDateTime> next = nextCheck_;
        if (const auto held = api_ && api_->pacer() ? api_->pacer()->heldUntil() : std::nullopt)
            next = next ? std::max(*next, *held) : *held;
        if (next)
            slowDown += QLatin1Char(' ') +
                        Language::text("Next check at %1.", "Prochaine vérification à %1.")
                            .arg(clockTimeText(*next));
        notices << slowDown;
    }
    return notices;
}
