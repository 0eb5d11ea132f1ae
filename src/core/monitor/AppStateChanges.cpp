// Passes that ask a scope only for what can have changed since the last one, and what they keep
// between them.
#include "core/monitor/AppState.h"
#include "core/monitor/PassAccumulator.h"
#include "core/vercel/VercelPages.h"

#include <cmath>

namespace {

const QString deploymentsPath = QStringLiteral("/v6/deployments");
const VercelAPI::Query limit100{{QStringLiteral("limit"), QStringLiteral("100")}};

// Vercel lists the deployments created after "since", a page at a time; a server that ignores
// it still ends where the pages reach that time.
VercelAPI::Query createdAfter(const Scope& scope, qint64 since) {
    return VercelAPI::withTeam(scope.teamId, {{QStringLiteral("limit"), QStringLiteral("100")},
                                              {QStringLiteral("since"), QString::number(since)}});
}

std::function<bool(const DeploymentsResponse&)> whileAfter(qint64 since) {
    return [since](const DeploymentsResponse& soFar) {
        return !soFar.deployments.isEmpty() &&
               creationTime(soFar.deployments.constLast()) > static_cast<double>(since);
    };
}

// One deployment, asked for by its project and its creation time: the list's own record, so it
// reads exactly as a complete reading would give it (the by-id endpoint answers another, larger
// shape).
VercelAPI::Query oneDeployment(const Scope& scope, const VercelDeployment& deployment) {
    const auto created = static_cast<qint64>(std::floor(creationTime(deployment)));
    VercelAPI::Query query{{QStringLiteral("limit"), QStringLiteral("10")}};
    if (deployment.projectId)
        query.append({QStringLiteral("projectId"), *deployment.projectId});
    query.append({QStringLiteral("since"), QString::number(created - 1)});
    query.append({QStringLiteral("until"), QString::number(created + 1)});
    return VercelAPI::withTeam(scope.teamId, query);
}

std::optional<VercelDeployment> withId(const QList<VercelDeployment>& list, const QString& id) {
    for (const VercelDeployment& deployment : list) {
        if (deployment.deploymentID() == id)
            return deployment;
    }
    return std::nullopt;
}

} // namespace

QCoro::Task<> AppState::poll() {
    co_await runPass(false);
}

ScopeMemory::Focus AppState::focusOf(const Scope& scope, const QSet<QString>& monitored,
                                     const QDateTime& startOfDay) const {
    ScopeMemory::Focus focus;
    focus.scopeSlug = scope.slug;
    focus.dayStartMs = static_cast<double>(startOfDay.toMSecsSinceEpoch());
    for (const ProjectRef& ref : availableProjects_) {
        if (ref.teamId != scope.teamId || ref.scopeSlug != scope.slug)
            continue;
        focus.known.insert(ref.id);
        focus.projectByName.insert(ref.name, ref.id);
        if (monitored.contains(ref.id))
            focus.monitored.insert(ref.id);
    }
    return focus;
}

bool AppState::needsCompleteReading(const QString& key, const ScopeMemory::Focus& focus) const {
    if (services_.completeReadingEvery <= std::chrono::milliseconds::zero())
        return true;
    const auto found = memories_.constFind(key);
    if (found == memories_.constEnd() || !found->isComplete() ||
        found->monitored() != focus.monitored)
        return true;
    // A clock set back counts as due, too.
    const qint64 age = found->readAt().msecsTo(services_.clock.now());
    return age < 0 || age >= services_.completeReadingEvery.count();
}

// Idle, one request: the deployments created since the newest known (none). While builds run,
// one more per running deployment that request does not cover.
QCoro::Task<AppState::ScopeStep> AppState::readChanges(VercelAPI client, Scope scope,
                                                       ScopeMemory::Focus focus,
                                                       PassAccumulator& pass, PassNotes& notes) {
    const ReadingTicket ticket = readingTicket();
    const QString key = scopeKey(scope);
    ScopeMemory memory = memories_.value(key);
    const QDateTime sentAt = services_.clock.now();
    const qint64 since = memory.since();
    const auto created = co_await getPages<DeploymentsResponse>(
        client, deploymentsPath, createdAfter(scope, since), whileAfter(since));
    if (ticket.overtaken())
        co_return ScopeStep::abandoned;
    if (!created) {
        memory.feed(pass, scope.slug);
        co_return failScope(created.error(), scope, notes);
    }
    ScopeMemory::Changes changes{created->deployments, {}, {}};
    for (const VercelDeployment& running : memory.stillRunning(focus)) {
        const auto again = co_await client.get<DeploymentsResponse>(deploymentsPath,
                                                                    oneDeployment(scope, running));
        if (ticket.overtaken())
            co_return ScopeStep::abandoned;
        if (!again) {
            memory.feed(pass, scope.slug);
            co_return failScope(again.error(), scope, notes);
        }
        if (std::optional<VercelDeployment> now =
                withId(again->deployments, running.deploymentID()))
            changes.rechecked.append(*now);
        else
            changes.gone.insert(running.deploymentID());
    }
    const QSet<QString> unlisted = memory.merge(changes, focus, {sentAt, services_.clock.now()});
    memories_.insert(key, memory);
    memory.feed(pass, scope.slug);
    noteUnlistedProjects(scope, unlisted, notes);
    noteScopeAnswered(key, &notes);
    co_return ScopeStep::next;
}

// A deployment of a project the scope did not list is the first sign of a new project.
void AppState::noteUnlistedProjects(const Scope& scope, const QSet<QString>& ids,
                                    PassNotes& notes) const {
    const QSet<QString> fresh = ids - listedFor_;
    if (fresh.isEmpty())
        return;
    notes.unlistedProjects += fresh;
    if (!notes.toList.contains(scope))
        notes.toList.append(scope);
}

QCoro::Task<> AppState::listScope(Scope scope, QSet<QString> projectIds) {
    if (!api_)
        co_return;
    QPointer<AppState> self(this);
    const quint64 generation = generation_;
    const QString key = scopeKey(scope);
    const RequestResult<ProjectsResponse> answer = co_await getAllPages<ProjectsResponse>(
        *api_, QStringLiteral("/v9/projects"), VercelAPI::withTeam(scope.teamId, limit100));
    if (!self || self->generation_ != generation || !answer)
        co_return; // the next deployment of such a project asks again
    // Listed once: a project Vercel does not list does not make every pass ask.
    listedFor_ += projectIds;
    QList<ProjectRef> refs;
    QSet<QString> seen;
    for (const ProjectRef& ref : std::as_const(availableProjects_)) {
        if (scopeKey({ref.teamId, ref.scopeSlug}) == key)
            continue;
        refs.append(ref);
        seen.insert(ref.id);
    }
    for (const VercelProject& project : answer->projects) {
        if (!seen.contains(project.id))
            refs.append({project.id, project.name, scope.teamId, scope.slug});
    }
    publishProjects(std::move(refs));
}

int AppState::keptDeployments() const {
    int kept = 0;
    for (const ScopeMemory& memory : memories_)
        kept += memory.size();
    return kept;
}

void AppState::dropMemories() {
    memories_.clear();
    listedFor_.clear();
    ++memoryEpoch_;
}
