// The engine on a keyring that is locked or missing altogether (a real gnome-keyring-daemon, or
// none, on a private bus): the user reads where the token is or why there is none, nothing stored
// is lost, and the keyring's answers never hold the event loop up.
#include "core/monitor/PreferenceKeys.h"
#include "platform/PrivateKeyring.h"
#include "support/EngineFixture.h"
#include "support/EventLoopLatency.h"
#include "support/QtPrinters.h"

namespace {

using namespace std::chrono_literals;

class KeyringFaultsEngineTest : public EngineFixture {
protected:
    void start(std::optional<KeyringDaemon::Login> login) {
        const std::optional<QString> failure = keyring.start(login);
        ASSERT_FALSE(failure) << failure->toStdString();
        account.addProject("", "p_web", "web");
        prefs->setBoolean(PreferenceKeys::projectsConfigured, true);
        prefs->setStringList(PreferenceKeys::monitoredProjectIDs, {"p_web"});
        preferences = prefs.bytes();
        latency.emplace(); // starting the daemons is the test's work, not the engine's
    }

    AppState& startState() {
        AppState& s = makeState({*prefs, *keyring.store, loginItem, notifications, clipboard, clock,
                                 server.baseUrl(), 2s});
        s.start(false);
        return s;
    }

    PrivateKeyring keyring; // outlives the engine, which goes in TearDown
    QByteArray preferences;
    std::optional<EventLoopLatency> latency;
};

TEST_F(KeyringFaultsEngineTest, LockedLoginKeyringSaysSoAndKeepsItsCopy) {
    start(KeyringDaemon::Login::unlocked);
    // Only the persistent copy, as after a new login: the session copy went with the old one.
    ASSERT_EQ(keyring.store->addToken("tok_kept_in_login", KeychainMode::synced), 0);
    const QStringList loginItems = keyring.items("login", "synced");
    ASSERT_EQ(loginItems.size(), 1);
    ASSERT_TRUE(keyring.desktop.keyring().lockLoginKeyring());
    latency.emplace();

    AppState& s = startState();
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
    ASSERT_TRUE(
        waitUntil([&] { return s.connection().isConnected() && s.snapshots().size() == 1; }));
    EXPECT_EQ(keyring.items("login", "synced"), loginItems);
    EXPECT_EQ(prefs.bytes(), preferences);
    EXPECT_LE(latency->worst().count(), 200);
}

TEST_F(KeyringFaultsEngineTest, NoSecretServiceSaysSoPromptly) {
    start(std::nullopt);
    AppState& s = startState();
    ASSERT_TRUE(s.lastError());
    EXPECT_TRUE(s.lastError()->startsWith("Keyring error: ")) << s.lastError()->toStdString();
    EXPECT_TRUE(s.lastError()->contains("org.freedesktop.secrets"));
    EXPECT_EQ(s.connection(), Connection::noToken());

    // Pasting a token cannot keep it anywhere: the same kind of sentence, no connection.
    QCoro::waitFor(s.saveToken("tok_nowhere_to_go"));
    EXPECT_TRUE(s.lastError()->startsWith("Keyring error: "));
    EXPECT_EQ(s.connection(), Connection::noToken());
    EXPECT_TRUE(server.requests().isEmpty());
    EXPECT_EQ(prefs.bytes(), preferences);
    EXPECT_LE(latency->worst().count(), 200);
}

} // namespace
