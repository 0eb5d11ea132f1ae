#pragma once

#include "core/keychain/KeychainStore.h"
#include "core/monitor/AppState.h"
#include "support/FakeDesktop.h"
#include "support/FakeServices.h"
#include "support/FakeVercelAccount.h"
#include "support/LoopbackHttpServer.h"
#include "support/ManualClock.h"
#include "support/MemorySecretBackend.h"
#include "support/TempPreferences.h"
#include "ui/status/StatusPalette.h"

// One AppState on a manual clock, talking to a fake Vercel account on a loopback server, with
// private preferences and keyring: the same parts the view tests use.
struct ScreenshotScene : FakeDesktop {
    static QDateTime start() { return QDateTime(QDate(2026, 11, 23), QTime(15, 0)); }

    LoopbackHttpServer server;
    FakeVercelAccount account{server};
    AppState state{services(server.baseUrl())};
    StatusPalette palette{*prefs, QStringLiteral("#FF0074")};

    double minutesAgo(double minutes) const {
        return double(start().toMSecsSinceEpoch()) - minutes * 60'000;
    }
};
