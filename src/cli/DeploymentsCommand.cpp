// quillon-cli deployments [--team ID]: the latest deployments of a scope, one aligned line each:
// the 100 newest, and every one since local midnight however many pages they take.
#include "cli/CliApi.h"
#include "cli/CliCommand.h"
#include "core/common/Language.h"
#include "core/common/TimeTexts.h"
#include "core/monitor/PassAccumulator.h"
#include "core/vercel/VercelPages.h"
#include "core/vercel/VercelTime.h"

#include <QDateTime>
#include <algorithm>

namespace {

CliCommand deploymentsCommand();

const QString absent = QStringLiteral("-");

QString orAbsent(const std::optional<QString>& text) {
    return text && !text->isEmpty() ? *text : absent;
}

QString ageText(const VercelDeployment& deployment, const QDateTime& now) {
    const std::optional<double> created =
        deployment.createdAt ? deployment.createdAt : deployment.created;
    if (!created)
        return absent;
    return relativeAgeText(dateFromMilliseconds(*created), now);
}

QStringList columns(const VercelDeployment& deployment, const QDateTime& now) {
    return {deployment.statusTitle(Language::isFrench()),
            orAbsent(deployment.name),
            orAbsent(deployment.branch()),
            orAbsent(deployment.shortSHA()),
            orAbsent(deployment.commitTitle()),
            ageText(deployment, now)};
}

// The team of `--team ID` or `--team=ID`; absent for the personal account. False on bad usage.
bool parseTeam(const QStringList& args, std::optional<QString>& team) {
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& arg = args.at(i);
        if (arg == QLatin1String("--team"))
            team = i + 1 < args.size() ? args.at(++i) : QString();
        else if (arg.startsWith(QLatin1String("--team=")))
            team = arg.mid(7);
        else {
            cliErr() << "quillon-cli deployments: unexpected argument '" << arg << "'\n";
            return false;
        }
        if (team->isEmpty()) {
            cliErr() << "quillon-cli deployments: --team needs a team id\n";
            return false;
        }
    }
    return true;
}

QCoro::Task<int> runDeployments(QStringList args) {
    if (args == QStringList{QStringLiteral("--help")}) {
        printUsage(deploymentsCommand());
        co_return 0;
    }
    std::optional<QString> team;
    if (!parseTeam(args, team))
        co_return kExitUsage;
    const std::optional<VercelAPI> api = apiFromEnvironment();
    if (!api)
        co_return kExitUsage;
    const VercelAPI::Query query =
        VercelAPI::withTeam(team, {{QStringLiteral("limit"), QStringLiteral("100")}});
    const QDateTime now = QDateTime::currentDateTime();
    const RequestResult<DeploymentsResponse> page = co_await getPages<DeploymentsResponse>(
        *api, QStringLiteral("/v6/deployments"), query, whileNotOlderThan(localStartOfDay(now)));
    if (!page)
        co_return reportFailure(page.error());
    QList<QStringList> rows;
    for (const VercelDeployment& deployment : page->deployments)
        rows.append(columns(deployment, now));
    for (const QString& line : alignedLines(rows))
        cliOut() << line << '\n';
    co_return 0;
}

CliCommand deploymentsCommand() {
    return {QStringLiteral("deployments"), QStringLiteral("deployments [--team ID]"),
            QStringLiteral("list the latest deployments of your account or of a team, and all of "
                           "today's"),
            runDeployments};
}

const CliCommand::Registration registration(deploymentsCommand());

} // namespace
