#include "core/wait/DeploymentWait.h"

#include "core/monitor/SettledBuildLog.h"
#include "core/vercel/BuildLog.h"
#include "core/vercel/FailureReport.h"
#include "core/wait/AccountProjects.h"
#include "core/wait/CommitDeployments.h"
#include "core/wait/WaitTexts.h"

using namespace std::chrono_literals;

namespace {

// The first look goes this far back for a short hash; after it, new deployments come first.
constexpr int kFirstLookPages = 5;
constexpr auto kLongestRequest = 20s;
constexpr auto kShortestRequest = 1s;

using Found = RequestResult<std::optional<VercelDeployment>>;

// Vercel's word for the state, states Quillon does not know included.
QString stateText(const VercelDeployment& d) {
    return d.readyState.value_or(d.state.value_or(QString())).toUpper();
}

class WaitRun {
public:
    WaitRun(VercelAPI api, Clock& clock, WaitRequest request, WaitObserver observer)
        : api_(std::move(api)), clock_(clock), request_(std::move(request)),
          observer_(std::move(observer)),
          deadline_(clock.now().addMSecs(request_.timeout.count())) {
        api_ = api_.withPacer(
            std::make_shared<RateLimitPacer>([&clock = clock_] { return clock.now(); }));
    }

    QCoro::Task<WaitOutcome> run() {
        while (true) {
            std::optional<QDateTime> retryAt;
            std::optional<WaitOutcome> end;
            if (!project_)
                end = co_await findProject(retryAt);
            // Once the project is known, its deployment is looked for at once.
            if (!end && project_)
                end = co_await look(retryAt);
            if (end)
                co_return *end;
            if (!co_await pause(retryAt))
                co_return outcome(WaitEnd::timedOut, timedOutSentence(request_.commit, project_,
                                                                      seen_, request_.timeout));
        }
    }

private:
    // Requests end in time for the deadline, within the usual 20 s.
    VercelAPI client() const {
        const auto left = std::chrono::milliseconds(clock_.now().msecsTo(deadline_));
        return api_.withTimeout(
            std::clamp<std::chrono::milliseconds>(left, kShortestRequest, kLongestRequest));
    }

    QCoro::Task<std::optional<WaitOutcome>> findProject(std::optional<QDateTime>& retryAt) {
        const VercelAPI api = client();
        const RequestResult<AccountProjects> listed =
            co_await listAccountProjects(api, request_.hints);
        if (!listed)
            co_return failure(listed.error(), retryAt);
        const auto chosen = chooseProject(listed->projects, request_.hints, listed->closed);
        if (!chosen)
            co_return outcome(WaitEnd::noProject, chosen.error());
        project_ = chosen.value();
        lastNote_.clear();
        if (observer_.started)
            observer_.started(*project_);
        co_return std::nullopt;
    }

    // GCC 12 mishandles temporaries and ?: around co_await: every call below takes named values.
    QCoro::Task<Found> follow() const {
        const VercelAPI api = client();
        const QString path = QStringLiteral("/v13/deployments/") + seen_->deploymentID();
        const VercelAPI::Query query = VercelAPI::withTeam(project_->ref.teamId, {});
        RequestResult<VercelDeployment> current = co_await api.get<VercelDeployment>(path, query);
        if (!current)
            co_return current.error();
        co_return std::optional(std::move(current.value()));
    }

    QCoro::Task<Found> find() const {
        const VercelAPI api = client();
        co_return co_await findCommitDeployment(api, *project_, request_.commit, pages_);
    }

    QCoro::Task<std::optional<WaitOutcome>> look(std::optional<QDateTime>& retryAt) {
        std::optional<Found> looked;
        if (seen_)
            looked.emplace(co_await follow());
        else
            looked.emplace(co_await find());
        const Found& found = *looked;
        if (!found)
            co_return failure(found.error(), retryAt);
        lastNote_.clear();
        pages_ = 1; // after the first look, a new deployment can only come first
        if (!found.value())
            co_return std::nullopt;
        const bool changed = !seen_ || stateText(*seen_) != stateText(*found.value());
        seen_ = *found.value();
        if (changed && observer_.changed)
            observer_.changed(*seen_);
        co_return co_await ending();
    }

    // The outcome when the deployment has ended.
    QCoro::Task<std::optional<WaitOutcome>> ending() {
        const VercelDeployment& d = *seen_;
        switch (d.status()) {
        case DeployStatus::ready:
            co_return outcome(WaitEnd::ready, deploymentAddress(d));
        case DeployStatus::error: {
            const QString text = co_await report();
            co_return outcome(WaitEnd::failed, text);
        }
        case DeployStatus::blocked:
            co_return outcome(WaitEnd::failed, blockedSentence(request_.commit, *project_, d));
        case DeployStatus::canceled:
            if (isIgnoredBuild(d))
                co_return outcome(WaitEnd::skipped, skippedSentence(request_.commit, *project_));
            co_return outcome(WaitEnd::canceled, canceledSentence(request_.commit, *project_));
        default:
            co_return std::nullopt;
        }
    }

    // "Copy for AI"'s report of the failed deployment.
    QCoro::Task<QString> report() {
        const ProjectRef& ref = project_->ref;
        const VercelAPI api = client();
        const auto never = std::make_shared<Cancellation>();
        const QStringList lines = co_await settledBuildLog(api, *seen_, ref.teamId, clock_, never);
        const ProjectSnapshot snapshot{ref.id, ref.name, ref.scopeSlug, ref.teamId, seen_, {}};
        co_return failureReportText(snapshot, relevantLogExcerpt(lines));
    }

    // A failure that cannot pass ends the wait; any other is noted and tried again.
    std::optional<WaitOutcome> failure(const RequestError& error,
                                       std::optional<QDateTime>& retryAt) {
        if (!error.canPass())
            return outcome(WaitEnd::refused, error.message());
        if (error.isRateLimited())
            retryAt = error.apiError()->retryAt();
        const QDateTime next = nextLook(retryAt);
        note(error.isRateLimited() ? slowDownNote(next) : retryNote(error.message(), deadline_));
        return std::nullopt;
    }

    void note(const QString& sentence) {
        if (sentence == lastNote_)
            return;
        lastNote_ = sentence;
        if (observer_.note)
            observer_.note(sentence);
    }

    // The interval, or longer when the rate limit asks: a 429's time, or the pause that keeps
    // the requests left in Vercel's window until it resets.
    QDateTime nextLook(const std::optional<QDateTime>& retryAt) const {
        const auto paced = std::max(request_.interval, api_.pacer()->pauseFor(1));
        QDateTime next = clock_.now().addMSecs(paced.count());
        if (retryAt && *retryAt > next)
            next = *retryAt;
        return next;
    }

    // Sleeps until the next look; false when the deadline comes first.
    QCoro::Task<bool> pause(const std::optional<QDateTime>& retryAt) {
        const QDateTime next = nextLook(retryAt);
        const QDateTime wake = std::min(next, deadline_);
        const std::chrono::milliseconds duration(clock_.now().msecsTo(wake));
        const auto never = std::make_shared<Cancellation>();
        co_await clock_.sleep(duration, never);
        co_return clock_.now() < deadline_;
    }

    WaitOutcome outcome(WaitEnd end, QString message) const {
        return {end, std::move(message), project_, seen_};
    }

    VercelAPI api_;
    Clock& clock_;
    WaitRequest request_;
    WaitObserver observer_;
    QDateTime deadline_;
    std::optional<LinkedProject> project_;
    std::optional<VercelDeployment> seen_;
    int pages_ = kFirstLookPages;
    QString lastNote_;
};

} // namespace

QCoro::Task<WaitOutcome> waitForDeployment(VercelAPI api, Clock& clock, WaitRequest request,
                                           WaitObserver observer) {
    WaitRun run(std::move(api), clock, std::move(request), std::move(observer));
    co_return co_await run.run();
}

bool isIgnoredBuild(const VercelDeployment& deployment) {
    if (deployment.status() != DeployStatus::canceled)
        return false;
    return deployment.errorLink.value_or(QString()).contains(QLatin1String("ignored-build-step")) ||
           deployment.errorMessage.value_or(QString()).contains(QLatin1String("Ignored Build Step"),
                                                                Qt::CaseInsensitive);
}

QString deploymentAddress(const VercelDeployment& deployment) {
    const QString url = deployment.url.value_or(QString());
    if (url.isEmpty() || url.contains(QLatin1String("://")))
        return url;
    return QStringLiteral("https://") + url;
}
