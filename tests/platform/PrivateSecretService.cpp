#include "platform/PrivateSecretService.h"
#include "support/PrivateBusConfig.h"

#include "support/WaitUntil.h"

#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDir>
#include <QFile>
#include <QUuid>

namespace {

const QString kSecrets = QStringLiteral("org.freedesktop.secrets");
const QString kServicePath = QStringLiteral("/org/freedesktop/secrets");
const QString kCollectionPrefix = QStringLiteral("/org/freedesktop/secrets/collection/");
constexpr int kStartTimeoutMs = 10000;

} // namespace

PrivateSecretService::~PrivateSecretService() {
    if (!connectionName_.isEmpty())
        QDBusConnection::disconnectFromBus(connectionName_);
    stop(keyring_);
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
    return startKeyring(keyring);
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

std::optional<QString> PrivateSecretService::startKeyring(Keyring keyring) {
    keyring_.setProcessEnvironment(environment());
    QStringList arguments = {QStringLiteral("--foreground"),
                             QStringLiteral("--components=secrets")};
    if (keyring == Keyring::unlockedLogin)
        arguments << QStringLiteral("--unlock");
    keyring_.start(QStringLiteral("gnome-keyring-daemon"), arguments);
    if (!keyring_.waitForStarted(kStartTimeoutMs))
        return QStringLiteral("gnome-keyring-daemon did not start: ") + keyring_.errorString();
    if (keyring == Keyring::unlockedLogin)
        keyring_.write("quillon-throwaway-password"); // creates and unlocks the login keyring
    keyring_.closeWriteChannel();
    if (!waitUntil([&] { return keyringReady(keyring); }, kStartTimeoutMs))
        return QStringLiteral("gnome-keyring-daemon never served the Secret Service: ") +
               QString::fromUtf8(keyring_.readAllStandardError());
    return std::nullopt;
}

bool PrivateSecretService::keyringReady(Keyring keyring) {
    if (!connection().interface()->isServiceRegistered(kSecrets))
        return false;
    if (keyring != Keyring::unlockedLogin)
        return true;
    QDBusInterface service(kSecrets, kServicePath, QStringLiteral("org.freedesktop.Secret.Service"),
                           connection());
    const QDBusReply<QDBusObjectPath> alias =
        service.call(QStringLiteral("ReadAlias"), QStringLiteral("default"));
    return alias.isValid() && alias.value().path() == kCollectionPrefix + QStringLiteral("login");
}

bool PrivateSecretService::lockLoginKeyring() {
    QDBusInterface service(kSecrets, kServicePath, QStringLiteral("org.freedesktop.Secret.Service"),
                           connection());
    const QList<QDBusObjectPath> objects = {
        QDBusObjectPath(kCollectionPrefix + QStringLiteral("login"))};
    const QDBusMessage reply = service.call(QStringLiteral("Lock"), QVariant::fromValue(objects));
    return reply.type() == QDBusMessage::ReplyMessage;
}

QStringList PrivateSecretService::itemsIn(const QString& collection, const QString& copy) {
    qDBusRegisterMetaType<QMap<QString, QString>>();
    QDBusInterface target(kSecrets, kCollectionPrefix + collection,
                          QStringLiteral("org.freedesktop.Secret.Collection"), connection());
    const QMap<QString, QString> attributes = {
        {QStringLiteral("service"), QStringLiteral("com.fernhollow.quillon")},
        {QStringLiteral("account"), QStringLiteral("vercel-token")},
        {QStringLiteral("copy"), copy}};
    const QDBusReply<QList<QDBusObjectPath>> found =
        target.call(QStringLiteral("SearchItems"), QVariant::fromValue(attributes));
    QStringList paths;
    for (const QDBusObjectPath& path : found.value())
        paths << path.path();
    return paths;
}

QString PrivateSecretService::labelOf(const QString& itemPath) {
    QDBusInterface item(kSecrets, itemPath, QStringLiteral("org.freedesktop.Secret.Item"),
                        connection());
    return item.property("Label").toString();
}

void PrivateSecretService::stop(QProcess& process) {
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(5000)) {
        process.kill();
        process.waitForFinished(5000);
    }
}
