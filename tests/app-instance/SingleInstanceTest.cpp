#include "platform/SingleInstance.h"
#include "support/CliProcess.h"
#include "support/QtPrinters.h"
#include "support/desktop/PrivateDesktop.h"

#include <QDBusConnectionInterface>
#include <QTemporaryDir>
#include <gtest/gtest.h>

TEST(SingleInstance, ASecondLaunchBringsTheFirstInstancesSettingsForward) {
    PrivateDesktop desktop;
    const std::optional<QString> problem = desktop.startBus();
    ASSERT_FALSE(problem) << problem->toStdString();
    SingleInstance first(desktop.connection());
    int requests = 0;
    QObject::connect(&first, &SingleInstance::showSettingsRequested, [&requests] { ++requests; });
    ASSERT_EQ(first.claim(), SingleInstance::Claim::owned);
    EXPECT_TRUE(desktop.connection().interface()->isServiceRegistered(SingleInstance::serviceName));

    // The real application as the second launch; this process answers while it waits.
    QProcessEnvironment env = desktop.environment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("QUILLON_DEMO"), QStringLiteral("1"));
    QTemporaryDir runtime; // spares Qt's complaint about a missing runtime folder
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime.path());
    const CliRun second = runCli({}, env, {}, {}, 0, QStringLiteral(QUILLON_APP_PATH));
    EXPECT_EQ(second.exitCode, 0);
    EXPECT_EQ(second.err, "quillon: already running; its Settings window was brought forward\n");
    EXPECT_EQ(requests, 1);
}

TEST(SingleInstance, NeitherAHungOwnerNorAMissingBusBlocksTheStart) {
    PrivateDesktop desktop;
    ASSERT_FALSE(desktop.startBus());
    SingleInstance first(desktop.connection());
    ASSERT_EQ(first.claim(), SingleInstance::Claim::owned);

    // The owner cannot answer while this thread waits in the call: it is as good as hung.
    const QString name = QStringLiteral("second");
    QDBusConnection other = QDBusConnection::connectToBus(desktop.busAddress(), name);
    {
        SingleInstance second(other);
        EXPECT_EQ(second.claim(), SingleInstance::Claim::unanswered);
        EXPECT_FALSE(second.problem().isEmpty());
    }
    QDBusConnection::disconnectFromBus(name);

    SingleInstance alone(QDBusConnection(QStringLiteral("no such connection")));
    EXPECT_EQ(alone.claim(), SingleInstance::Claim::noBus);
}

TEST(SingleInstance, StatusAnswersWhatTheApplicationGivesIt) {
    PrivateDesktop desktop;
    ASSERT_FALSE(desktop.startBus());
    SingleInstance running(desktop.connection());
    running.setStatusSource([] { return QStringLiteral(R"({"tone":"error","todayCount":3})"); });
    ASSERT_EQ(running.claim(), SingleInstance::Claim::owned);

    // A status bar's script asks from its own process.
    const CliRun bar =
        runCli({"--session", "--print-reply=literal", "--dest=com.fernhollow.Quillon",
                "/com/fernhollow/Quillon", "com.fernhollow.Quillon.Status"},
               desktop.environment(), {}, {}, 0, QStringLiteral("dbus-send"));
    EXPECT_EQ(bar.exitCode, 0) << bar.err.toStdString();
    EXPECT_EQ(bar.out.trimmed(), R"({"tone":"error","todayCount":3})");
}
