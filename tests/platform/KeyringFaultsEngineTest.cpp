// The engine on a keyring that is locked or missing altogether (a real gnome-keyring-daemon, or
// none, on a private bus): the user reads where the token is or why there is none, nothing stored
// is lost, and the keyring's answers never hold the event loop up.
#include "core/common/Preferences.h"
#include "core/keychain/KeychainStore.h"
#include "core/monitor/AppState.h"
#include "core/monitor/PreferenceKeys.h"
#include "platform/LibsecretBackend.h"
#include "platform/ScopedEnvironment.h"
#include "support/EventLoopLatency.h"
#include "support/FakeDesktop.h"
#include "support/FakeVercelAccount.h"
#include "support/QtPrinters.h"
#include "support/WaitUntil.h"
#include "support/desktop/PrivateSecretService.h"

#include <QCoro/QCoroTask>
#include <QFile>
#include <gtest/gtest.h>

namespace {

using Keyring = PrivateSecretService::Keyring;
using namespace std::chrono_literals;

QByteArray fileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

// AppState over the Secret Service of a private bus, with a loopback Vercel account.
class KeyringFaultsEngineTest : public ::testing::Test, protected FakeDesktop {
protected:
    void start(Keyring kind) {
        const std::optional<QString> failure = keyring.start(kind);
        ASSERT_FALSE(failure) << failure->toStdString();
        bus.emplace("DBUS_SESSION_BUS_ADDRESS", keyring.busAddress().toUtf8());
        backend.emplace();
        store.emplace(*backend);
        account.addProject("", "p_web", "web");
        prefs->setBoolean(PreferenceKeys::projectsConfigured, true);
        prefs->setStringList(PreferenceKeys::monitoredProjectIDs, {"p_web"});
    }

    AppState& makeState() {
        state = std::make_unique<AppState>(AppState::Services{
            *prefs, *store, loginItem, notifications, clipboard, clock, server.baseUrl(), 2s});
        return *state;
    }

    bool showsProjects() const {
        return state->connection().isConnected() && state->snapshots().size() == 1 &&
               !state->isRefreshing();
    }

    // Declared first, destroyed last: the daemons outlive the backend that talks to them.
    PrivateSecretService keyring;
    std::optional<ScopedEnvironment> bus;
    std::optional<LibsecretBackend> backend;
    std::optional<KeychainStore> store;
    LoopbackHttpServer server;
    FakeVercelAccount account{server};
    std::unique_ptr<AppState> state;
};

TEST_F(KeyringFaultsEngineTest, LockedLoginKeyringSaysSoAndKeepsItsCopy) {
    start(Keyring::unlockedLogin);
    // Only the persistent copy, as after a new login: the session copy went with the old one.
    ASSERT_EQ(store->addToken("tok_kept_in_login", KeychainMode::synced), 0);
    const QStringList loginItems = keyring.itemsIn("login", "synced");
    ASSERT_EQ(loginItems.size(), 1);
    ASSERT_TRUE(keyring.lockLoginKeyring());
    const QByteArray preferences = fileBytes(prefs.filePath());
    EventLoopLatency latency;

    AppState& s = makeState();
    s.start(false);
    EXPECT_EQ(s.lastError(), "Keyring error: The keyring is locked.");
    EXPECT_EQ(s.connection(), Connection::noToken());
    EXPECT_TRUE(server.requests().isEmpty());

    // A token pasted meanwhile is kept for the session and works; the login keyring's item is
    // left as it was.
    QCoro::waitFor(s.saveToken("tok_pasted_while_locked"));
    EXPECT_EQ(s.keychainMode(), KeychainMode::localOnly);
    EXPECT_EQ(storageDescription(*s.keychainMode()),
              "Kept in memory for this session only. Your login keyring was not accessible.");
    EXPECT_FALSE(s.lastError());
    ASSERT_TRUE(waitUntil([&] { return showsProjects(); }));
    EXPECT_EQ(keyring.itemsIn("login", "synced"), loginItems);
    EXPECT_EQ(fileBytes(prefs.filePath()), preferences);
    EXPECT_LE(latency.worst().count(), 200);
}

TEST_F(KeyringFaultsEngineTest, NoSecretServiceSaysSoPromptly) {
    start(Keyring::none);
    const QByteArray preferences = fileBytes(prefs.filePath());
    EventLoopLatency latency;

    AppState& s = makeState();
    s.start(false);
    ASSERT_TRUE(s.lastError());
    EXPECT_TRUE(s.lastError()->startsWith("Keyring error: ")) << s.lastError()->toStdString();
    EXPECT_TRUE(s.lastError()->contains("org.freedesktop.secrets"));
    EXPECT_EQ(s.connection(), Connection::noToken());

    // Pasting a token cannot keep it anywhere: the same kind of sentence, no connection.
    QCoro::waitFor(s.saveToken("tok_nowhere_to_go"));
    EXPECT_TRUE(s.lastError()->startsWith("Keyring error: "));
    EXPECT_EQ(s.connection(), Connection::noToken());
    EXPECT_TRUE(server.requests().isEmpty());
    EXPECT_EQ(fileBytes(prefs.filePath()), preferences);
    EXPECT_LE(latency.worst().count(), 200);
}

} // namespace
