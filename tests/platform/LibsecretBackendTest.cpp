// The token store against a real gnome-keyring-daemon on a private session bus.
#include "platform/LibsecretBackend.h"
#include "core/keychain/KeychainStore.h"
#include "platform/ScopedEnvironment.h"
#include "support/TempPreferences.h"
#include "support/desktop/PrivateSecretService.h"

#include <gtest/gtest.h>

namespace {

using Mode = KeychainStore::Mode;
using Keyring = PrivateSecretService::Keyring;

class KeyringTest : public ::testing::Test {
protected:
    void start(Keyring keyring) {
        const std::optional<QString> failure = secrets.start(keyring);
        ASSERT_FALSE(failure) << failure->toStdString();
        bus.emplace("DBUS_SESSION_BUS_ADDRESS", secrets.busAddress().toUtf8());
        backend.emplace();
        store.emplace(*backend);
    }

    // Declared first, destroyed last: the daemons outlive the backend that talks to them.
    PrivateSecretService secrets;
    std::optional<ScopedEnvironment> bus;
    std::optional<LibsecretBackend> backend;
    std::optional<KeychainStore> store;
};

class UnlockedKeyringTest : public KeyringTest {
protected:
    void SetUp() override { start(Keyring::unlockedLogin); }
};

TEST_F(UnlockedKeyringTest, StoresTheSyncedCopyInTheLoginKeyringAndTheLocalOneInTheSession) {
    const auto mode = store->storeToken(QStringLiteral("tok_abc123"));

    ASSERT_TRUE(mode) << mode.error().errorDescription().toStdString();
    EXPECT_EQ(*mode, Mode::synced);
    const QStringList synced = secrets.itemsIn(QStringLiteral("login"), QStringLiteral("synced"));
    const QStringList local = secrets.itemsIn(QStringLiteral("session"), QStringLiteral("local"));
    ASSERT_EQ(synced.size(), 1);
    ASSERT_EQ(local.size(), 1);
    EXPECT_TRUE(secrets.itemsIn(QStringLiteral("login"), QStringLiteral("local")).isEmpty());
    EXPECT_EQ(secrets.labelOf(synced.first()), "Quillon Vercel token");
    const auto loaded = store->loadToken();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->token, "tok_abc123");
    EXPECT_EQ(loaded->mode, Mode::synced);
}

TEST_F(UnlockedKeyringTest, StoringAgainReplacesBothCopies) {
    ASSERT_TRUE(store->storeToken(QStringLiteral("tok_first")));
    ASSERT_TRUE(store->storeToken(QStringLiteral("tok_second")));

    EXPECT_EQ(secrets.itemsIn(QStringLiteral("login"), QStringLiteral("synced")).size(), 1);
    EXPECT_EQ(secrets.itemsIn(QStringLiteral("session"), QStringLiteral("local")).size(), 1);
    EXPECT_EQ(store->loadToken()->token, "tok_second");
    ASSERT_EQ(backend->deleteItems(Mode::synced), 0);
    EXPECT_EQ(store->loadToken()->token, "tok_second"); // the local copy was replaced too
}

TEST_F(UnlockedKeyringTest, DeleteRemovesBothCopiesAndIsHarmlessTwice) {
    ASSERT_TRUE(store->storeToken(QStringLiteral("tok_abc123")));

    store->deleteToken();
    EXPECT_FALSE(store->loadToken());
    EXPECT_TRUE(secrets.itemsIn(QStringLiteral("login"), QStringLiteral("synced")).isEmpty());
    EXPECT_TRUE(secrets.itemsIn(QStringLiteral("session"), QStringLiteral("local")).isEmpty());

    store->deleteToken();
    EXPECT_FALSE(store->loadToken());
    EXPECT_EQ(backend->deleteItems(Mode::synced), LibsecretBackend::notFound);
}

TEST_F(UnlockedKeyringTest, LocalCopyHoldingAnEmptyTextReadsAsNoToken) {
    ASSERT_EQ(backend->addItem(Mode::localOnly, QByteArray(), KeychainStore::label), 0);
    ASSERT_EQ(secrets.itemsIn(QStringLiteral("session"), QStringLiteral("local")).size(), 1);

    EXPECT_FALSE(store->loadToken());
}

TEST_F(UnlockedKeyringTest, SyncedCopyWinsOverADifferentLocalCopy) {
    ASSERT_EQ(backend->addItem(Mode::synced, "tok_synced", KeychainStore::label), 0);
    ASSERT_EQ(backend->addItem(Mode::localOnly, "tok_local", KeychainStore::label), 0);

    const auto loaded = store->loadToken();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->token, "tok_synced");
    EXPECT_EQ(loaded->mode, Mode::synced);

    backend->deleteItems(Mode::synced);
    EXPECT_EQ(store->loadToken()->token, "tok_local");
}

TEST_F(UnlockedKeyringTest, LockedLoginKeyringLeavesTheTokenLocalOnlyWithoutPrompting) {
    ASSERT_TRUE(store->storeToken(QStringLiteral("tok_before")));
    ASSERT_TRUE(secrets.lockLoginKeyring());

    const auto loaded = store->loadToken(); // the synced copy is there but locked
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->token, "tok_before");
    EXPECT_EQ(loaded->mode, Mode::localOnly);

    const auto mode = store->storeToken(QStringLiteral("tok_after"));
    ASSERT_TRUE(mode);
    EXPECT_EQ(*mode, Mode::localOnly);
    EXPECT_EQ(store->loadToken()->token, "tok_after");
}

// A token replaced or removed while the login keyring is locked never comes back: the locked
// copy is marked outdated, skipped, and deleted at the first start that finds it unlocked.
TEST_F(UnlockedKeyringTest, LockedKeyringNeverBringsBackAReplacedOrRemovedToken) {
    TempPreferences marks;
    KeychainStore marked(*backend, &*marks);
    ASSERT_TRUE(marked.storeToken(QStringLiteral("tok_old")));
    ASSERT_TRUE(secrets.lockLoginKeyring());

    EXPECT_EQ(marked.storeToken(QStringLiteral("tok_new")).value(), Mode::localOnly);
    EXPECT_EQ(marked.loadToken()->token, "tok_new");
    ASSERT_FALSE(secrets.relogin());
    EXPECT_FALSE(marked.loadToken()); // the session's copy went with the session
    EXPECT_TRUE(secrets.itemsIn("login", "synced").isEmpty());
    EXPECT_FALSE(marks->contains(KeychainStore::outdatedKey));

    ASSERT_TRUE(marked.storeToken(QStringLiteral("tok_kept")));
    ASSERT_TRUE(secrets.lockLoginKeyring());
    const std::optional<KeychainError> kept = marked.deleteToken();
    ASSERT_TRUE(kept);
    EXPECT_EQ(kept->errorDescription(), "Keyring error: The keyring is locked.");
    EXPECT_FALSE(marked.loadToken());
    ASSERT_FALSE(secrets.relogin());
    EXPECT_FALSE(marked.loadToken());
    EXPECT_TRUE(secrets.itemsIn("login", "synced").isEmpty());
}

class MissingLoginKeyringTest : public KeyringTest {
protected:
    void SetUp() override { start(Keyring::noLoginKeyring); }
};

TEST_F(MissingLoginKeyringTest, TokenIsKeptLocalOnly) {
    const auto mode = store->storeToken(QStringLiteral("tok_abc123"));

    ASSERT_TRUE(mode) << mode.error().errorDescription().toStdString();
    EXPECT_EQ(*mode, Mode::localOnly);
    const auto loaded = store->loadToken();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->token, "tok_abc123");
    EXPECT_EQ(loaded->mode, Mode::localOnly);
}

} // namespace
