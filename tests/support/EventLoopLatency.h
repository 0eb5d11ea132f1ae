#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdio>

// How long the thread's event loop was held up: a short periodic timer records how late each of
// its ticks came. Whatever keeps the thread from its events (a long parse, a synchronous call
// waiting for an answer) shows as one late tick, whether or not the test was looking at that
// moment. The time the thread only waited for a processor (the kernel's run-queue delay, on a
// busy machine) is the machine's doing, not the code's, and is left out.
class EventLoopLatency {
public:
    explicit EventLoopLatency(std::chrono::milliseconds interval = std::chrono::milliseconds(10))
        : interval_(interval.count()) {
        timer_.setTimerType(Qt::PreciseTimer);
        timer_.setInterval(interval);
        QObject::connect(&timer_, &QTimer::timeout, [this] { tick(); });
        sinceTick_.start();
        queuedAtTick_ = runQueueMs();
        timer_.start();
    }

    // The worst lateness seen so far, including the time since the last tick.
    std::chrono::milliseconds worst() const {
        return std::chrono::milliseconds(
            std::max(worst_, lateness(sinceTick_.elapsed(), runQueueMs())));
    }

private:
    // Milliseconds this thread spent runnable but waiting for a processor; 0 where the kernel
    // does not tell.
    static qint64 runQueueMs() {
        std::FILE* file = std::fopen("/proc/thread-self/schedstat", "r");
        if (file == nullptr)
            return 0;
        unsigned long long running = 0;
        unsigned long long waiting = 0;
        const int read = std::fscanf(file, "%llu %llu", &running, &waiting);
        std::fclose(file);
        return read == 2 ? qint64(waiting / 1000000) : 0;
    }

    qint64 lateness(qint64 sinceTickMs, qint64 queuedMs) const {
        return sinceTickMs - interval_ - (queuedMs - queuedAtTick_);
    }

    void tick() {
        const qint64 queued = runQueueMs();
        worst_ = std::max(worst_, lateness(sinceTick_.restart(), queued));
        queuedAtTick_ = queued;
    }

    qint64 interval_;
    qint64 worst_ = 0;
    qint64 queuedAtTick_ = 0;
    QElapsedTimer sinceTick_;
    QTimer timer_;
};
