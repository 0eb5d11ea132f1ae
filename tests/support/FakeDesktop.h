#pragma once

#include "core/keychain/KeychainStore.h"
#include "core/monitor/AppState.h"
#include "support/FakeServices.h"
#include "support/ManualClock.h"
#include "support/MemorySecretBackend.h"
#include "support/TempPreferences.h"

// Everything an AppState is handed, as fakes: a private preference store, an in-memory keyring,
// recording desktop services and a manual clock at 15:00 on 23 November 2026.
struct FakeDesktop {
    static QDateTime startTime() { return QDateTime(QDate(2026, 11, 23), QTime(15, 0)); }

    TempPreferences prefs;
    MemorySecretBackend secrets;
    KeychainStore keychain{secrets};
    FakeLoginItem loginItem;
    RecordingNotifications notifications;
    RecordingClipboard clipboard;
    ManualClock clock{startTime()};

    AppState::Services services(QUrl apiBase = VercelAPI::defaultBase(),
                                std::chrono::milliseconds timeout = std::chrono::seconds(3)) {
        return {*prefs, keychain, loginItem, notifications, clipboard, clock, apiBase, timeout};
    }
};
