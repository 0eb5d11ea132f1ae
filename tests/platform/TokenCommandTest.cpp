// quillon-cli token, run as a process against a private keyring. The token goes in on standard
// input and must never come back out.
#include "platform/PrivateKeyring.h"
#include "support/CliProcess.h"

#include <gtest/gtest.h>

namespace {

const QString kToken = QStringLiteral("tok_cli_Secret42");

QStringList token(const char* command) {
    return {QStringLiteral("token"), QString::fromLatin1(command)};
}

TEST(TokenCommand, SetStatusAndRemoveWithoutEverPrintingTheToken) {
    PrivateKeyring keyring;
    const std::optional<QString> failure = keyring.start(KeyringDaemon::Login::unlocked);
    ASSERT_FALSE(failure) << failure->toStdString();
    const QProcessEnvironment env = keyring.desktop.environment();

    const CliRun set = runCli(token("set"), env, kToken, "  " + kToken.toUtf8() + "\n");
    EXPECT_EQ(set.exitCode, 0) << set.err.toStdString();
    EXPECT_TRUE(set.out.startsWith(QStringLiteral("synced: Kept in your login keyring")))
        << set.out.toStdString();
    ASSERT_TRUE(keyring.store->loadToken());
    EXPECT_EQ(keyring.store->loadToken()->token, kToken); // trimmed

    const CliRun status = runCli(token("status"), env, kToken);
    EXPECT_EQ(status.exitCode, 0);
    EXPECT_TRUE(status.out.startsWith(QStringLiteral("synced: "))) << status.out.toStdString();

    EXPECT_EQ(runCli(token("remove"), env, kToken).exitCode, 0);
    EXPECT_FALSE(keyring.store->loadToken());
    const CliRun after = runCli(token("status"), env, kToken);
    EXPECT_EQ(after.exitCode, 1);
    EXPECT_EQ(after.out, "No token is stored.\n");
}

// Without a Secret Service, or without any session bus, every command ends within seconds.
TEST(TokenCommand, WithoutAKeyringEveryCommandReportsItPromptly) {
    PrivateDesktop desktop;
    ASSERT_FALSE(desktop.startBus());
    QProcessEnvironment noBus = desktop.environment();
    noBus.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")); // and no display to autolaunch one
    for (const QProcessEnvironment& env : {desktop.environment(), noBus}) {
        SCOPED_TRACE(env.value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), "(none)").toStdString());
        const CliRun set = runCli(token("set"), env, kToken, kToken.toUtf8());
        EXPECT_EQ(set.exitCode, 1);
        EXPECT_TRUE(set.err.startsWith(QStringLiteral("quillon-cli: Keyring error: ")))
            << set.err.toStdString();
        const CliRun status = runCli(token("status"), env, kToken);
        EXPECT_EQ(status.exitCode, 1);
        EXPECT_EQ(status.out, "No token is stored.\n");
        EXPECT_LT(set.elapsedMs + status.elapsedMs, 10000); // a hang guard
    }
}

} // namespace
