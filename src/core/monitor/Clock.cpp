#include "core/monitor/Clock.h"

#include <QCoro/QCoroSignal>
#include <QTimer>

QDateTime SystemClock::now() const {
    return QDateTime::currentDateTime();
}

QCoro::Task<> SystemClock::sleep(std::chrono::milliseconds duration,
                                 std::shared_ptr<Cancellation> cancellation) {
    if (cancellation && cancellation->isCancelled())
        co_return;
    QTimer timer;
    timer.setSingleShot(true);
    timer.setTimerType(Qt::CoarseTimer);
    QMetaObject::Connection wake;
    if (cancellation)
        wake = QObject::connect(cancellation.get(), &Cancellation::cancelled, &timer,
                                [&timer] { timer.start(0); });
    timer.start(duration);
    co_await qCoro(&timer, &QTimer::timeout);
    QObject::disconnect(wake);
}
