#pragma once

#include <QCoro/QCoroTask>
#include <QDateTime>
#include <QObject>
#include <QPointer>
#include <chrono>
#include <memory>

// Cancels the sleeps and loops that hold it; cancelling wakes a sleeper at once.
class Cancellation : public QObject {
    Q_OBJECT
public:
    bool isCancelled() const { return cancelled_; }
    void cancel() {
        if (cancelled_)
            return;
        cancelled_ = true;
        Q_EMIT cancelled();
    }
Q_SIGNALS:
    void cancelled();

private:
    bool cancelled_ = false;
};

// Wall time and cancellable sleeps, so tests can run minutes of polling without waiting.
class Clock {
public:
    virtual ~Clock() = default;
    virtual QDateTime now() const = 0;
    // Resumes on the main thread after `duration`, or at once when `cancellation` fires.
    virtual QCoro::Task<> sleep(std::chrono::milliseconds duration,
                                std::shared_ptr<Cancellation> cancellation) = 0;
};

// The real clock: wall time, and Qt timers for the sleeps. Qt's timers run on the monotonic clock,
// which stops while the computer is suspended; `resumed` (called when the system reports a
// resume) ends the sleeps whose time passed meanwhile and shortens the others to what is left,
// so a pass is never late by the length of a suspend.
class SystemClock final : public QObject, public Clock {
    Q_OBJECT
public:
    using WallTime = QDateTime (*)();
    explicit SystemClock(WallTime wallTime = &QDateTime::currentDateTime) : wallTime_(wallTime) {}

    QDateTime now() const override { return wallTime_(); }
    QCoro::Task<> sleep(std::chrono::milliseconds duration,
                        std::shared_ptr<Cancellation> cancellation) override;
    void resumed() { Q_EMIT wokeUp(); }

Q_SIGNALS:
    void wokeUp();

private:
    WallTime wallTime_;
};
