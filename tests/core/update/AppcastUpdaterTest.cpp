#include "core/update/AppcastUpdater.h"
#include "core/update/UpdateAnnouncer.h"
#include "support/FakeServices.h"
#include "support/FrenchDesktop.h"
#include "support/LoopbackHttpServer.h"
#include "support/ManualClock.h"
#include "support/QtPrinters.h"
#include "support/ScopedEnvironment.h"
#include "support/TempPreferences.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using Response = LoopbackHttpServer::Response;

namespace {

QByteArray appcast(const QByteArray& version) {
    return R"(<?xml version="1.0"?>
<rss version="2.0" xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle"><channel>
<item><sparkle:version>)" +
           version + R"(</sparkle:version><link>https://fernhollow.com/quillon/)" + version +
           "</link></item></channel></rss>";
}

Response xml(QByteArray body, int status = 200) {
    return {status, {{"Content-Type", "application/rss+xml"}}, std::move(body)};
}

// An updater for version 1.4 reading the test server's /appcast.xml.
struct UpdaterFixture : ::testing::Test {
    LoopbackHttpServer server;
    ManualClock clock;
    QUrl feedUrl = server.baseUrl().resolved(QUrl(QStringLiteral("/appcast.xml")));
    AppcastUpdater updater{feedUrl, clock, QStringLiteral("1.4")};

    void serve(Response response) {
        server.route(QStringLiteral("/appcast.xml"), [response](const auto&) { return response; });
    }
    // Checks now and answers the result text once the check is over.
    QString check() {
        updater.checkForUpdates();
        EXPECT_TRUE(updater.isChecking());
        EXPECT_TRUE(waitUntil([this] { return !updater.isChecking(); }));
        return updater.resultText();
    }
    int feedRequests() const {
        return int(server.requestsTo(QStringLiteral("/appcast.xml")).size());
    }
};

} // namespace

TEST_F(UpdaterFixture, TellsANewerVersionAndWhereToGetItOrThatItIsUpToDate) {
    EXPECT_EQ(updater.resultText(), "");
    serve(xml(appcast("1.10")));
    int changes = 0;
    QObject::connect(&updater, &UpdateService::resultChanged, [&changes] { ++changes; });
    EXPECT_EQ(check(), "Quillon 1.10 is available.");
    EXPECT_EQ(changes, 2); // the check started, then ended
    EXPECT_EQ(updater.downloadPage(), QUrl("https://fernhollow.com/quillon/1.10"));

    for (const QByteArray version : {"1.4", "1.4.0", "1.3.9"}) {
        serve(xml(appcast(version)));
        EXPECT_EQ(check(), "Quillon is up to date.") << version.constData();
        EXPECT_EQ(updater.downloadPage(), std::nullopt);
    }
}

TEST_F(UpdaterFixture, AnUnreadableFeedSaysWhyAndOffersNothing) {
    serve(xml(appcast("2.0")));
    check();
    serve(xml("Not here", 404));
    EXPECT_EQ(check(), "Could not check for updates: the server answered with HTTP status 404.");
    EXPECT_EQ(updater.downloadPage(), std::nullopt);
    serve(xml(appcast("2.0").replace("sparkle:version", "version"))); // see AppcastItem
    EXPECT_EQ(check(), "Could not check for updates: the feed offers no version.");
    serve(xml(QByteArray(AppcastUpdater::maxFeedBytes + 1, ' ')));
    EXPECT_EQ(check(), "Could not check for updates: the feed is larger than 4 MiB.");
    {
        FrenchDesktop french;
        EXPECT_EQ(check(), "Impossible de vérifier les mises à jour : le flux dépasse 4 Mio.");
    }

    // A refused connection is reported too.
    AppcastUpdater closed(QUrl("http://127.0.0.1:1/appcast.xml"), clock, QStringLiteral("1.4"));
    closed.checkForUpdates();
    ASSERT_TRUE(waitUntil([&closed] { return !closed.isChecking(); }));
    EXPECT_TRUE(closed.resultText().startsWith("Could not check for updates: "));
    EXPECT_GT(closed.resultText().size(), QString("Could not check for updates: ").size());
}

TEST_F(UpdaterFixture, AutomaticChecksFollowThePreference) {
    serve(xml(appcast("1.5")));
    TempPreferences preferences;
    updater.start(*preferences); // enabled by default
    clock.advance(29s);
    EXPECT_EQ(feedRequests(), 0);
    clock.advance(1s);
    ASSERT_TRUE(waitUntil([this] { return updater.resultText() == "Quillon 1.5 is available."; }));
    EXPECT_EQ(feedRequests(), 1);
    clock.advance(23h);
    EXPECT_EQ(feedRequests(), 1);
    clock.advance(1h);
    ASSERT_TRUE(waitUntil([this] { return feedRequests() == 2 && !updater.isChecking(); }));

    updater.setAutomaticallyChecksForUpdates(false);
    clock.advance(72h);
    QCoreApplication::processEvents();
    EXPECT_EQ(feedRequests(), 2);
    EXPECT_EQ(clock.pendingSleepers(), 0);

    // Turned back on: a check shortly after, not at once.
    updater.setAutomaticallyChecksForUpdates(true);
    updater.setAutomaticallyChecksForUpdates(true); // no second schedule
    EXPECT_EQ(clock.pendingSleepers(), 1);
    clock.advance(30s);
    ASSERT_TRUE(waitUntil([this] { return feedRequests() == 3; }));

    // Turned off, they stay off at the next start too.
    updater.setAutomaticallyChecksForUpdates(false);
    preferences->setBoolean(AppcastUpdater::automaticChecksKey, false);
    AppcastUpdater restarted(feedUrl, clock, QStringLiteral("1.4"));
    restarted.start(*preferences);
    EXPECT_FALSE(restarted.automaticallyChecksForUpdates());
    clock.advance(48h);
    QCoreApplication::processEvents();
    EXPECT_EQ(feedRequests(), 3);
}

TEST(AppcastFeed, ComesFromTheBuildOrASafeOverride) {
    const auto feedFor = [](const char* value) {
        const ScopedEnvironment env("QUILLON_APPCAST_URL", QByteArray(value));
        const Expected<QUrl, QString> feed = AppcastUpdater::feedFromEnvironment();
        return feed ? feed.value().toString() : QStringLiteral("refused: ") + feed.error();
    };
    EXPECT_EQ(feedFor(""), AppcastUpdater::defaultFeed().toString());
    // The address rule is the API base's (see VercelAPIBase); here, that the feed follows it.
    EXPECT_EQ(feedFor("http://127.0.0.1:8080/a.xml"), "http://127.0.0.1:8080/a.xml");
    EXPECT_TRUE(
        feedFor("http://example.com/a.xml").startsWith("refused: QUILLON_APPCAST_URL must"));

    ManualClock clock;
    AppcastUpdater refused(QStringLiteral("no feed here."), clock);
    refused.checkForUpdates();
    ASSERT_TRUE(waitUntil([&refused] { return !refused.isChecking(); }));
    EXPECT_EQ(refused.resultText(), "Could not check for updates: no feed here.");
}

// A newer version is told once, whichever check found it, and not again after a restart; the
// notification's click opens the download page.
TEST_F(UpdaterFixture, ANewerVersionIsToldOncePerVersion) {
    TempPreferences prefs;
    RecordingNotifications notifications;
    auto announcer = std::make_unique<UpdateAnnouncer>(updater, notifications, *prefs);
    serve(xml(appcast("1.4")));
    check();
    EXPECT_TRUE(notifications.posted.isEmpty()); // up to date
    serve(xml(appcast("1.10")));
    check();
    check();
    ASSERT_EQ(notifications.posted.size(), 1);
    EXPECT_EQ(notifications.posted[0].title, "Quillon 1.10 is available");
    EXPECT_EQ(notifications.posted[0].url, QUrl("https://fernhollow.com/quillon/1.10"));

    announcer = std::make_unique<UpdateAnnouncer>(updater, notifications, *prefs); // a restart
    check();
    serve(Response::vercelError(500, "internal", "x"));
    check();
    EXPECT_EQ(notifications.posted.size(), 1);
    serve(xml(appcast("1.11")));
    check();
    ASSERT_EQ(notifications.posted.size(), 2);
    EXPECT_EQ(notifications.posted[1].title, "Quillon 1.11 is available");
}
