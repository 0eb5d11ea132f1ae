#include "support/CliProcess.h"

#include <QCoro/QCoroProcess>
#include <QProcess>
#include <gtest/gtest.h>

using namespace std::chrono_literals;

QProcessEnvironment isolatedCliEnvironment(const QString& token, const QString& apiBase,
                                           const QString& home) {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("VERCEL_TOKEN"), token);
    env.insert(QStringLiteral("QUILLON_API_BASE"), apiBase);
    env.insert(QStringLiteral("LANGUAGE"), QStringLiteral("en"));
    env.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/config"));
    env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
               QStringLiteral("unix:path=") + home + QStringLiteral("/no-bus"));
    env.remove(QStringLiteral("QUILLON_DEMO"));
    env.remove(QStringLiteral("DISPLAY"));
    return env;
}

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
