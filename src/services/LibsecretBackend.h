#pragma once

#include "core/keychain/SecretBackend.h"

#include <QHash>
#include <memory>

class SecretServiceSession;
struct SecretFailure;

// The token's two copies as Secret Service items (gnome-keyring, KWallet, KeePassXC…) on the
// session bus, reached through libsecret. Every call is bounded in time: when no Secret Service
// can be reached the calls fail within seconds instead of hanging the tray.
class LibsecretBackend final : public SecretBackend {
public:
    // Failure classes. The Secret Service's own message for the latest failure of each class is
    // kept as the text for that status.
    enum Status : int {
        noService = -1,    // no session bus, or nothing provides org.freedesktop.secrets
        timedOut = -2,     // the service did not answer in time
        locked = -3,       // the collection is locked (nothing prompts to unlock it)
        noCollection = -4, // the collection does not exist (no login keyring)
        refused = -5,      // the service or the user refused the request
        notFound = -6,     // no item matched
        failed = -7,       // any other failure
    };

    LibsecretBackend();
    ~LibsecretBackend() override;
    LibsecretBackend(const LibsecretBackend&) = delete;
    LibsecretBackend& operator=(const LibsecretBackend&) = delete;

    int addItem(KeychainMode copy, const QByteArray& data, const QString& label) override;
    int deleteItems(KeychainMode copy) override;
    Match copyMatching(KeychainMode copy) override;
    std::optional<QString> errorMessage(int status) const override;
    bool isNoItem(int status) const override { return status == notFound; }

private:
    int fail(const SecretFailure& failure);

    std::unique_ptr<SecretServiceSession> session_;
    QHash<int, QString> messages_;
};
