// The token store against a real gnome-keyring-daemon on a private session bus.
#include "platform/PrivateKeyring.h"
#include "support/TempPreferences.h"

#include <QElapsedTimer>
#include <gtest/gtest.h>

namespace {

using Mode = KeychainStore::Mode;
using Login = KeyringDaemon::Login;

class KeyringTest : public ::testing::Test {
protected:
    void start(std::optional<Login> login) {
        const std::optional<QString> failure = keyring.start(login, &*marks);
        ASSERT_FALSE(failure) << failure->toStdString();
    }

    TempPreferences marks;
    PrivateKeyring keyring;
    std::optional<KeychainStore>& store = keyring.store;
};

TEST_F(KeyringTest, TheSyncedCopyGoesToTheLoginKeyringAndTheLocalOneToTheSession) {
    start(Login::unlocked);
    ASSERT_TRUE(store->storeToken(QStringLiteral("tok_first")));
    const auto mode = store->storeToken(QStringLiteral("tok_abc123"));
    ASSERT_TRUE(mode) << mode.error().errorDescription().toStdString();
    EXPECT_EQ(*mode, Mode::synced);
    const QStringList synced = keyring.items("login", "synced");
    ASSERT_EQ(synced.size(), 1);
    EXPECT_EQ(keyring.items("session", "local").size(), 1);
    EXPECT_TRUE(keyring.items("login", "local").isEmpty());
    EXPECT_EQ(keyring.desktop.keyring().labelOf(synced.first()), "Quillon Vercel token");
    EXPECT_EQ(store->loadToken()->token, "tok_abc123");
    EXPECT_EQ(store->loadToken()->mode, Mode::synced);
    ASSERT_EQ(keyring.backend->deleteItems(Mode::synced), 0);
    EXPECT_EQ(store->loadToken()->token, "tok_abc123"); // the local copy was replaced too
    EXPECT_EQ(store->loadToken()->mode, Mode::localOnly);

    ASSERT_EQ(keyring.backend->addItem(Mode::synced, "tok_synced", KeychainStore::label), 0);
    EXPECT_EQ(store->loadToken()->token, "tok_synced"); // over a different local copy

    store->deleteToken();
    EXPECT_FALSE(store->loadToken());
    EXPECT_TRUE(keyring.items("login", "synced").isEmpty());
    EXPECT_TRUE(keyring.items("session", "local").isEmpty());
    store->deleteToken();
    EXPECT_EQ(keyring.backend->deleteItems(Mode::synced), LibsecretBackend::notFound);

    ASSERT_EQ(keyring.backend->addItem(Mode::localOnly, QByteArray(), KeychainStore::label), 0);
    EXPECT_FALSE(store->loadToken()); // an empty text is no token
}

// A token replaced or removed while the login keyring is locked never comes back: the locked
// copy is marked outdated, skipped, and deleted at the first start that finds it unlocked.
TEST_F(KeyringTest, ALockedLoginKeyringKeepsTheTokenLocalAndNeverBringsBackAnOldOne) {
    start(Login::unlocked);
    ASSERT_TRUE(store->storeToken(QStringLiteral("tok_old")));
    ASSERT_TRUE(keyring.desktop.keyring().lockLoginKeyring());
    EXPECT_EQ(store->loadToken()->mode, Mode::localOnly); // there, but locked: no prompt

    EXPECT_EQ(store->storeToken(QStringLiteral("tok_new")).value(), Mode::localOnly);
    EXPECT_EQ(store->loadToken()->token, "tok_new");
    ASSERT_FALSE(keyring.desktop.startKeyring()); // a new login
    EXPECT_FALSE(store->loadToken());             // the session's copy went with the session
    EXPECT_TRUE(keyring.items("login", "synced").isEmpty());
    EXPECT_FALSE(marks->contains(KeychainStore::outdatedKey));

    ASSERT_TRUE(store->storeToken(QStringLiteral("tok_kept")));
    ASSERT_TRUE(keyring.desktop.keyring().lockLoginKeyring());
    const std::optional<KeychainError> kept = store->deleteToken();
    ASSERT_TRUE(kept);
    EXPECT_EQ(kept->errorDescription(), "Keyring error: The keyring is locked.");
    EXPECT_FALSE(store->loadToken());
    ASSERT_FALSE(keyring.desktop.startKeyring());
    EXPECT_FALSE(store->loadToken());
    EXPECT_TRUE(keyring.items("login", "synced").isEmpty());
}

TEST_F(KeyringTest, WithoutALoginKeyringTheTokenIsKeptLocalOnly) {
    start(Login::absent);
    const auto mode = store->storeToken(QStringLiteral("tok_abc123"));
    ASSERT_TRUE(mode) << mode.error().errorDescription().toStdString();
    EXPECT_EQ(*mode, Mode::localOnly);
    EXPECT_EQ(store->loadToken()->token, "tok_abc123");
    EXPECT_EQ(store->loadToken()->mode, Mode::localOnly);
}

// Owns the Secret Service's name, but the calls it receives wait for this thread, which the
// backend blocks: the store gives up in time. The bound is a hang guard.
TEST_F(KeyringTest, ASecretServiceThatNeverAnswersTimesOut) {
    start(std::nullopt);
    QDBusConnection silent = keyring.desktop.connection();
    QObject silentService;
    ASSERT_TRUE(silent.registerService(QStringLiteral("org.freedesktop.secrets")));
    ASSERT_TRUE(silent.registerObject(QStringLiteral("/org/freedesktop/secrets"), &silentService,
                                      QDBusConnection::ExportAllContents));
    QElapsedTimer elapsed;
    elapsed.start();
    const auto stored = store->storeToken(QStringLiteral("tok_abc123"));
    ASSERT_FALSE(stored);
    EXPECT_EQ(stored.error().status, LibsecretBackend::timedOut);
    EXPECT_EQ(stored.error().errorDescription(),
              "Keyring error: The Secret Service did not answer in time.");
    EXPECT_FALSE(store->loadToken());
    EXPECT_LT(elapsed.elapsed(), 10000);
    silent.unregisterObject(QStringLiteral("/org/freedesktop/secrets"));
}

} // namespace
