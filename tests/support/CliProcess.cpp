#include "support/CliProcess.h"
#include "support/WaitUntil.h"

#include <QCoro/QCoroProcess>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <gtest/gtest.h>
#include <signal.h>

using namespace std::chrono_literals;

namespace {

QByteArray commandLine(const QProcess& process) {
    QFile file(QStringLiteral("/proc/%1/cmdline").arg(process.processId()));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

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

CliRun runCli(const QStringList& args, const QProcessEnvironment& env, const QString& secret,
              const QByteArray& input, int stopSignal, const QString& program,
              const QString& workingDirectory) {
    QProcess process;
    process.setProcessEnvironment(env);
    process.setWorkingDirectory(workingDirectory);
    QElapsedTimer clock;
    clock.start();
    process.start(program, args);
    EXPECT_TRUE(process.waitForStarted()) << program.toStdString();
    CliRun result;
    result.cmdline = commandLine(process);
    process.write(input);
    process.closeWriteChannel();
    if (stopSignal != 0) {
        EXPECT_TRUE(waitUntil([&] { return process.bytesAvailable() > 0; }, 20000));
        result.cmdline += commandLine(process); // once it has read the token and used it
        ::kill(pid_t(process.processId()), stopSignal);
    }
    if (!QCoro::waitFor(qCoro(process).waitForFinished(30s))) {
        ADD_FAILURE() << program.toStdString() << " did not finish";
        process.kill();
        process.waitForFinished();
    }
    result.elapsedMs = clock.elapsed();
    result.crashed = process.exitStatus() == QProcess::CrashExit;
    result.exitCode = result.crashed ? -1 : process.exitCode();
    result.out = QString::fromUtf8(process.readAllStandardOutput());
    result.err = QString::fromUtf8(process.readAllStandardError());
    // Compared without printing: the token must not reach the test's output.
    EXPECT_FALSE(!secret.isEmpty() && (result.out.contains(secret) || result.err.contains(secret)))
        << "the token was printed";
    return result;
}
