#include "core/wait/GitCheckout.h"

#include <QCoro/QCoroProcess>
#include <QProcess>

using namespace std::chrono_literals;

namespace {

QString gitProgram() {
    return QStringLiteral("git");
}

// git's standard output split in lines, or absent when it could not run or failed.
QCoro::Task<std::optional<QStringList>> git(QString folder, QStringList args) {
    QProcess process;
    process.setWorkingDirectory(folder);
    // Nothing here needs a password or an editor: never let git ask for one.
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("GIT_TERMINAL_PROMPT"), QStringLiteral("0"));
    process.setProcessEnvironment(env);
    process.setStandardInputFile(QProcess::nullDevice());
    auto running = qCoro(process);
    if (!co_await running.start(gitProgram(), args))
        co_return std::nullopt;
    const bool finished = co_await running.waitForFinished(10s);
    if (!finished || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        process.kill();
        co_return std::nullopt;
    }
    co_return QString::fromUtf8(process.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

// Built outside the coroutine: GCC 12 cannot compile QStringLiteral inside one's expressions.
QStringList topLevelArgs() {
    return {QStringLiteral("rev-parse"), QStringLiteral("--show-toplevel")};
}
QStringList headArgs() {
    return {QStringLiteral("rev-parse"), QStringLiteral("--verify"), QStringLiteral("-q"),
            QStringLiteral("HEAD")};
}
QStringList originArgs() {
    return {QStringLiteral("remote"), QStringLiteral("get-url"), QStringLiteral("origin")};
}

} // namespace

QCoro::Task<GitCheckout> readGitCheckout(QString folder) {
    GitCheckout checkout;
    const std::optional<QStringList> top = co_await git(folder, topLevelArgs());
    if (!top || top->isEmpty())
        co_return checkout;
    checkout.topLevel = top->first();
    if (const std::optional<QStringList> head = co_await git(folder, headArgs()))
        checkout.head = head->value(0);
    if (const std::optional<QStringList> origin = co_await git(folder, originArgs()))
        checkout.originUrl = origin->value(0);
    co_return checkout;
}
