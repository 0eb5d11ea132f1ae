#pragma once

#include <QCoro/QCoroTask>
#include <QStringList>
#include <QTextStream>
#include <functional>

// One sub-command of quillon-cli. Each command file registers itself with a static
// CliCommand::Registration, so adding a command touches no shared table.
struct CliCommand {
    QString name;
    QString usage;   // "deployments [--team ID]"
    QString summary; // one line for --help
    // Runs with the arguments after the command name; answers the exit code.
    std::function<QCoro::Task<int>(QStringList)> run;

    static const QList<CliCommand>& all();

    struct Registration {
        explicit Registration(CliCommand command);
    };
};

// Standard output and standard error as UTF-8 text streams.
QTextStream& cliOut();
QTextStream& cliErr();
