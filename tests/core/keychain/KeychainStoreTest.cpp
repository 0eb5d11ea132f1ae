#include "core/keychain/KeychainStore.h"
#include "support/MemorySecretBackend.h"

#include <QList>
#include <gtest/gtest.h>

namespace {

using Mode = KeychainStore::Mode;

constexpr int kMissingEntitlement = -34018;
constexpr int kWriteRefused = -25308;

class KeychainStoreTest : public ::testing::Test {
protected:
    MemorySecretBackend backend;
    KeychainStore store{backend};
};

TEST_F(KeychainStoreTest, StoresBothCopiesAndLoadsTheSyncedOne) {
    const auto mode = store.storeToken(QStringLiteral("tok_abc"));

    ASSERT_TRUE(mode);
    EXPECT_EQ(*mode, Mode::synced);
    EXPECT_EQ(backend.items.at(Mode::synced), "tok_abc");
    EXPECT_EQ(backend.items.at(Mode::localOnly), "tok_abc");
    EXPECT_EQ(backend.labels.at(Mode::synced), "Quillon Vercel token");
    EXPECT_EQ(backend.labels.at(Mode::localOnly), "Quillon Vercel token");
    const auto loaded = store.loadToken();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->token, "tok_abc");
    EXPECT_EQ(loaded->mode, Mode::synced);
}

TEST_F(KeychainStoreTest, StoringAgainReplacesBothCopies) {
    ASSERT_TRUE(store.storeToken(QStringLiteral("tok_old")));
    // The fake refuses duplicates, so this only succeeds when each write deletes first.
    const auto mode = store.storeToken(QStringLiteral("tok_nouveau_é"));

    ASSERT_TRUE(mode);
    EXPECT_EQ(*mode, Mode::synced);
    EXPECT_EQ(backend.items.at(Mode::synced), QStringLiteral("tok_nouveau_é").toUtf8());
    EXPECT_EQ(backend.items.at(Mode::localOnly), QStringLiteral("tok_nouveau_é").toUtf8());
    EXPECT_EQ(store.loadToken()->token, QStringLiteral("tok_nouveau_é"));
}

TEST_F(KeychainStoreTest, FailedSyncedWriteLeavesTheTokenLocalOnly) {
    backend.failingWrites[Mode::synced] = kMissingEntitlement;

    const auto mode = store.storeToken(QStringLiteral("tok_abc"));

    ASSERT_TRUE(mode);
    EXPECT_EQ(*mode, Mode::localOnly);
    const auto loaded = store.loadToken();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->token, "tok_abc");
    EXPECT_EQ(loaded->mode, Mode::localOnly);
}

TEST_F(KeychainStoreTest, FailedLocalWriteStillAnswersSynced) {
    backend.failingWrites[Mode::localOnly] = kWriteRefused;

    const auto mode = store.storeToken(QStringLiteral("tok_abc"));

    ASSERT_TRUE(mode);
    EXPECT_EQ(*mode, Mode::synced);
    EXPECT_EQ(backend.items.count(Mode::localOnly), 0u);
}

TEST_F(KeychainStoreTest, BothWritesFailingReportTheSyncedStatus) {
    backend.failingWrites[Mode::synced] = kMissingEntitlement;
    backend.failingWrites[Mode::localOnly] = kWriteRefused;
    backend.messages[kMissingEntitlement] = QStringLiteral("A required entitlement is missing.");
    backend.messages[kWriteRefused] = QStringLiteral("The local write was refused.");

    const auto mode = store.storeToken(QStringLiteral("tok_abc"));

    ASSERT_FALSE(mode);
    EXPECT_EQ(mode.error().status, kMissingEntitlement);
    EXPECT_EQ(mode.error().errorDescription(), "Keyring error: A required entitlement is missing.");
    EXPECT_FALSE(store.loadToken());
}

TEST_F(KeychainStoreTest, SyncedCopyWinsOverADifferentLocalCopy) {
    backend.items[Mode::synced] = "tok_synced";
    backend.items[Mode::localOnly] = "tok_local";

    const auto loaded = store.loadToken();

    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->token, "tok_synced");
    EXPECT_EQ(loaded->mode, Mode::synced);
}

TEST_F(KeychainStoreTest, DamagedOrUnreadableSyncedCopyFallsBackToTheLocalOne) {
    const QList<QByteArray> damaged = {QByteArray(), QByteArray("\xff\xfe tok"),
                                       QByteArray("tok\xe2\x82")}; // last: truncated sequence
    for (const QByteArray& synced : damaged) {
        SCOPED_TRACE(synced.toHex().toStdString());
        backend.items[Mode::synced] = synced;
        backend.items[Mode::localOnly] = "tok_local";

        const auto loaded = store.loadToken();

        ASSERT_TRUE(loaded);
        EXPECT_EQ(loaded->token, "tok_local");
        EXPECT_EQ(loaded->mode, Mode::localOnly);
    }
    backend.items[Mode::synced] = "tok_synced";
    backend.failingReads[Mode::synced] = kWriteRefused;
    EXPECT_EQ(store.loadToken()->mode, Mode::localOnly);
}

TEST_F(KeychainStoreTest, DamagedLocalCopyAloneReadsAsNoToken) {
    for (const QByteArray& local : {QByteArray(), QByteArray("\xc3\x28")}) {
        SCOPED_TRACE(local.toHex().toStdString());
        backend.items[Mode::localOnly] = local;
        EXPECT_FALSE(store.loadToken());
    }
}

TEST_F(KeychainStoreTest, DeleteRemovesBothCopiesAndIsHarmlessTwice) {
    ASSERT_TRUE(store.storeToken(QStringLiteral("tok_abc")));

    store.deleteToken();
    EXPECT_FALSE(store.loadToken());
    EXPECT_TRUE(backend.items.empty());

    store.deleteToken();
    EXPECT_FALSE(store.loadToken());
    ASSERT_TRUE(store.storeToken(QStringLiteral("tok_again")));
    EXPECT_EQ(store.loadToken()->token, "tok_again");
}

} // namespace
