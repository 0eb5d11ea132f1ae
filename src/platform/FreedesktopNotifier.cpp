#include "platform/FreedesktopNotifier.h"

#include "core/common/Language.h"

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
    bus_.connect(kService, kPath, kInterface, QStringLiteral("ActivationToken"), this,
                 SLOT(onActivationToken(uint, QString)));
    bus_.connect(kService, kPath, kInterface, QStringLiteral("ActionInvoked"), this,
                 SLOT(onActionInvoked(uint, QString)));
    bus_.connect(kService, kPath, kInterface, QStringLiteral("NotificationClosed"), this,
                 SLOT(onNotificationClosed(uint, uint)));
}

void FreedesktopNotifier::post(const FailureNotification& notification) {
    if (!bus_.isConnected())
        return;
    if (serverHasActions_) {
        send(notification);
        return;
    }
    const QDBusMessage ask = QDBusMessage::createMethodCall(kService, kPath, kInterface,
                                                            QStringLiteral("GetCapabilities"));
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(ask, kCallTimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, notification](QDBusPendingCallWatcher* finished) {
                finished->deleteLater();
                const QDBusPendingReply<QStringList> reply = *finished;
                if (reply.isError())
                    return; // no server: this notification is dropped, a later one asks again
                if (!serverHasActions_)
                    serverHasActions_ = reply.value().contains(QStringLiteral("actions"));
                send(notification);
            });
}

QStringList FreedesktopNotifier::actionsFor(const FailureNotification& notification) const {
    QStringList actions;
    if (notification.url)
        actions << QStringLiteral("default") << Language::text("Open", "Ouvrir");
    if (!serverHasActions_.value_or(false) || notification.transient)
        return actions;
    if (notification.url)
        actions << QStringLiteral("open")
                << Language::text("Open deployment", "Ouvrir le déploiement");
    if (notification.offersReport && reportHandler_)
        actions << QStringLiteral("copy-report")
                << Language::text("Copy for AI", "Copier pour l'IA");
    if (notification.offersRedeploy && redeployHandler_)
        actions << QStringLiteral("redeploy") << Language::text("Redeploy", "Redéployer");
    return actions;
}

void FreedesktopNotifier::send(const FailureNotification& notification) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Notify"));
    QVariantMap hints;
    hints.insert(QStringLiteral("desktop-entry"), QStringLiteral("com.fernhollow.quillon"));
    if (notification.transient) {
        hints.insert(QStringLiteral("transient"), true);
        hints.insert(QStringLiteral("urgency"), QVariant::fromValue<uchar>(0));
    } else {
        hints.insert(QStringLiteral("sound-name"), QStringLiteral("dialog-warning"));
        hints.insert(QStringLiteral("urgency"), QVariant::fromValue<uchar>(1));
    }
    const int expireMs = notification.transient ? 4000 : -1;
    call << QStringLiteral("Quillon") << uint(0) << QStringLiteral("quillon") << notification.title
         << notification.body << actionsFor(notification) << hints << expireMs;
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call, kCallTimeoutMs), this);
    const Shown shown{notification.identifier, notification.url, notification.offersReport,
                      notification.offersRedeploy};
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, shown](QDBusPendingCallWatcher* finished) {
                finished->deleteLater();
                const QDBusPendingReply<uint> reply = *finished;
                if (reply.isError())
                    return; // no server, or it refused: nothing to tell the user
                shown_.insert(reply.value(), shown);
                Q_EMIT posted(reply.value());
            });
}

void FreedesktopNotifier::onActivationToken(uint id, const QString& token) {
    if (shown_.contains(id))
        tokens_.insert(id, token);
}

void FreedesktopNotifier::onActionInvoked(uint id, const QString& actionKey) {
    const auto found = shown_.constFind(id);
    if (found == shown_.constEnd())
        return;
    activationToken_ = tokens_.take(id);
    const Shown shown = *found;
    if (actionKey == QLatin1String("default") || actionKey == QLatin1String("open")) {
        if (shown.url && shown.url->isValid() && opener_)
            opener_(*shown.url);
    } else if (actionKey == QLatin1String("copy-report") && shown.offersReport && reportHandler_) {
        reportHandler_(shown.identifier);
    } else if (actionKey == QLatin1String("redeploy") && shown.offersRedeploy && redeployHandler_) {
        redeployHandler_(shown.identifier);
    }
}

void FreedesktopNotifier::onNotificationClosed(uint id, uint /*reason*/) {
    shown_.remove(id);
    tokens_.remove(id);
}
