#pragma once

#include "core/monitor/AppState.h"
#include "support/FakeDesktop.h"
#include "support/FakeVercelAccount.h"
#include "support/WaitUntil.h"

#include <QCoro/QCoroTask>
#include <gtest/gtest.h>

// An AppState wired to a fake Vercel account on 127.0.0.1, an in-memory keyring, a manual clock
// at 15:00 and recording desktop services; a test may hand it other services instead.
class EngineFixture : public ::testing::Test, protected FakeDesktop {
protected:
    LoopbackHttpServer server;
    FakeVercelAccount account{server};
    std::unique_ptr<AppState> state;

    // A pass a test's last step started (a connect, a change of the monitored projects) ends
    // first, so that nothing of it is left waiting when the process exits.
    void TearDown() override {
        if (state)
            waitUntil([this] { return !state->isRefreshing(); });
        state.reset();
    }

    AppState& makeState() { return makeState(services(server.baseUrl())); }
    AppState& makeState(const AppState::Services& wired) {
        state = std::make_unique<AppState>(wired);
        return *state;
    }

    // Connects with a token and waits for the first pass to publish.
    AppState& connected(const QString& token = QStringLiteral("tok_secret_123")) {
        AppState& s = state ? *state : makeState();
        QCoro::waitFor(s.connect(token));
        EXPECT_TRUE(waitUntil([&] { return !s.isRefreshing(); }));
        return s;
    }

    // ms since the epoch, `minutes` after 15:00 today (local time).
    double at(int minutes) const {
        return static_cast<double>(clock.now().addSecs(minutes * 60).toMSecsSinceEpoch());
    }

    // A deployment as the account lists it, created (and ready) so many minutes after 15:00.
    QJsonObject deployment(const QString& id, const QString& projectId, const QString& state,
                           int created, std::optional<int> ready = std::nullopt) const {
        return FakeVercelAccount::deployment(id, projectId, state, at(created),
                                             ready ? std::optional(at(*ready)) : std::nullopt);
    }

    // Runs the loop's next pause and waits for the pass it starts.
    void nextPass() {
        const auto passRequests = [this] {
            return account.requestCount("/v6/deployments") + account.requestCount("/v9/projects");
        };
        const int before = passRequests();
        clock.advance(std::chrono::minutes(5));
        waitUntil([&] { return passRequests() > before && !state->isRefreshing(); });
    }
};
