#pragma once

#include <QDBusConnection>
#include <QList>
#include <QVariantMap>

// What `dunstctl` does, over the test's own connection to the bus dunst serves: counts, the
// default action of a notification on screen, closing, and the history.
class DunstControl {
public:
    explicit DunstControl(QDBusConnection bus) : bus_(std::move(bus)) {}

    // Notifications on screen; -1 when dunst does not answer.
    int displayed() const;
    // The default action of the notification at `position` on screen (`dunstctl action`).
    bool invokeAction(int position = 0) const;
    // Closes every notification on screen, which moves it to the history (`dunstctl close-all`).
    bool closeAll() const;
    // Opens the context menu (`dunstctl context`): dunst runs its dmenu command with one line
    // per action and invokes the action on the line it prints.
    bool openContextMenu() const;
    // Closed notifications with their "summary", "body", "appname", "id"… (`dunstctl history`).
    QList<QVariantMap> history() const;

private:
    QDBusMessage call(const QString& method, const QVariantList& arguments = {}) const;

    QDBusConnection bus_;
};
