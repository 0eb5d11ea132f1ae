#include "support/desktop/DunstControl.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>

namespace {
const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");
const QString kDunst = QStringLiteral("org.dunstproject.cmd0");
constexpr int kTimeoutMs = 5000;
} // namespace

QDBusMessage DunstControl::call(const QString& method, const QVariantList& arguments) const {
    QDBusMessage message = QDBusMessage::createMethodCall(kService, kPath, kDunst, method);
    message.setArguments(arguments);
    return bus_.call(message, QDBus::Block, kTimeoutMs);
}

int DunstControl::displayed() const {
    QDBusMessage get = QDBusMessage::createMethodCall(
        kService, kPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    get.setArguments({kDunst, QStringLiteral("displayedLength")});
    const QDBusMessage reply = bus_.call(get, QDBus::Block, kTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return -1;
    return int(reply.arguments().first().value<QDBusVariant>().variant().toUInt());
}

bool DunstControl::invokeAction(int position) const {
    return call(QStringLiteral("NotificationAction"), {QVariant::fromValue(uint(position))})
               .type() == QDBusMessage::ReplyMessage;
}

bool DunstControl::openContextMenu() const {
    return call(QStringLiteral("ContextMenuCall")).type() == QDBusMessage::ReplyMessage;
}

bool DunstControl::closeAll() const {
    return call(QStringLiteral("NotificationCloseAll")).type() == QDBusMessage::ReplyMessage;
}

QList<QVariantMap> DunstControl::history() const {
    const QDBusMessage reply = call(QStringLiteral("NotificationListHistory"));
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    return qdbus_cast<QList<QVariantMap>>(reply.arguments().first());
}
