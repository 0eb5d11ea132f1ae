#include "core/monitor/Clock.h"

#include <QCoro/QCoroSignal>
#include <QTimer>
#include <algorithm>

// Waits on a signal without arguments: QTimer::timeout carries a private tag that QCoro would
// bind through a null reference. The timer and a cancellation both end the wait at once.
QCoro::Task<> SystemClock::sleep(std::chrono::milliseconds duration,
                                 std::shared_ptr<Cancellation> cancellation) {
    if (cancellation && cancellation->isCancelled())
        co_return;
    // A wake time already passed ends the sleep at the next turn of the loop: Qt refuses a
    // negative interval and would never fire.
    duration = std::max(duration, std::chrono::milliseconds(0));
    Cancellation due;
    QTimer timer;
    timer.setSingleShot(true);
    timer.setTimerType(Qt::CoarseTimer);
    QObject::connect(&timer, &QTimer::timeout, &due, &Cancellation::cancel);
    if (cancellation)
        QObject::connect(cancellation.get(), &Cancellation::cancelled, &due, &Cancellation::cancel);
    const QDateTime wake = now().addMSecs(duration.count());
    QObject::connect(this, &SystemClock::wokeUp, &due, [this, wake, &timer, &due] {
        const qint64 left = now().msecsTo(wake);
        if (left <= 0)
            due.cancel();
        else
            timer.start(std::chrono::milliseconds(left));
    });
    timer.start(duration);
    co_await qCoro(&due, &Cancellation::cancelled);
}
