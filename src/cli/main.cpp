// quillon-cli: Quillon's engine without a desktop. The access token comes from the
// environment (VERCEL_TOKEN) or the keyring, never from the argument list.
#include "cli/CliCommand.h"
#include "platform/ServiceModule.h"

#include <QCoreApplication>
#include <QTimer>
#include <algorithm>

namespace {

void printHelp(QTextStream& out) {
    out << "Usage: quillon-cli COMMAND [ARGS]\n\n"
           "Watches Vercel deployments from the terminal.\n\nCommands:\n";
    QList<CliCommand> commands = CliCommand::all();
    std::sort(commands.begin(), commands.end(),
              [](const CliCommand& a, const CliCommand& b) { return a.usage < b.usage; });
    // A usage too long for the column puts its summary on the next line, in the column.
    constexpr int column = 30;
    for (const CliCommand& command : commands) {
        out << "  " << command.usage.leftJustified(column);
        out << (command.usage.size() > column ? QString(QLatin1Char('\n')).leftJustified(column + 4)
                                              : QStringLiteral(" "));
        out << command.summary << '\n';
    }
    out << "\nOptions:\n  --help      show this help\n  --version   show the version\n\n"
           "Environment:\n"
           "  VERCEL_TOKEN        access token (never given as an argument)\n"
           "  QUILLON_API_BASE    Vercel API address (https://, or http:// on loopback)\n"
           "  QUILLON_DEMO        1: fake projects and deployments, no network\n"
           "  QUILLON_DEMO_SPEED  plays the demo's scenes this many times faster\n";
    out.flush();
}

QCoro::Task<> runAndExit(CliCommand command, QStringList args) {
    const int code = co_await command.run(std::move(args));
    cliOut().flush();
    cliErr().flush();
    QCoreApplication::exit(code);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("quillon-cli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QUILLON_VERSION));
    ServiceModule::useLinked(linkedServiceTable());

    QStringList args = QCoreApplication::arguments().mid(1);
    if (args.isEmpty()) {
        printHelp(cliErr());
        return 2;
    }
    const QString name = args.takeFirst();
    if (name == QLatin1String("--help") || name == QLatin1String("-h")) {
        printHelp(cliOut());
        return 0;
    }
    if (name == QLatin1String("--version")) {
        cliOut() << "quillon-cli " << QUILLON_VERSION << '\n';
        cliOut().flush();
        return 0;
    }
    const QList<CliCommand>& commands = CliCommand::all();
    const auto found = std::find_if(commands.begin(), commands.end(),
                                    [&](const CliCommand& c) { return c.name == name; });
    if (found == commands.end()) {
        cliErr() << "quillon-cli: unknown command '" << name << "' (see --help)\n";
        cliErr().flush();
        return 2;
    }
    QTimer::singleShot(0, [command = *found, args]() { runAndExit(command, args); });
    return app.exec();
}
