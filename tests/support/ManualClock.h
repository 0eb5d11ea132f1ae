#pragma once

#include "core/monitor/Clock.h"

#include <QList>
#include <QObject>
#include <coroutine>

// A clock that stands still until the test moves it. Sleepers wake in due order while
// `advance` moves time forward, so minutes of polling run in microseconds.
class ManualClock final : public Clock {
public:
    explicit ManualClock(QDateTime start = QDateTime::fromSecsSinceEpoch(1'767'262'800))
        : now_(std::move(start)) {}
    // Finishes the sleeps that were cancelled but not yet woken, so their coroutines end
    // instead of staying suspended (and reported as leaks) after the test.
    ~ManualClock() override;

    QDateTime now() const override { return now_; }
    QCoro::Task<> sleep(std::chrono::milliseconds duration,
                        std::shared_ptr<Cancellation> cancellation) override;

    void setNow(const QDateTime& now) { now_ = now; }
    // Moves time forward, waking every sleeper that falls due on the way.
    void advance(std::chrono::milliseconds duration);
    // The durations asked for so far, in order.
    const QList<std::chrono::milliseconds>& requestedSleeps() const { return requested_; }
    int pendingSleepers() const { return static_cast<int>(sleepers_.size()); }

private:
    struct Sleeper {
        QDateTime due;
        std::coroutine_handle<> handle;
        std::shared_ptr<Cancellation> cancellation;
    };
    struct Awaiter;
    void wake(Sleeper* sleeper);

    QDateTime now_;
    QList<Sleeper*> sleepers_;
    // Context of queued wake-ups, so none runs after the clock is gone.
    QObject context_;
    QList<std::chrono::milliseconds> requested_;
};
