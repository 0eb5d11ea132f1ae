#pragma once

#include "support/desktop/KeyringDaemon.h"

#include <QDBusConnection>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryDir>
#include <optional>

// A desktop of the test's own: an X display (Xvfb on a free display number), a session bus that
// activates nothing, a real notification server (dunst) on both and, when asked, a keyring
// (gnome-keyring) on the bus, so tests never touch the user's session. Each part starts on
// request; the destructor stops and reaps all of them.
class PrivateDesktop {
public:
    PrivateDesktop();
    ~PrivateDesktop();
    PrivateDesktop(const PrivateDesktop&) = delete;
    PrivateDesktop& operator=(const PrivateDesktop&) = delete;

    // Each answers what went wrong, if anything did.
    std::optional<QString> startDisplay();
    std::optional<QString> startBus();
    // On the display and the bus, which must run already. `globalSettings` are added to dunst's
    // [global] section (for example its dmenu command).
    std::optional<QString> startDunstWith(const QByteArray& globalSettings);
    std::optional<QString> startDunst() { return startDunstWith({}); }
    // On the bus, which must run already: the Secret Service, by default with an unlocked login
    // keyring. Started again, it plays a new login: the session collection is gone and the login
    // keyring (kept in the home) is unlocked with its password.
    std::optional<QString>
    startKeyring(KeyringDaemon::Login login = KeyringDaemon::Login::unlocked);
    KeyringDaemon& keyring() { return keyring_; }

    // Freezes dunst (SIGSTOP): it keeps its bus name but answers nothing until resumed.
    void pauseDunst();
    void resumeDunst();

    QString display() const { return display_; } // ":3"
    QString busAddress() const { return address_; }
    QString home() const { return home_.path(); }
    // The test's own connection to the private bus.
    QDBusConnection connection() const { return QDBusConnection(connectionName_); }
    // For child processes: the private display and bus, a temporary home, English messages.
    QProcessEnvironment environment() const;

    // Runs xdotool on the private display, e.g. {"key", "ctrl+alt+super+2"}.
    bool xdotool(const QStringList& arguments) const;

private:
    bool dunstServes() const;
    static void stop(QProcess& process);

    QTemporaryDir home_;
    QString display_;
    QString address_;
    QString connectionName_;
    QProcess xvfb_;
    QProcess bus_;
    QProcess dunst_;
    KeyringDaemon keyring_;
};
