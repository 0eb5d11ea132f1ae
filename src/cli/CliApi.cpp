#include "cli/CliApi.h"

#include "cli/CliCommand.h"

std::optional<VercelAPI> apiFromEnvironment() {
    const QString token = qEnvironmentVariable("VERCEL_TOKEN").trimmed();
    if (token.isEmpty()) {
        cliErr() << "quillon-cli: VERCEL_TOKEN is not set. Create a token at "
                    "https://vercel.com/account/tokens and export it.\n";
        return std::nullopt;
    }
    QString problem;
    const std::optional<QUrl> base = VercelAPI::baseFromEnvironment(&problem);
    if (!base) {
        cliErr() << "quillon-cli: " << problem << '\n';
        return std::nullopt;
    }
    return VercelAPI(token, *base);
}

int reportFailure(const RequestError& error) {
    cliErr() << error.message() << '\n';
    return kExitFailed;
}

void printUsage(const CliCommand& command) {
    cliOut() << "Usage: quillon-cli " << command.usage << "\n\n" << command.summary << '\n';
}
