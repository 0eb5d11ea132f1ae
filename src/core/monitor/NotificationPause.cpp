#include "core/monitor/NotificationPause.h"

#include "core/common/Language.h"

NotificationPause::NotificationPause(Clock& clock, NotificationService& notifications,
                                     QObject* parent)
    : QObject(parent), clock_(clock), notifications_(notifications) {}

NotificationPause::~NotificationPause() {
    if (timer_)
        timer_->cancel();
}

void NotificationPause::pause(std::chrono::minutes duration) {
    if (timer_)
        timer_->cancel();
    timer_ = std::make_shared<Cancellation>();
    until_ =
        clock_.now().addSecs(std::chrono::duration_cast<std::chrono::seconds>(duration).count());
    endAfter(QPointer<NotificationPause>(this), duration, timer_);
    Q_EMIT changed();
}

QCoro::Task<> NotificationPause::endAfter(QPointer<NotificationPause> self,
                                          std::chrono::minutes duration,
                                          std::shared_ptr<Cancellation> token) {
    co_await self->clock_.sleep(duration, token);
    if (self && !token->isCancelled())
        self->resume();
}

void NotificationPause::resume() {
    if (!until_)
        return;
    if (timer_)
        timer_->cancel();
    timer_.reset();
    until_.reset();
    if (!held_.isEmpty())
        notifications_.post(summary(std::exchange(held_, {})));
    Q_EMIT changed();
}

QString NotificationPause::pausedUntilText() const {
    if (!until_)
        return {};
    return Language::text("Paused until ", "En pause jusqu'à ") +
           until_->time().toString(QStringLiteral("HH:mm"));
}

void NotificationPause::deliver(const FailureNotification& failure) {
    if (until_)
        held_.append(failure);
    else
        notifications_.post(failure);
}

FailureNotification NotificationPause::summary(const QList<FailureNotification>& held) {
    FailureNotification result;
    const qsizetype count = held.size();
    result.title = count == 1 ? Language::text("1 deployment failed while paused",
                                               "1 déploiement a échoué pendant la pause")
                              : Language::text("%1 deployments failed while paused",
                                               "%1 déploiements ont échoué pendant la pause")
                                    .arg(count);
    QStringList lines;
    for (const FailureNotification& failure : held)
        lines.append(failure.title);
    result.body = lines.join(QLatin1Char('\n'));
    if (count == 1) {
        // One failure: the summary can act for it.
        result.identifier = held.first().identifier;
        result.url = held.first().url;
        result.offersReport = held.first().offersReport;
    }
    return result;
}
