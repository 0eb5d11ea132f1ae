#pragma once

#include "support/FakeVercelAccount.h"
#include "support/LoopbackHttpServer.h"

#include <QJsonArray>

// The account a soaking `quillon-cli watch` follows: two projects that play, pass after pass, a
// build that fails (with its build log), a 500, a request that never answers and a build that
// succeeds, then start again with new deployments. Each deployments request is one pass and
// moves the play on, so every step is seen whatever the client's rhythm. Something is queued or
// building in most steps, which keeps the client at its fast pace.
class SoakScenario {
public:
    explicit SoakScenario(LoopbackHttpServer& server);

    int passes() const { return passes_; }

private:
    LoopbackHttpServer::Response nextPass();
    QJsonArray deploymentsFor(int step) const;
    void startCycle();

    LoopbackHttpServer& server_;
    FakeVercelAccount account_;
    int passes_ = 0;
    int cycle_ = 0;
    double cycleStartMs_ = 0;
};
