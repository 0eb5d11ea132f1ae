#include "platform/FreedesktopNotifier.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace {
const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");
const QString kInterface = QStringLiteral("org.freedesktop.Notifications");
// A server that does not answer within this time is treated as absent for that notification.
constexpr int kCallTimeoutMs = 3000;
} // namespace

FreedesktopNotifier::FreedesktopNotifier(QDBusConnection bus, UrlOpener opener, QObject* parent)
    : QObject(parent), bus_(std::move(bus)), opener_(std::move(opener)) {
    // Signals are matched by id, so clicks on other programs' notifications are ignored.
    bus_.connect(kService, kPath, kInterface, QStringLiteral("ActionInvoked"), this,
                 SLOT(onActionInvoked(uint, QString)));
    bus_.connect(kService, kPath, kInterface, QStringLiteral("NotificationClosed"), this,
                 SLOT(onNotificationClosed(uint, uint)));
}

void FreedesktopNotifier::post(const FailureNotification& notification) {
    if (!bus_.isConnected())
        return;
    QDBusMessage call =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Notify"));
    QStringList actions;
    if (notification.url)
        actions << QStringLiteral("default") << QStringLiteral("Open");
    QVariantMap hints;
    hints.insert(QStringLiteral("sound-name"), QStringLiteral("dialog-warning"));
    hints.insert(QStringLiteral("desktop-entry"), QStringLiteral("quillon"));
    hints.insert(QStringLiteral("urgency"), QVariant::fromValue<uchar>(1));
    call << QStringLiteral("Quillon") << uint(0) << QStringLiteral("quillon") << notification.title
         << notification.body << actions << hints << int(-1);
    const QDBusPendingCall pending = bus_.asyncCall(call, kCallTimeoutMs);
    auto* watcher = new QDBusPendingCallWatcher(pending, this);
    const std::optional<QUrl> url = notification.url;
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, url](QDBusPendingCallWatcher* finished) {
                finished->deleteLater();
                const QDBusPendingReply<uint> reply = *finished;
                if (reply.isError())
                    return; // no server, or it refused: nothing to tell the user
                if (url)
                    links_.insert(reply.value(), *url);
                Q_EMIT posted(reply.value());
            });
}

void FreedesktopNotifier::onActionInvoked(uint id, const QString& actionKey) {
    const auto found = links_.constFind(id);
    if (found == links_.constEnd() || actionKey != QLatin1String("default"))
        return;
    const QUrl url = *found;
    if (url.isValid() && opener_)
        opener_(url);
}

void FreedesktopNotifier::onNotificationClosed(uint id, uint /*reason*/) {
    links_.remove(id);
}
