#include "cli/CliCommand.h"

#include <cstdio>

namespace {
QList<CliCommand>& registry() {
    static QList<CliCommand> commands;
    return commands;
}
} // namespace

const QList<CliCommand>& CliCommand::all() {
    return registry();
}

CliCommand::Registration::Registration(CliCommand command) {
    registry().append(std::move(command));
}

QTextStream& cliOut() {
    static QTextStream stream(stdout);
    return stream;
}

QTextStream& cliErr() {
    static QTextStream stream(stderr);
    return stream;
}
