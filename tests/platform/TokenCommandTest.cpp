// quillon-cli token, run as a process against a private keyring. The token goes in on standard
// input and must never come back out.
#include "core/keychain/KeychainStore.h"
#include "platform/LibsecretBackend.h"
#include "platform/ScopedEnvironment.h"
#include "support/desktop/PrivateSecretService.h"

#include <QElapsedTimer>
#include <gtest/gtest.h>

namespace {

const QString kToken = QStringLiteral("tok_cli_Secret42");
constexpr qint64 kHangGuardMs = 10000;

struct CliRun {
    int exitCode = -1;
    QString out;
    QString err;
    qint64 elapsedMs = 0;

    bool shows(const QString& text) const { return out.contains(text) || err.contains(text); }
};

CliRun runCli(const QProcessEnvironment& env, const QStringList& args,
              const QByteArray& input = {}) {
    QProcess process;
    process.setProcessEnvironment(env);
    QElapsedTimer clock;
    clock.start();
    process.start(QStringLiteral(QUILLON_CLI_PATH), args);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(30000))
        process.kill();
    process.waitForFinished();
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError()), clock.elapsed()};
}

QStringList token(const char* command) {
    return {QStringLiteral("token"), QString::fromLatin1(command)};
}

class TokenCommandTest : public ::testing::Test {
protected:
    void SetUp() override {
        const std::optional<QString> failure =
            secrets.start(PrivateSecretService::Keyring::unlockedLogin);
        ASSERT_FALSE(failure) << failure->toStdString();
    }

    // What the keyring holds, read in-process with the library the application uses.
    std::optional<KeychainStore::StoredToken> storedToken() {
        const ScopedEnvironment bus("DBUS_SESSION_BUS_ADDRESS", secrets.busAddress().toUtf8());
        LibsecretBackend backend;
        return KeychainStore(backend).loadToken();
    }

    PrivateSecretService secrets;
};

TEST_F(TokenCommandTest, SetStatusAndRemoveWithoutEverPrintingTheToken) {
    const QProcessEnvironment env = secrets.environment();

    const CliRun set = runCli(env, token("set"), "  " + kToken.toUtf8() + "\n");
    EXPECT_EQ(set.exitCode, 0) << set.err.toStdString();
    EXPECT_TRUE(set.out.startsWith(QStringLiteral("synced: Kept in your login keyring")))
        << set.out.toStdString();
    const auto stored = storedToken();
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->token, kToken); // trimmed

    const CliRun status = runCli(env, token("status"));
    EXPECT_EQ(status.exitCode, 0);
    EXPECT_TRUE(status.out.startsWith(QStringLiteral("synced: "))) << status.out.toStdString();

    const CliRun remove = runCli(env, token("remove"));
    EXPECT_EQ(remove.exitCode, 0);
    EXPECT_FALSE(storedToken());

    const CliRun after = runCli(env, token("status"));
    EXPECT_EQ(after.exitCode, 1);
    EXPECT_EQ(after.out, "No token is stored.\n");

    for (const CliRun& run : {set, status, remove, after})
        EXPECT_FALSE(run.shows(kToken));
}

TEST_F(TokenCommandTest, RefusesAnEmptyTokenAndATokenInTheArguments) {
    const QProcessEnvironment env = secrets.environment();

    const CliRun empty = runCli(env, token("set"), " \n\t\n");
    EXPECT_EQ(empty.exitCode, 2);
    EXPECT_TRUE(empty.err.contains(QStringLiteral("no token on standard input")));

    const CliRun inArguments =
        runCli(env, {QStringLiteral("token"), QStringLiteral("set"), kToken});
    EXPECT_EQ(inArguments.exitCode, 2);
    EXPECT_FALSE(inArguments.shows(kToken));
    EXPECT_FALSE(storedToken());

    const CliRun bare = runCli(env, {QStringLiteral("token")});
    EXPECT_EQ(bare.exitCode, 2);
    const CliRun help = runCli(env, {QStringLiteral("token"), QStringLiteral("--help")});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.contains(QStringLiteral("token set|status|remove")));
}

// Without a Secret Service, or without any session bus, every command ends within seconds.
TEST(TokenCommandOutageTest, ReportsTheKeyringErrorPromptly) {
    PrivateSecretService secrets;
    const std::optional<QString> failure = secrets.start(PrivateSecretService::Keyring::none);
    ASSERT_FALSE(failure) << failure->toStdString();
    QProcessEnvironment noBus = secrets.environment();
    noBus.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")); // and no display to autolaunch one

    for (const QProcessEnvironment& env : {secrets.environment(), noBus}) {
        SCOPED_TRACE(env.value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), "(none)").toStdString());
        const CliRun set = runCli(env, token("set"), kToken.toUtf8());
        EXPECT_EQ(set.exitCode, 1);
        EXPECT_TRUE(set.err.startsWith(QStringLiteral("quillon-cli: Keyring error: ")))
            << set.err.toStdString();
        EXPECT_LT(set.elapsedMs, kHangGuardMs);

        const CliRun status = runCli(env, token("status"));
        EXPECT_EQ(status.exitCode, 1);
        EXPECT_EQ(status.out, "No token is stored.\n");
        EXPECT_LT(status.elapsedMs, kHangGuardMs);

        EXPECT_FALSE(set.shows(kToken) || status.shows(kToken));
    }
}

} // namespace
