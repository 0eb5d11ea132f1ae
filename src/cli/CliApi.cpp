#include "cli/CliApi.h"

#include "cli/CliCommand.h"
#include "core/common/Language.h"
#include "core/keychain/KeychainStore.h"
#include "core/monitor/ConnectionState.h"

std::optional<VercelAPI> apiFromEnvironment() {
    const QString token = qEnvironmentVariable("VERCEL_TOKEN").trimmed();
    if (token.isEmpty()) {
        cliErr() << "quillon-cli: VERCEL_TOKEN is not set. Create a token at "
                    "https://vercel.com/account/tokens and export it.\n";
        return std::nullopt;
    }
    const std::optional<QUrl> base = apiBaseFromEnvironment();
    if (!base)
        return std::nullopt;
    return VercelAPI(token, *base);
}

std::optional<QUrl> apiBaseFromEnvironment() {
    QString problem;
    const std::optional<QUrl> base = VercelAPI::baseFromEnvironment(&problem);
    if (!base)
        cliErr() << "quillon-cli: " << problem << '\n';
    return base;
}

std::optional<QString> tokenFromEnvironmentOrKeyring(KeychainStore& keychain) {
    const QString fromEnvironment = qEnvironmentVariable("VERCEL_TOKEN").trimmed();
    if (!fromEnvironment.isEmpty())
        return fromEnvironment;
    if (const auto stored = keychain.loadToken())
        return stored->token;
    cliErr() << "quillon-cli: no token. Set VERCEL_TOKEN or store one with "
                "'quillon-cli token set'.\n";
    return std::nullopt;
}

bool oneShotGivesUp(const Connection& connection, const QDateTime& start) {
    switch (connection.kind) {
    case Connection::Kind::failed:
        return true;
    case Connection::Kind::retrying:
        return connection.retryAt > start.addSecs(30);
    default:
        return false;
    }
}

void printConnectionFailure(const Connection& connection) {
    cliErr() << Language::text("Connection failed", "Connexion impossible") << ": "
             << connection.detail << '\n';
    cliErr().flush();
}

int reportFailure(const RequestError& error) {
    cliErr() << error.message() << '\n';
    return kExitFailed;
}

void printUsage(const CliCommand& command) {
    cliOut() << "Usage: quillon-cli " << command.usage << "\n\n" << command.summary << '\n';
}

std::optional<int> answerWithoutArguments(const QStringList& args, const CliCommand& command) {
    if (args == QStringList{QStringLiteral("--help")}) {
        printUsage(command);
        return 0;
    }
    if (args.isEmpty())
        return std::nullopt;
    cliErr() << "quillon-cli " << command.name << ": unexpected argument '" << args.first()
             << "'\n";
    return kExitUsage;
}

QStringList alignedLines(const QList<QStringList>& rows) {
    QList<qsizetype> widths;
    for (const QStringList& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (qsizetype i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    QStringList lines;
    for (const QStringList& row : rows) {
        QString line;
        for (qsizetype i = 0; i < row.size(); ++i)
            line += i + 1 < row.size() ? row[i].leftJustified(widths[i] + 2) : row[i];
        lines.append(line);
    }
    return lines;
}
