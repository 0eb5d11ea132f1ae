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

// The real clock: QDateTime::currentDateTime and a Qt timer.
class SystemClock final : public Clock {
public:
    QDateTime now() const override;
    QCoro::Task<> sleep(std::chrono::milliseconds duration,
                        std::shared_ptr<Cancellation> cancellation) override;
};
