// "Copy for AI": the failure report of a project's latest deployment, with the relevant part of
// its build log.
#include "core/common/Language.h"
#include "core/demo/DemoDirector.h"
#include "core/monitor/AppState.h"
#include "core/monitor/SettledBuildLog.h"
#include "core/vercel/BuildLog.h"
#include "core/vercel/FailureReport.h"

QCoro::Task<std::optional<QString>> AppState::failureReport(ProjectSnapshot snapshot) const {
    if (!snapshot.latest)
        co_return std::nullopt;
    QStringList lines;
    if (isDemo_) {
        lines = DemoDirector::buildLog(snapshot.name);
    } else if (api_ && !snapshot.latest->deploymentID().isEmpty()) {
        // Any failure gives the same report with "(log unavailable)": the user is not told why.
        lines = co_await settledBuildLog(*api_, *snapshot.latest, snapshot.teamId, services_.clock,
                                         reportWaits_);
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
