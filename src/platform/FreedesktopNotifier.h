#pragma once

#include "core/monitor/PlatformServices.h"

#include <QHash>
#include <QObject>
#include <functional>
#include <memory>
#include <utility>

#include <QDBusConnection>

// Failure notifications through org.freedesktop.Notifications. Calls are asynchronous, so a
// missing or hung notification server never blocks the tray; clicking a notification (its
// default action) opens the deployment's link. Where the server shows buttons, a failure also
// offers "Open deployment", "Copy for AI" and "Redeploy".
class FreedesktopNotifier final : public QObject, public NotificationService {
    Q_OBJECT
public:
    using UrlOpener = std::function<void(const QUrl&)>;

    FreedesktopNotifier(QDBusConnection bus, UrlOpener opener, QObject* parent = nullptr);

    void requestAuthorization() override {} // the desktop asks nobody: nothing to request
    void post(const FailureNotification& notification) override;
    void setReportHandler(std::function<void(const QString&)> handler) override {
        reportHandler_ = std::move(handler);
    }
    void setRedeployHandler(std::function<void(const QString&)> handler) override {
        redeployHandler_ = std::move(handler);
    }

    // The activation token the server sent with the latest button pressed, taken once: the window
    // that the button opens shows under it, so the desktop brings it to the front.
    QString takeActivationToken() { return std::exchange(activationToken_, QString()); }

    // Notifications this process posted that the server still shows.
    int pendingCount() const { return static_cast<int>(shown_.size()); }

Q_SIGNALS:
    // The server accepted a notification and gave it this id (tests wait for it).
    void posted(uint id);

private Q_SLOTS:
    void onActivationToken(uint id, const QString& token);
    void onActionInvoked(uint id, const QString& actionKey);
    void onNotificationClosed(uint id, uint reason);

private:
    struct Shown {
        QString identifier;
        std::optional<QUrl> url;
        bool offersReport = false;
        bool offersRedeploy = false;
    };
    void send(const FailureNotification& notification);
    QStringList actionsFor(const FailureNotification& notification) const;

    QDBusConnection bus_;
    UrlOpener opener_;
    std::function<void(const QString&)> reportHandler_;
    std::function<void(const QString&)> redeployHandler_;
    QHash<uint, Shown> shown_;
    // Sent before ActionInvoked, for the same notification.
    QHash<uint, QString> tokens_;
    QString activationToken_;
    // Whether the server shows buttons; asked once, before the first notification.
    std::optional<bool> serverHasActions_;
};
