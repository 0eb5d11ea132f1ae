#pragma once

#include "core/keychain/KeychainStore.h"
#include "core/monitor/AppState.h"
#include "support/FakeDesktop.h"
#include "support/FakeServices.h"
#include "support/FakeVercelAccount.h"
#include "support/ManualClock.h"
#include "support/MemorySecretBackend.h"
#include "support/TempPreferences.h"
#include "support/WaitUntil.h"

#include <QCoro/QCoroTask>
#include <gtest/gtest.h>

// An AppState wired to a fake Vercel account on 127.0.0.1, an in-memory keyring, a manual clock
// and recording desktop services.
class EngineFixture : public ::testing::Test, protected FakeDesktop {
protected:
    LoopbackHttpServer server;
    FakeVercelAccount account{server};
    std::unique_ptr<AppState> state;

    void TearDown() override { state.reset(); }

    AppState& makeState() {
        state = std::make_unique<AppState>(services(server.baseUrl()));
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

    // Runs the loop's next pause and waits for the pass it starts.
    void nextPass() {
        const int before =
            account.requestCount("/v6/deployments") + account.requestCount("/v9/projects");
        clock.advance(std::chrono::minutes(5));
        waitUntil([&] {
            return account.requestCount("/v6/deployments") + account.requestCount("/v9/projects") >
                       before &&
                   !state->isRefreshing();
        });
    }
};
