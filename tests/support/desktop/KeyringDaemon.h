#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryDir>
#include <optional>

// A real gnome-keyring-daemon serving the Secret Service on a test's private bus, so tests never
// touch the user's keyring, and what it holds as seen over the test's own connection to that bus.
// The daemon keeps its control socket in a runtime folder of its own; the destructor stops it.
class KeyringDaemon {
public:
    enum class Login {
        unlocked, // a login keyring created and unlocked with a throw-away password
        absent,   // no login keyring: only the session collection
    };

    KeyringDaemon() = default;
    ~KeyringDaemon() { stop(); }
    KeyringDaemon(const KeyringDaemon&) = delete;
    KeyringDaemon& operator=(const KeyringDaemon&) = delete;

    // `environment` names the private bus and home; `bus` is the test's connection to that bus.
    // Answers what went wrong, if anything did.
    std::optional<QString> start(Login login, const QProcessEnvironment& environment,
                                 QDBusConnection bus);
    void stop();

    // Locks the login keyring through the Secret Service API (no prompt involved).
    bool lockLoginKeyring();
    // The items of `collection` ("login", "session") whose copy attribute is `copy`.
    QStringList itemsIn(const QString& collection, const QString& copy);
    QString labelOf(const QString& itemPath);
    // The secret of Quillon's token item whose copy attribute is `copy`, as `secret-tool lookup`
    // reads it; absent when there is none.
    std::optional<QByteArray> secretOf(const QString& copy);

private:
    bool ready(Login login);

    QTemporaryDir runtime_;
    QProcessEnvironment environment_;
    QDBusConnection bus_{QString()};
    QProcess daemon_;
};
