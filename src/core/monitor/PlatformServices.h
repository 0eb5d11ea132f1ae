#pragma once

#include <QString>
#include <QUrl>
#include <functional>
#include <optional>

// The desktop services the engine needs, each behind a narrow interface handed to AppState, so
// tests hand it their own and another desktop can be added without touching the core.

// "Open at login".
class LoginItemService {
public:
    virtual ~LoginItemService() = default;
    virtual bool isEnabled() const = 0;
    // Answers the system's message when the change was refused.
    virtual std::optional<QString> setEnabled(bool enabled) = 0;
};

// One notification, already in the user's language: a failure, a slow build, a summary or a
// short confirmation.
struct FailureNotification {
    QString identifier; // the deployment id
    QString title;
    QString body;
    std::optional<QUrl> url;     // opened when the notification is clicked
    bool offersReport = false;   // a "Copy for AI" button where the server shows buttons
    bool offersRedeploy = false; // a "Redeploy" button, likewise
    bool transient = false;      // a short confirmation that is not kept in the history
};

class NotificationService {
public:
    virtual ~NotificationService() = default;
    // Asks to show alerts with sound; the answer is not needed.
    virtual void requestAuthorization() = 0;
    virtual void post(const FailureNotification& notification) = 0;
    // Called with a notification's identifier when the user asks for its failure report from
    // the notification itself. A server without buttons never calls it.
    virtual void setReportHandler(std::function<void(const QString& identifier)> handler) = 0;
    // Called with a notification's identifier when the user presses its "Redeploy" button.
    virtual void setRedeployHandler(std::function<void(const QString& identifier)> handler) = 0;
};

// The system clipboard, as plain text.
class ClipboardService {
public:
    virtual ~ClipboardService() = default;
    virtual void setText(const QString& text) = 0;
};
