#pragma once

#include "core/common/AppVersion.h"
#include "core/common/Expected.h"
#include "core/update/UpdateService.h"

#include <QCoro/QCoroTask>
#include <QPointer>
#include <chrono>
#include <memory>

class Cancellation;
class Clock;
class Preferences;
class SystemClock;

// The software updater: reads the appcast feed, compares its newest version with this build's
// and offers the download page. Automatic checks run shortly after start and then once a day
// while enabled; "Check now" checks at once. Only one check runs at a time.
class AppcastUpdater final : public UpdateService {
    Q_OBJECT
public:
    // The preference that holds the user's choice, shared with the Settings window.
    static const QString automaticChecksKey; // "SUEnableAutomaticChecks"
    static constexpr std::chrono::seconds firstCheckDelay{30};
    static constexpr std::chrono::hours checkInterval{24};
    static constexpr std::chrono::seconds timeout{20};
    static constexpr qint64 maxFeedBytes = 4 * 1024 * 1024;

    // The feed compiled into this build, or QUILLON_APPCAST_URL when set (https://, or http://
    // on a loopback host); an unusable override answers why, in the user's language.
    static Expected<QUrl, QString> feedFromEnvironment();
    static QUrl defaultFeed();

    // The application's updater: the feed from the environment and the system clock.
    explicit AppcastUpdater(QObject* parent = nullptr);
    // A feed that cannot be used makes every check fail with its reason. Automatic checks sleep
    // on `clock`, which must outlive the updater.
    AppcastUpdater(Expected<QUrl, QString> feed, Clock& clock,
                   QString currentVersion = AppVersion::shortVersion(), QObject* parent = nullptr);
    ~AppcastUpdater() override;

    // Schedules automatic checks as `preferences` say (enabled unless the key holds false).
    void start(const Preferences& preferences);

    void setAutomaticallyChecksForUpdates(bool enabled) override;
    bool automaticallyChecksForUpdates() const { return schedule_ != nullptr; }
    // resultChanged() fires when the check starts (isChecking turns true) and when it ends.
    void checkForUpdates() override;
    bool isChecking() const override { return checking_; }
    QString resultText() const override;
    std::optional<QUrl> downloadPage() const override;
    std::optional<QString> newerVersion() const override;

private:
    enum class Found { nothing, newer, upToDate, failed };

    static QCoro::Task<> runCheck(QPointer<AppcastUpdater> self);
    static QCoro::Task<> runSchedule(QPointer<AppcastUpdater> self, Clock& clock,
                                     std::shared_ptr<Cancellation> token);
    void finish(const Expected<QByteArray, QString>& body);

    std::unique_ptr<SystemClock> ownClock_;
    Expected<QUrl, QString> feed_;
    Clock& clock_;
    QString currentVersion_;
    std::shared_ptr<Cancellation> schedule_;
    bool checking_ = false;
    Found found_ = Found::nothing;
    QString version_; // the newest version offered, when found
    QString failure_; // the whole sentence, when the check failed
    QUrl page_;
};
