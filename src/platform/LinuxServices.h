#pragma once

#include "core/common/Preferences.h"
#include "core/keychain/KeychainStore.h"
#include "core/monitor/AppState.h"
#include "platform/FreedesktopNotifier.h"
#include "platform/LogindSleepWatch.h"
#include "platform/ModuleSecretBackend.h"
#include "platform/NetworkReachability.h"
#include "platform/XdgAutostart.h"

// The Linux implementation of every service the engine is handed, owned together. The clipboard
// differs between the tray (the desktop's) and the terminal, so the caller brings it.
class LinuxServices {
public:
    LinuxServices(const QString& executable, ClipboardService& clipboard,
                  FreedesktopNotifier::UrlOpener openUrl);

    AppState::Services services(const QUrl& apiBase);

    ModuleSecretBackend secrets; // loads the keyring code on first use
    KeychainStore keychain{secrets, &Preferences::standard()};
    XdgAutostart loginItem;
    FreedesktopNotifier notifications;
    SystemClock clock;
    LogindSleepWatch sleepWatch{QDBusConnection::systemBus(), [this] { clock.resumed(); }};
    NetworkReachability network;

private:
    ClipboardService& clipboard_;
};
