#include "platform/SingleInstance.h"

#include <QDBusMessage>

namespace {

// org.freedesktop.DBus.RequestName: fail at once instead of queueing for the name.
constexpr uint kDoNotQueue = 4;
constexpr uint kPrimaryOwner = 1;
constexpr uint kAlreadyOwner = 4;

int timeoutMs() {
    return static_cast<int>(SingleInstance::callTimeout.count());
}

} // namespace

const QString SingleInstance::serviceName = QStringLiteral("com.fernhollow.Quillon");
const QString SingleInstance::objectPath = QStringLiteral("/com/fernhollow/Quillon");

SingleInstance::SingleInstance(QDBusConnection bus, QObject* parent)
    : QObject(parent), bus_(std::move(bus)) {}

SingleInstance::~SingleInstance() {
    if (registered_)
        bus_.unregisterObject(objectPath);
}

SingleInstance::Claim SingleInstance::claim() {
    if (!bus_.isConnected())
        return Claim::noBus;
    // Served before the name is taken, so a second launch never finds the name without it.
    registered_ = bus_.registerObject(objectPath, this, QDBusConnection::ExportScriptableSlots);
    if (!registered_)
        return Claim::noBus;
    QDBusMessage request = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("RequestName"));
    request << serviceName << kDoNotQueue;
    const QDBusMessage reply = bus_.call(request, QDBus::Block, timeoutMs());
    if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty()) {
        const uint answer = reply.arguments().constFirst().toUInt();
        if (answer == kPrimaryOwner || answer == kAlreadyOwner)
            return Claim::owned;
        bus_.unregisterObject(objectPath);
        registered_ = false;
        return askOwnerToShowSettings();
    }
    bus_.unregisterObject(objectPath);
    registered_ = false;
    problem_ = reply.errorMessage();
    return Claim::noBus;
}

SingleInstance::Claim SingleInstance::askOwnerToShowSettings() {
    const QDBusMessage call = QDBusMessage::createMethodCall(serviceName, objectPath, serviceName,
                                                             QStringLiteral("ShowSettings"));
    const QDBusMessage reply = bus_.call(call, QDBus::Block, timeoutMs());
    if (reply.type() == QDBusMessage::ReplyMessage)
        return Claim::forwarded;
    problem_ = reply.errorMessage();
    return Claim::unanswered;
}

void SingleInstance::ShowSettings() {
    Q_EMIT showSettingsRequested();
}

QString SingleInstance::Status() {
    return statusSource_ ? statusSource_() : QStringLiteral("{}");
}
