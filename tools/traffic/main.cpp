// quillon-traffic: what the polling loop reads from Vercel in an hour, with every pass reading
// everything (as before) and with passes that ask only for changes between complete readings,
// on loopback accounts and a manual clock, so no pass waits for real time.
#include "core/common/Language.h"
#include "platform/ServiceModule.h"
#include "services/ServiceTable.h"
#include "support/FakeDesktop.h"
#include "support/SampleAccounts.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <QCoro/QCoroTask>
#include <cstdio>

using namespace std::chrono_literals;

namespace {

struct Figures {
    qint64 bytes = 0;
    qint64 requests = 0;
    int kept = 0; // deployments the passes keep between them, at the end
};

struct Account {
    const char* name;
    std::function<void(FakeVercelAccount&, const QDateTime&)> fill;
    QString buildingProject; // a monitored project of the personal scope
};

bool settle(AppState& state, ManualClock& clock) {
    return waitUntil([&] { return !state.isRefreshing() && clock.pendingSleepers() == 1; }, 60'000);
}

// Connects, lets the loop run a quarter of an hour, then counts what it reads in the next hour.
std::optional<Figures> measure(const Account& kind, bool everyPassComplete, bool building) {
    LoopbackHttpServer server;
    FakeVercelAccount account(server);
    FakeDesktop desktop;
    kind.fill(account, desktop.clock.now());
    if (building)
        account.addDeployment(
            "", SampleAccounts::deployment(QStringLiteral("dpl_running"), kind.buildingProject,
                                           QStringLiteral("BUILDING"), desktop.clock.now()));
    AppState::Services services = desktop.services(server.baseUrl(), 20s);
    if (everyPassComplete)
        services.completeReadingEvery = 0ms;
    AppState state(services);
    QCoro::waitFor(state.connect(QStringLiteral("tok_traffic")));
    if (!settle(state, desktop.clock) || !state.connection().isConnected())
        return std::nullopt;
    const QDateTime start = desktop.clock.now().addSecs(15 * 60);
    const QDateTime end = start.addSecs(3600);
    qsizetype first = -1;
    while (desktop.clock.now() < end) {
        if (first < 0 && desktop.clock.now() >= start)
            first = server.requests().size();
        desktop.clock.advance(desktop.clock.requestedSleeps().last());
        if (!settle(state, desktop.clock))
            return std::nullopt;
    }
    Figures figures;
    const QList<LoopbackHttpServer::Request>& requests = server.requests();
    for (qsizetype i = first; i < requests.size(); ++i) {
        figures.bytes += requests.at(i).answeredBytes;
        ++figures.requests;
    }
    figures.kept = state.keptDeployments();
    return figures;
}

QString amount(qint64 bytes) {
    if (bytes >= 10 * 1024 * 1024)
        return QStringLiteral("%1 MB").arg(bytes / (1024.0 * 1024.0), 0, 'f', 1);
    return QStringLiteral("%1 KB").arg(bytes / 1024.0, 0, 'f', 1);
}

QString ratio(qint64 after, qint64 before) {
    return before > 0 ? QString::number(static_cast<double>(after) / before, 'f', 3)
                      : QStringLiteral("-");
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments().mid(1);
    if (args == QStringList{QStringLiteral("--help")}) {
        std::puts("Usage: quillon-traffic\n\n"
                  "Runs the polling loop against loopback Vercel accounts on a manual clock and\n"
                  "prints the bytes of response body and the requests of one hour, idle and\n"
                  "during a build, with every pass reading everything and with passes that ask\n"
                  "only for changes between complete readings, and their ratios.");
        return 0;
    }
    if (args == QStringList{QStringLiteral("--version")}) {
        std::puts("quillon-traffic " QUILLON_VERSION);
        return 0;
    }
    if (!args.isEmpty()) {
        std::fprintf(stderr, "quillon-traffic: takes no arguments (see --help)\n");
        return 2;
    }
    ServiceModule::useLinked(linkedServiceTable());
    Language::overrideSystemLanguages({QStringLiteral("en-US")});
    const QList<Account> accounts{
        {"loopback, 2 scopes x 8 projects", SampleAccounts::fillLoopback, "p_web"},
        {"4 scopes x 300 projects",
         [](FakeVercelAccount& account, const QDateTime& now) {
             SampleAccounts::fillLarge(account, now, 4, 300);
         },
         "p_0_0"}};
    std::printf("One hour of polling after the first quarter of an hour: a pass every 30 s when "
                "idle, every 8 s during a build.\n\n");
    std::printf("%-34s %-6s %12s %8s %12s %8s %8s %8s %6s\n", "account", "phase", "every pass",
                "req/h", "changes", "req/h", "bytes", "requests", "kept");
    for (const Account& account : accounts) {
        for (const bool building : {false, true}) {
            const std::optional<Figures> before = measure(account, true, building);
            const std::optional<Figures> after = measure(account, false, building);
            if (!before || !after) {
                std::fprintf(stderr, "quillon-traffic: the loop stopped answering (%s)\n",
                             account.name);
                return 1;
            }
            std::printf("%-34s %-6s %12s %8lld %12s %8lld %8s %8s %6d\n", account.name,
                        building ? "build" : "idle", qPrintable(amount(before->bytes)),
                        static_cast<long long>(before->requests), qPrintable(amount(after->bytes)),
                        static_cast<long long>(after->requests),
                        qPrintable(ratio(after->bytes, before->bytes)),
                        qPrintable(ratio(after->requests, before->requests)), after->kept);
            std::fflush(stdout);
        }
    }
    return 0;
}
