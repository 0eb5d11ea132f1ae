// Without a working Secret Service the store answers promptly: an error for a write, no token for
// a read. The time bounds are hang guards, far above what a healthy call takes.
#include "core/keychain/KeychainStore.h"
#include "platform/LibsecretBackend.h"
#include "platform/ScopedEnvironment.h"
#include "support/desktop/PrivateSecretService.h"

#include <QElapsedTimer>
#include <gtest/gtest.h>

namespace {

constexpr qint64 kOutageGuardMs = 10000;

struct Outcome {
    Expected<KeychainMode, KeychainError> stored;
    std::optional<KeychainStore::StoredToken> loaded;
    qint64 elapsedMs;
};

// Stores, loads and deletes with a fresh backend on the current session bus.
Outcome storeLoadAndDelete() {
    QElapsedTimer clock;
    clock.start();
    LibsecretBackend backend;
    KeychainStore store(backend);
    auto stored = store.storeToken(QStringLiteral("tok_abc123"));
    auto loaded = store.loadToken();
    store.deleteToken();
    return {std::move(stored), std::move(loaded), clock.elapsed()};
}

TEST(SecretServiceOutageTest, BusWithoutAKeyringDaemon) {
    PrivateSecretService secrets;
    const std::optional<QString> failure = secrets.start(PrivateSecretService::Keyring::none);
    ASSERT_FALSE(failure) << failure->toStdString();
    const ScopedEnvironment bus("DBUS_SESSION_BUS_ADDRESS", secrets.busAddress().toUtf8());

    const Outcome outcome = storeLoadAndDelete();

    ASSERT_FALSE(outcome.stored);
    EXPECT_EQ(outcome.stored.error().status, LibsecretBackend::noService);
    const QString description = outcome.stored.error().errorDescription();
    EXPECT_TRUE(description.startsWith(QStringLiteral("Keyring error: ")));
    EXPECT_TRUE(description.contains(QStringLiteral("org.freedesktop.secrets")))
        << description.toStdString();
    EXPECT_FALSE(outcome.loaded);
    EXPECT_LT(outcome.elapsedMs, kOutageGuardMs);
}

TEST(SecretServiceOutageTest, UnreachableBus) {
    QTemporaryDir nowhere;
    const ScopedEnvironment bus("DBUS_SESSION_BUS_ADDRESS",
                                "unix:path=" + nowhere.filePath(QStringLiteral("bus")).toUtf8());

    const Outcome outcome = storeLoadAndDelete();

    ASSERT_FALSE(outcome.stored);
    EXPECT_EQ(outcome.stored.error().status, LibsecretBackend::noService);
    EXPECT_TRUE(outcome.stored.error().platformMessage.has_value());
    EXPECT_FALSE(outcome.loaded);
    EXPECT_LT(outcome.elapsedMs, kOutageGuardMs);
}

TEST(SecretServiceOutageTest, SecretServiceThatNeverAnswers) {
    PrivateSecretService secrets;
    const std::optional<QString> failure = secrets.start(PrivateSecretService::Keyring::none);
    ASSERT_FALSE(failure) << failure->toStdString();
    // Owns the name, but the calls it receives wait for this thread, which the backend blocks.
    QDBusConnection silent = secrets.connection();
    QObject silentService;
    ASSERT_TRUE(silent.registerService(QStringLiteral("org.freedesktop.secrets")));
    ASSERT_TRUE(silent.registerObject(QStringLiteral("/org/freedesktop/secrets"), &silentService,
                                      QDBusConnection::ExportAllContents));
    const ScopedEnvironment bus("DBUS_SESSION_BUS_ADDRESS", secrets.busAddress().toUtf8());

    const Outcome outcome = storeLoadAndDelete();

    ASSERT_FALSE(outcome.stored);
    EXPECT_EQ(outcome.stored.error().status, LibsecretBackend::timedOut);
    EXPECT_EQ(outcome.stored.error().errorDescription(),
              "Keyring error: The Secret Service did not answer in time.");
    EXPECT_FALSE(outcome.loaded);
    EXPECT_LT(outcome.elapsedMs, kOutageGuardMs);
    silent.unregisterObject(QStringLiteral("/org/freedesktop/secrets"));
}

} // namespace
