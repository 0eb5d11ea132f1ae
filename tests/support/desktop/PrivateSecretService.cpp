#include "support/desktop/PrivateSecretService.h"
#include "support/PrivateBusConfig.h"
#include "support/StopProcess.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QUuid>

namespace {

constexpr int kStartTimeoutMs = 10000;

} // namespace

PrivateSecretService::~PrivateSecretService() {
    if (!connectionName_.isEmpty())
        QDBusConnection::disconnectFromBus(connectionName_);
    keyring_.stop();
    stop(bus_);
}

std::optional<QString> PrivateSecretService::start(Keyring keyring) {
    if (!home_.isValid())
        return QStringLiteral("no temporary directory");
    for (const char* dir : {"run", "data", "config", "cache"})
        QDir(home_.path()).mkpath(QString::fromLatin1(dir));
    QFile::setPermissions(home_.filePath(QStringLiteral("run")),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    if (std::optional<QString> failure = startBus())
        return failure;
    connectionName_ = QUuid::createUuid().toString();
    if (!QDBusConnection::connectToBus(address_, connectionName_).isConnected())
        return QStringLiteral("cannot connect to the private bus");
    if (keyring == Keyring::none)
        return std::nullopt;
    return keyring_.start(keyring == Keyring::unlockedLogin ? KeyringDaemon::Login::unlocked
                                                            : KeyringDaemon::Login::absent,
                          environment(), connection());
}

QProcessEnvironment PrivateSecretService::environment() const {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "LANGUAGE", "GNOME_KEYRING_CONTROL",
                             "SSH_AUTH_SOCK", "DBUS_SESSION_BUS_ADDRESS"})
        env.remove(QString::fromLatin1(name));
    env.insert(QStringLiteral("HOME"), home_.path());
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), home_.filePath(QStringLiteral("run")));
    env.insert(QStringLiteral("XDG_DATA_HOME"), home_.filePath(QStringLiteral("data")));
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home_.filePath(QStringLiteral("config")));
    env.insert(QStringLiteral("XDG_CACHE_HOME"), home_.filePath(QStringLiteral("cache")));
    env.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    if (!address_.isEmpty())
        env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), address_);
    return env;
}

std::optional<QString> PrivateSecretService::startBus() {
    const QString configPath = home_.filePath(QStringLiteral("bus.conf"));
    QFile config(configPath);
    if (!config.open(QIODevice::WriteOnly) || config.write(privateBusConfig(home_.path())) < 0)
        return QStringLiteral("cannot write the bus configuration");
    config.close();
    bus_.setProcessEnvironment(environment());
    bus_.start(QStringLiteral("dbus-daemon"),
               {QStringLiteral("--config-file=") + configPath, QStringLiteral("--nofork"),
                QStringLiteral("--print-address=1")});
    if (!bus_.waitForStarted(kStartTimeoutMs))
        return QStringLiteral("dbus-daemon did not start: ") + bus_.errorString();
    QDeadlineTimer deadline(kStartTimeoutMs);
    while (!bus_.canReadLine() && !deadline.hasExpired() && bus_.state() == QProcess::Running)
        bus_.waitForReadyRead(int(deadline.remainingTime()));
    address_ = QString::fromUtf8(bus_.readLine()).trimmed();
    if (address_.isEmpty())
        return QStringLiteral("dbus-daemon printed no address");
    return std::nullopt;
}

void PrivateSecretService::stop(QProcess& process) {
    stopProcess(process);
}
