#include "core/update/AppcastUpdater.h"

#include "core/common/HttpTransport.h"
#include "core/common/Language.h"
#include "core/common/Preferences.h"
#include "core/monitor/Clock.h"
#include "core/update/AppcastItem.h"
#include "core/update/VersionOrder.h"

namespace {

Expected<QByteArray, QString> outcome(HttpReply& reply) {
    if (reply.tooLarge)
        return Language::text("the feed is larger than 4 MiB.", "le flux dépasse 4 Mio.");
    // Qt reports its own transfer timeout as a cancellation; nothing else cancels a check.
    if (reply.failure == NetworkFailure::operationCanceled ||
        reply.failure == NetworkFailure::timeout)
        return Language::text("the request timed out.", "la requête a expiré.");
    if (reply.status && (*reply.status < 200 || *reply.status > 299))
        return Language::text("the server answered with HTTP status %1.",
                              "le serveur a répondu avec le statut HTTP %1.")
            .arg(*reply.status);
    if (reply.failure != NetworkFailure::none)
        return reply.failureText;
    return std::move(reply.body);
}

QCoro::Task<Expected<QByteArray, QString>> fetch(QUrl url) {
    HttpRequest request{
        std::move(url),
        {},
        std::chrono::duration_cast<std::chrono::milliseconds>(AppcastUpdater::timeout),
        AppcastUpdater::maxFeedBytes};
    HttpReply reply = co_await boundedSend(std::move(request));
    co_return outcome(reply);
}

} // namespace

const QString AppcastUpdater::automaticChecksKey = QStringLiteral("SUEnableAutomaticChecks");

AppcastUpdater::AppcastUpdater(QObject* parent)
    : UpdateService(parent), ownClock_(std::make_unique<SystemClock>()),
      feed_(feedFromEnvironment()), clock_(*ownClock_),
      currentVersion_(AppVersion::shortVersion()) {}

AppcastUpdater::AppcastUpdater(Expected<QUrl, QString> feed, Clock& clock, QString currentVersion,
                               QObject* parent)
    : UpdateService(parent), feed_(std::move(feed)), clock_(clock),
      currentVersion_(std::move(currentVersion)) {}

AppcastUpdater::~AppcastUpdater() {
    setAutomaticallyChecksForUpdates(false);
}

void AppcastUpdater::start(const Preferences& preferences) {
    setAutomaticallyChecksForUpdates(preferences.boolean(automaticChecksKey).value_or(true));
}

void AppcastUpdater::setAutomaticallyChecksForUpdates(bool enabled) {
    if (enabled == automaticallyChecksForUpdates())
        return;
    if (!enabled) {
        schedule_->cancel();
        schedule_.reset();
        return;
    }
    schedule_ = std::make_shared<Cancellation>();
    runSchedule(QPointer<AppcastUpdater>(this), clock_, schedule_);
}

QCoro::Task<> AppcastUpdater::runSchedule(QPointer<AppcastUpdater> self, Clock& clock,
                                          std::shared_ptr<Cancellation> token) {
    std::chrono::milliseconds pause = firstCheckDelay;
    for (;;) {
        co_await clock.sleep(pause, token);
        if (!self || token->isCancelled())
            co_return;
        self->checkForUpdates();
        pause = checkInterval;
    }
}

void AppcastUpdater::checkForUpdates() {
    if (checking_)
        return;
    checking_ = true;
    Q_EMIT resultChanged();
    runCheck(QPointer<AppcastUpdater>(this));
}

QCoro::Task<> AppcastUpdater::runCheck(QPointer<AppcastUpdater> self) {
    if (!self->feed_) {
        self->finish(self->feed_.error());
        co_return;
    }
    const Expected<QByteArray, QString> body = co_await fetch(self->feed_.value());
    if (self)
        self->finish(body);
}

void AppcastUpdater::finish(const Expected<QByteArray, QString>& body) {
    const Expected<AppcastItem, QString> newest =
        body ? AppcastItem::newestIn(body.value()) : Expected<AppcastItem, QString>(body.error());
    if (!newest) {
        // The reason was worded in the language of the moment; the sentence keeps to it.
        found_ = Found::failed;
        failure_ = Language::text("Could not check for updates: ",
                                  "Impossible de vérifier les mises à jour : ") +
                   newest.error();
    } else {
        found_ = VersionOrder::isNewer(newest->version, currentVersion_) ? Found::newer
                                                                         : Found::upToDate;
        version_ = newest->version;
        page_ = newest->downloadPage;
    }
    checking_ = false;
    Q_EMIT resultChanged();
}

QString AppcastUpdater::resultText() const {
    switch (found_) {
    case Found::nothing:
        return {};
    case Found::newer:
        return Language::text("Quillon %1 is available.", "Quillon %1 est disponible.")
            .arg(version_);
    case Found::upToDate:
        return Language::text("Quillon is up to date.", "Quillon est à jour.");
    case Found::failed:
        return failure_;
    }
    return {};
}

std::optional<QUrl> AppcastUpdater::downloadPage() const {
    if (found_ != Found::newer)
        return std::nullopt;
    return page_;
}

std::optional<QString> AppcastUpdater::newerVersion() const {
    if (found_ != Found::newer)
        return std::nullopt;
    return version_;
}
