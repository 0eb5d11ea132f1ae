// "Copy for AI": the failure report of a project's latest deployment, with the relevant part of
// its build log.
#include "core/common/Language.h"
#include "core/demo/DemoDirector.h"
#include "core/monitor/AppState.h"
#include "core/vercel/BuildLog.h"
#include "core/vercel/FailureReport.h"

using namespace std::chrono_literals;

namespace {

// Vercel writes the last lines of a failed build's log after it reports the failure (its own CLI
// follows the log until the error line). A report asked for within a minute of the failure
// reads the log again every second until it stops growing with an error in it, for a few
// seconds at most.
constexpr double freshFailureMs = 60'000;
constexpr auto settleCheck = 1s;
constexpr auto settleLimit = 5s;

bool failedJustNow(const VercelDeployment& deployment, const QDateTime& now) {
    if (deployment.status() != DeployStatus::error)
        return false;
    const std::optional<double> at = deployment.ready ? deployment.ready : deployment.startedAt();
    return at && static_cast<double>(now.toMSecsSinceEpoch()) - *at < freshFailureMs;
}

// The log's lines; an unreadable log gives none, and the report says it is unavailable.
QCoro::Task<QStringList> settledBuildLog(VercelAPI api, QString id, std::optional<QString> teamId,
                                         Clock& clock, std::shared_ptr<Cancellation> cancel,
                                         bool waitForEnd) {
    RequestResult<QStringList> log = co_await buildLog(api, id, teamId);
    const QDateTime giveUp = clock.now().addMSecs(std::chrono::milliseconds(settleLimit).count());
    while (waitForEnd && !cancel->isCancelled() && clock.now() < giveUp) {
        co_await clock.sleep(settleCheck, cancel);
        if (cancel->isCancelled())
            break;
        RequestResult<QStringList> again = co_await buildLog(api, id, teamId);
        const bool settled = log && again && again->size() == log->size() && mentionsError(*again);
        log = std::move(again);
        if (settled)
            break;
    }
    co_return log ? log.value() : QStringList();
}

} // namespace

QCoro::Task<std::optional<QString>> AppState::failureReport(ProjectSnapshot snapshot) const {
    if (!snapshot.latest)
        co_return std::nullopt;
    QStringList lines;
    if (isDemo_) {
        lines = DemoDirector::buildLog(snapshot.name);
    } else if (api_ && !snapshot.latest->deploymentID().isEmpty()) {
        // Any failure gives the same report with "(log unavailable)": the user is not told why.
        lines = co_await settledBuildLog(*api_, snapshot.latest->deploymentID(), snapshot.teamId,
                                         services_.clock, reportWaits_,
                                         failedJustNow(*snapshot.latest, services_.clock.now()));
    }
    co_return failureReportText(snapshot, relevantLogExcerpt(lines));
}

QCoro::Task<bool> AppState::copyFailureReport(ProjectSnapshot snapshot) {
    QPointer<AppState> self(this);
    ClipboardService& clipboard = services_.clipboard;
    const std::optional<QString> report = co_await failureReport(std::move(snapshot));
    if (!report || !self)
        co_return false;
    clipboard.setText(*report);
    co_return true;
}

QCoro::Task<> AppState::copyReportFromNotification(QString deploymentID) {
    const auto found = notifiedFailures_.constFind(deploymentID);
    if (found == notifiedFailures_.constEnd())
        co_return;
    QPointer<AppState> self(this);
    NotificationService& notifications = services_.notifications;
    if (!co_await copyFailureReport(*found) || !self)
        co_return;
    FailureNotification confirmation;
    confirmation.identifier = deploymentID;
    confirmation.title = Language::text("Failure report copied", "Rapport d'échec copié");
    confirmation.body =
        Language::text("Paste it into your AI assistant.", "Collez-le dans votre assistant IA.");
    confirmation.transient = true;
    notifications.post(confirmation);
}
