// A suspend stops Qt's timers but not the wall clock: when logind reports the resume on the
// system bus (here a private bus where the test plays logind), the sleeps whose time passed end
// at once and the others wait only what is left.
#include "core/monitor/Clock.h"
#include "platform/LogindSleepWatch.h"
#include "support/WaitUntil.h"
#include "support/desktop/PrivateDesktop.h"

#include <QDBusMessage>
#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

QDateTime wallNow = QDateTime::fromSecsSinceEpoch(1'795'000'000);
QDateTime fakeWall() {
    return wallNow;
}

struct Sleeper {
    bool woke = false;
    QCoro::Task<> run(Clock& clock, std::chrono::milliseconds duration,
                      std::shared_ptr<Cancellation> cancellation) {
        co_await clock.sleep(duration, std::move(cancellation));
        woke = true;
    }
};

TEST(SleepResume, LogindResumeEndsTheSleepsThatFellDueWhileSuspended) {
    PrivateDesktop desktop;
    const std::optional<QString> failure = desktop.startBus();
    ASSERT_FALSE(failure) << failure->toStdString();
    QDBusConnection logind =
        QDBusConnection::connectToBus(desktop.busAddress(), QStringLiteral("fake-logind"));
    ASSERT_TRUE(logind.registerService(QStringLiteral("org.freedesktop.login1")));
    SystemClock clock(&fakeWall);
    LogindSleepWatch watch(desktop.connection(), [&] { clock.resumed(); });
    auto prepareForSleep = [&](bool sleeping) {
        QDBusMessage signal = QDBusMessage::createSignal(
            QStringLiteral("/org/freedesktop/login1"),
            QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"));
        signal << sleeping;
        ASSERT_TRUE(logind.send(signal));
    };

    auto cancel = std::make_shared<Cancellation>();
    Sleeper pause; // the loop's pause before the next pass
    Sleeper longer;
    auto pauseTask = pause.run(clock, 10min, cancel);
    auto longerTask = longer.run(clock, 30min, cancel);

    prepareForSleep(true);                // going to sleep changes nothing
    waitUntil([] { return false; }, 200); // delivered before the wall clock moves
    wallNow = wallNow.addSecs(11 * 60);
    prepareForSleep(false);
    EXPECT_TRUE(waitUntil([&] { return pause.woke; }));
    waitUntil([] { return false; }, 200);
    EXPECT_FALSE(longer.woke); // 19 minutes are still to go

    cancel->cancel();
    EXPECT_TRUE(waitUntil([&] { return longer.woke; }));

    Sleeper late; // a wake time that passed before the sleep began: a deadline already gone
    auto lateTask = late.run(clock, -5s, nullptr);
    EXPECT_TRUE(waitUntil([&] { return late.woke; }));
    QDBusConnection::disconnectFromBus(QStringLiteral("fake-logind"));
}

} // namespace
