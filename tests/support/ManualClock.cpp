#include "support/ManualClock.h"

#include <QTimer>
#include <algorithm>

struct ManualClock::Awaiter {
    ManualClock* clock;
    Sleeper* sleeper;
    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> handle) {
        sleeper->handle = handle;
        clock->sleepers_.append(sleeper);
    }
    void await_resume() const noexcept {}
};

QCoro::Task<> ManualClock::sleep(std::chrono::milliseconds duration,
                                 std::shared_ptr<Cancellation> cancellation) {
    requested_.append(duration);
    if (cancellation && cancellation->isCancelled())
        co_return;
    Sleeper sleeper{now_.addMSecs(duration.count()), {}, cancellation};
    QMetaObject::Connection wakeOnCancel;
    if (cancellation) {
        // Like a real timer, a cancelled sleeper wakes from the event loop, not inside cancel().
        wakeOnCancel = QObject::connect(
            cancellation.get(), &Cancellation::cancelled, &context_,
            [this, s = &sleeper] { QTimer::singleShot(0, &context_, [this, s] { wake(s); }); });
    }
    co_await Awaiter{this, &sleeper};
    QObject::disconnect(wakeOnCancel);
}

ManualClock::~ManualClock() {
    const QList<Sleeper*> pending = sleepers_;
    for (Sleeper* sleeper : pending) {
        if (sleeper->cancellation && sleeper->cancellation->isCancelled())
            wake(sleeper);
    }
}

void ManualClock::wake(Sleeper* sleeper) {
    if (!sleepers_.removeOne(sleeper))
        return;
    sleeper->handle.resume();
}

void ManualClock::advance(std::chrono::milliseconds duration) {
    const QDateTime target = now_.addMSecs(duration.count());
    for (;;) {
        const auto next = std::min_element(sleepers_.begin(), sleepers_.end(),
                                           [](Sleeper* a, Sleeper* b) { return a->due < b->due; });
        if (next == sleepers_.end() || (*next)->due > target)
            break;
        Sleeper* due = *next;
        now_ = std::max(now_, due->due);
        wake(due);
    }
    now_ = target;
}
