#include "core/keychain/KeychainStore.h"
#include "support/FrenchDesktop.h"
#include "support/MemorySecretBackend.h"
#include "support/TempPreferences.h"

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

TEST_F(KeychainStoreTest, StoresBothCopiesReplacesThemAndDeletesThem) {
    ASSERT_EQ(store.storeToken(QStringLiteral("tok_old")).value(), Mode::synced);
    // The fake refuses duplicates, so this only succeeds when each write deletes first.
    ASSERT_EQ(store.storeToken(QStringLiteral("tok_nouveau_é")).value(), Mode::synced);
    for (const Mode copy : {Mode::synced, Mode::localOnly}) {
        EXPECT_EQ(backend.items.at(copy), QStringLiteral("tok_nouveau_é").toUtf8());
        EXPECT_EQ(backend.labels.at(copy), "Quillon Vercel token");
    }
    EXPECT_EQ(store.loadToken()->token, QStringLiteral("tok_nouveau_é"));
    EXPECT_EQ(store.loadToken()->mode, Mode::synced);

    store.deleteToken();
    EXPECT_TRUE(backend.items.empty());
    store.deleteToken();
    EXPECT_FALSE(store.loadToken());
}

TEST_F(KeychainStoreTest, AFailedWriteLeavesTheOtherCopyAndBothFailingReportTheSyncedStatus) {
    backend.failingWrites[Mode::synced] = kMissingEntitlement;
    EXPECT_EQ(store.storeToken(QStringLiteral("tok_abc")).value(), Mode::localOnly);
    EXPECT_EQ(store.loadToken()->token, "tok_abc");
    EXPECT_EQ(store.loadToken()->mode, Mode::localOnly);

    backend.failingWrites = {{Mode::localOnly, kWriteRefused}};
    backend.items.clear();
    EXPECT_EQ(store.storeToken(QStringLiteral("tok_abc")).value(), Mode::synced);
    EXPECT_EQ(backend.items.count(Mode::localOnly), 0u);

    backend.failingWrites[Mode::synced] = kMissingEntitlement;
    backend.items.clear();
    backend.messages[kMissingEntitlement] = QStringLiteral("A required entitlement is missing.");
    backend.messages[kWriteRefused] = QStringLiteral("The local write was refused.");
    const auto failed = store.storeToken(QStringLiteral("tok_abc"));
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.error().status, kMissingEntitlement);
    EXPECT_EQ(failed.error().errorDescription(),
              "Keyring error: A required entitlement is missing.");
    EXPECT_FALSE(store.loadToken());
}

TEST_F(KeychainStoreTest, TheSyncedCopyWinsUnlessItIsDamagedOrUnreadable) {
    backend.items[Mode::synced] = "tok_synced";
    backend.items[Mode::localOnly] = "tok_local";
    EXPECT_EQ(store.loadToken()->token, "tok_synced");
    EXPECT_EQ(store.loadToken()->mode, Mode::synced);
    // Empty, not UTF-8, or cut in the middle of a sequence.
    for (const QByteArray& synced :
         {QByteArray(), QByteArray("\xff\xfe tok"), QByteArray("tok\xe2\x82")}) {
        backend.items[Mode::synced] = synced;
        EXPECT_EQ(store.loadToken()->token, "tok_local") << synced.toHex().toStdString();
        EXPECT_EQ(store.loadToken()->mode, Mode::localOnly);
    }
    backend.items[Mode::synced] = "tok_synced";
    backend.failingReads[Mode::synced] = kWriteRefused;
    EXPECT_EQ(store.loadToken()->mode, Mode::localOnly);
    // A damaged local copy alone reads as no token.
    backend.items.erase(Mode::synced);
    for (const QByteArray& local : {QByteArray(), QByteArray("\xc3\x28")}) {
        backend.items[Mode::localOnly] = local;
        EXPECT_FALSE(store.loadToken()) << local.toHex().toStdString();
    }
}

TEST(KeychainError, WithoutThePlatformsTextTheStatusIsToldInTheUsersLanguage) {
    TempPreferences preferences; // no `appLanguage`: the system's language decides
    EXPECT_EQ((KeychainError{-5, QString()}).errorDescription(),
              "Keyring error: Secret Service error -5");
    FrenchDesktop french;
    EXPECT_EQ((KeychainError{-34018, std::nullopt}).errorDescription(),
              "Erreur du trousseau : Erreur Secret Service -34018");
}

} // namespace
