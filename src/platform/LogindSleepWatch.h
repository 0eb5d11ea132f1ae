#pragma once

#include <QDBusConnection>
#include <QObject>
#include <functional>

// Calls `resumed` each time logind reports that the computer woke from suspend or hibernation
// (PrepareForSleep(false) on the system bus). Without logind it never calls.
class LogindSleepWatch final : public QObject {
    Q_OBJECT
public:
    LogindSleepWatch(QDBusConnection bus, std::function<void()> resumed);

private Q_SLOTS:
    void prepareForSleep(bool sleeping);

private:
    std::function<void()> resumed_;
};
