#include "support/CliProcess.h"

#include <QCoro/QCoroProcess>
#include <QProcess>
#include <gtest/gtest.h>

using namespace std::chrono_literals;

CliRun runCli(const QStringList& args, const QProcessEnvironment& env, const QString& secret) {
    QProcess process;
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(QUILLON_CLI_PATH), args);
    const bool finished = QCoro::waitFor(qCoro(process).waitForFinished(30s));
    EXPECT_TRUE(finished) << "quillon-cli did not finish";
    CliRun result{process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                  QString::fromUtf8(process.readAllStandardError())};
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_FALSE(result.out.contains(secret) || result.err.contains(secret))
        << "the token was printed";
    return result;
}
