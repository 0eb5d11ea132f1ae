#pragma once

#include "support/desktop/KeyringDaemon.h"

#include <QDBusConnection>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryDir>
#include <optional>

// A private D-Bus session bus in a temporary home, optionally with a real gnome-keyring-daemon on
// it, so tests never touch the user's keyring. The bus activates nothing: a name nobody owns
// stays unowned. Everything started is stopped (and reaped) by the destructor.
class PrivateSecretService {
public:
    enum class Keyring {
        none,           // the bus alone
        unlockedLogin,  // a login keyring created and unlocked with a throw-away password
        noLoginKeyring, // the daemon without a login keyring: only the session collection
    };

    PrivateSecretService() = default;
    ~PrivateSecretService();
    PrivateSecretService(const PrivateSecretService&) = delete;
    PrivateSecretService& operator=(const PrivateSecretService&) = delete;

    // Answers what went wrong, if anything did.
    std::optional<QString> start(Keyring keyring);

    QString busAddress() const { return address_; }
    QString home() const { return home_.path(); }
    // For child processes: the private bus and home, no display, English messages.
    QProcessEnvironment environment() const;

    // See KeyringDaemon.
    bool lockLoginKeyring() { return keyring_.lockLoginKeyring(); }
    // Logs out and in again: the keyring daemon restarts, the session collection is gone and the
    // login keyring (kept in the home) is unlocked with its password.
    std::optional<QString> relogin() {
        keyring_.stop();
        return keyring_.start(KeyringDaemon::Login::unlocked, environment(), connection());
    }
    QStringList itemsIn(const QString& collection, const QString& copy) {
        return keyring_.itemsIn(collection, copy);
    }
    QString labelOf(const QString& itemPath) { return keyring_.labelOf(itemPath); }

    // A connection of the test's own to the private bus.
    QDBusConnection connection() const { return QDBusConnection(connectionName_); }

private:
    std::optional<QString> startBus();
    static void stop(QProcess& process);

    QTemporaryDir home_;
    QString address_;
    QString connectionName_;
    QProcess bus_;
    KeyringDaemon keyring_;
};
