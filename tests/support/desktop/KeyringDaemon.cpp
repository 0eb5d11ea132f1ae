#include "support/desktop/KeyringDaemon.h"
#include "support/StopProcess.h"

#include "support/WaitUntil.h"

#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>

namespace {

const QString kSecrets = QStringLiteral("org.freedesktop.secrets");
const QString kServicePath = QStringLiteral("/org/freedesktop/secrets");
const QString kCollectionPrefix = QStringLiteral("/org/freedesktop/secrets/collection/");
constexpr int kStartTimeoutMs = 10000;

} // namespace

std::optional<QString> KeyringDaemon::start(Login login, const QProcessEnvironment& environment,
                                            QDBusConnection bus) {
    if (!runtime_.isValid())
        return QStringLiteral("no temporary runtime folder");
    bus_ = std::move(bus);
    environment_ = environment;
    environment_.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime_.path());
    for (const char* name : {"GNOME_KEYRING_CONTROL", "SSH_AUTH_SOCK"})
        environment_.remove(QString::fromLatin1(name));
    daemon_.setProcessEnvironment(environment_);
    QStringList arguments = {QStringLiteral("--foreground"),
                             QStringLiteral("--components=secrets")};
    if (login == Login::unlocked)
        arguments << QStringLiteral("--unlock");
    daemon_.start(QStringLiteral("gnome-keyring-daemon"), arguments);
    if (!daemon_.waitForStarted(kStartTimeoutMs))
        return QStringLiteral("gnome-keyring-daemon did not start: ") + daemon_.errorString();
    if (login == Login::unlocked)
        daemon_.write("quillon-throwaway-password"); // creates and unlocks the login keyring
    daemon_.closeWriteChannel();
    if (!waitUntil([&] { return ready(login); }, kStartTimeoutMs))
        return QStringLiteral("gnome-keyring-daemon never served the Secret Service: ") +
               QString::fromUtf8(daemon_.readAllStandardError());
    return std::nullopt;
}

void KeyringDaemon::stop() {
    stopProcess(daemon_);
}

bool KeyringDaemon::ready(Login login) {
    if (!bus_.interface()->isServiceRegistered(kSecrets))
        return false;
    if (login != Login::unlocked)
        return true;
    QDBusInterface service(kSecrets, kServicePath, QStringLiteral("org.freedesktop.Secret.Service"),
                           bus_);
    const QDBusReply<QDBusObjectPath> alias =
        service.call(QStringLiteral("ReadAlias"), QStringLiteral("default"));
    return alias.isValid() && alias.value().path() == kCollectionPrefix + QStringLiteral("login");
}

bool KeyringDaemon::lockLoginKeyring() {
    QDBusInterface service(kSecrets, kServicePath, QStringLiteral("org.freedesktop.Secret.Service"),
                           bus_);
    const QList<QDBusObjectPath> objects = {
        QDBusObjectPath(kCollectionPrefix + QStringLiteral("login"))};
    const QDBusMessage reply = service.call(QStringLiteral("Lock"), QVariant::fromValue(objects));
    return reply.type() == QDBusMessage::ReplyMessage;
}

QStringList KeyringDaemon::itemsIn(const QString& collection, const QString& copy) {
    qDBusRegisterMetaType<QMap<QString, QString>>();
    QDBusInterface target(kSecrets, kCollectionPrefix + collection,
                          QStringLiteral("org.freedesktop.Secret.Collection"), bus_);
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

QString KeyringDaemon::labelOf(const QString& itemPath) {
    QDBusInterface item(kSecrets, itemPath, QStringLiteral("org.freedesktop.Secret.Item"), bus_);
    return item.property("Label").toString();
}

std::optional<QByteArray> KeyringDaemon::secretOf(const QString& copy) {
    QProcess lookup;
    lookup.setProcessEnvironment(environment_);
    lookup.start(QStringLiteral("secret-tool"),
                 {QStringLiteral("lookup"), QStringLiteral("service"),
                  QStringLiteral("com.fernhollow.quillon"), QStringLiteral("account"),
                  QStringLiteral("vercel-token"), QStringLiteral("copy"), copy});
    if (!lookup.waitForFinished(kStartTimeoutMs) || lookup.exitStatus() != QProcess::NormalExit ||
        lookup.exitCode() != 0)
        return std::nullopt;
    return lookup.readAllStandardOutput();
}
