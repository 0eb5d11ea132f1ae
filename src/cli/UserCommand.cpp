// quillon-cli user: the account the token belongs to, the first thing to check with a new token.
#include "cli/CliApi.h"
#include "cli/CliCommand.h"

namespace {

CliCommand userCommand();

QCoro::Task<int> runUser(QStringList args) {
    if (const std::optional<int> answered = answerWithoutArguments(args, userCommand()))
        co_return *answered;
    const std::optional<VercelAPI> api = apiFromEnvironment();
    if (!api)
        co_return kExitUsage;
    const RequestResult<UserResponse> user =
        co_await api->get<UserResponse>(QStringLiteral("/v2/user"), {});
    if (!user)
        co_return reportFailure(user.error());
    cliOut() << user->user.username << '\n';
    co_return 0;
}

CliCommand userCommand() {
    return {QStringLiteral("user"), QStringLiteral("user"),
            QStringLiteral("print the name of the account the token belongs to"), runUser};
}

const CliCommand::Registration registration(userCommand());

} // namespace
