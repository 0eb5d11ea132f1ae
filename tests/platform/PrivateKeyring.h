#pragma once

#include "core/keychain/KeychainStore.h"
#include "services/LibsecretBackend.h"
#include "support/ScopedEnvironment.h"
#include "support/desktop/PrivateDesktop.h"

// A private session bus, with a real gnome-keyring-daemon on it when asked, made this process's
// session bus, and the token store over it. Members go in reverse order: the daemons outlive the
// backend that talks to them.
struct PrivateKeyring {
    PrivateDesktop desktop;
    std::optional<ScopedEnvironment> bus;
    std::optional<LibsecretBackend> backend;
    std::optional<KeychainStore> store;

    // Answers what went wrong, if anything did.
    std::optional<QString> start(std::optional<KeyringDaemon::Login> login,
                                 Preferences* marks = nullptr) {
        if (std::optional<QString> failure = desktop.startBus())
            return failure;
        if (login) {
            if (std::optional<QString> failure = desktop.startKeyring(*login))
                return failure;
        }
        bus.emplace("DBUS_SESSION_BUS_ADDRESS", desktop.busAddress().toUtf8());
        backend.emplace();
        store.emplace(*backend, marks);
        return std::nullopt;
    }

    // Quillon's items in `collection` ("login", "session") whose copy attribute is `copy`.
    QStringList items(const char* collection, const char* copy) {
        return desktop.keyring().itemsIn(QString::fromLatin1(collection),
                                         QString::fromLatin1(copy));
    }
};
