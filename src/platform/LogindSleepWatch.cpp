#include "platform/LogindSleepWatch.h"

LogindSleepWatch::LogindSleepWatch(QDBusConnection bus, std::function<void()> resumed)
    : resumed_(std::move(resumed)) {
    bus.connect(QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
                QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"),
                this, SLOT(prepareForSleep(bool)));
}

void LogindSleepWatch::prepareForSleep(bool sleeping) {
    if (!sleeping)
        resumed_();
}
