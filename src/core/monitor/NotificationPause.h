#pragma once

#include "core/monitor/Clock.h"
#include "core/monitor/PlatformServices.h"

#include <QDateTime>
#include <QList>
#include <QObject>
#include <chrono>
#include <memory>
#include <optional>

// "Pause notifications": while paused, failures are held instead of shown; when the pause ends,
// by itself or because the user resumes, one summary lists what failed meanwhile, so nothing is
// lost. The pause lives in memory only: a restart ends it.
class NotificationPause : public QObject {
    Q_OBJECT
public:
    NotificationPause(Clock& clock, NotificationService& notifications, QObject* parent = nullptr);
    ~NotificationPause() override;

    void pause(std::chrono::minutes duration);
    void resume();
    bool isPaused() const { return until_.has_value(); }
    const std::optional<QDateTime>& pausedUntil() const { return until_; }
    // "Paused until 14:30" / "En pause jusqu'à 14:30"; empty when not paused.
    QString pausedUntilText() const;

    // Shows a failure now, or holds it for the summary while paused.
    void deliver(const FailureNotification& failure);

    // The summary of held failures, in the user's language.
    static FailureNotification summary(const QList<FailureNotification>& held);

Q_SIGNALS:
    void changed();

private:
    static QCoro::Task<> endAfter(QPointer<NotificationPause> self, std::chrono::minutes duration,
                                  std::shared_ptr<Cancellation> token);

    Clock& clock_;
    NotificationService& notifications_;
    std::optional<QDateTime> until_;
    QList<FailureNotification> held_;
    std::shared_ptr<Cancellation> timer_;
};
