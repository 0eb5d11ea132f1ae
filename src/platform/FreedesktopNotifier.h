#pragma once

#include "core/monitor/PlatformServices.h"

#include <QHash>
#include <QObject>
#include <functional>
#include <memory>

#include <QDBusConnection>

// Failure notifications through org.freedesktop.Notifications. Calls are asynchronous, so a
// missing or hung notification server never blocks the tray; clicking a notification (its
// default action) opens the deployment's link.
class FreedesktopNotifier final : public QObject, public NotificationService {
    Q_OBJECT
public:
    using UrlOpener = std::function<void(const QUrl&)>;

    FreedesktopNotifier(QDBusConnection bus, UrlOpener opener, QObject* parent = nullptr);

    void requestAuthorization() override {} // the desktop asks nobody: nothing to request
    void post(const FailureNotification& notification) override;

    // Notifications this process posted that the server still shows: server id → link.
    int pendingCount() const { return static_cast<int>(links_.size()); }

Q_SIGNALS:
    // The server accepted a notification and gave it this id (tests wait for it).
    void posted(uint id);

private Q_SLOTS:
    void onActionInvoked(uint id, const QString& actionKey);
    void onNotificationClosed(uint id, uint reason);

private:
    QDBusConnection bus_;
    UrlOpener opener_;
    QHash<uint, QUrl> links_;
};
