#pragma once

#include "core/keychain/KeychainStore.h"
#include "core/monitor/AppState.h"
#include "support/FakeServices.h"
#include "support/FakeVercelAccount.h"
#include "support/LoopbackHttpServer.h"
#include "support/ManualClock.h"
#include "support/MemorySecretBackend.h"
#include "support/TempPreferences.h"
#include "ui/status/StatusPalette.h"

// One AppState on a manual clock, talking to a fake Vercel account on a loopback server, with
// private preferences and keyring: the same parts the view tests use.
struct ScreenshotScene {
    static QDateTime start() { return QDateTime(QDate(2026, 11, 23), QTime(15, 0)); }

    TempPreferences prefs;
    MemorySecretBackend secrets;
    KeychainStore keychain{secrets};
    FakeLoginItem loginItem;
    RecordingNotifications notifications;
    RecordingClipboard clipboard;
    ManualClock clock{start()};
    LoopbackHttpServer server;
    FakeVercelAccount account{server};
    AppState state{{*prefs, keychain, loginItem, notifications, clipboard, clock, server.baseUrl(),
                    std::chrono::milliseconds(3000)}};
    StatusPalette palette{*prefs, QStringLiteral("#FF0074")};

    double minutesAgo(double minutes) const {
        return double(start().toMSecsSinceEpoch()) - minutes * 60'000;
    }
};
