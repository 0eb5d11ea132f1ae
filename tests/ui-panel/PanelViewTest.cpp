#include "ui/panel/PanelView.h"
#include "support/FakeDesktop.h"
#include "ui-panel/PanelScene.h"

#include "core/common/Language.h"
#include "core/keychain/KeychainStore.h"
#include "core/monitor/AppState.h"
#include "support/FakeServices.h"
#include "support/FakeVercelAccount.h"
#include "support/LoopbackHttpServer.h"
#include "support/ManualClock.h"
#include "support/MemorySecretBackend.h"
#include "support/TempPreferences.h"
#include "support/WaitUntil.h"
#include "ui/panel/ProjectRow.h"
#include "ui/status/StatusPalette.h"

#include <QCoro/QCoroTask>
#include <QDir>
#include <QScrollArea>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <gtest/gtest.h>

namespace {

using PanelScene::start;

ProjectSnapshot snap(const QString& id, const char* state, std::optional<double> readyMs) {
    ProjectSnapshot made{id,          id, QStringLiteral("acme"), std::nullopt, VercelDeployment{},
                         std::nullopt};
    made.latest->uid = QStringLiteral("dpl_") + id;
    made.latest->readyState = QString::fromLatin1(state);
    made.latest->ready = readyMs;
    return made;
}

class PanelViewTest : public ::testing::Test, protected FakeDesktop {
protected:
    LoopbackHttpServer server;
    FakeVercelAccount account{server};
    AppState state{services(server.baseUrl())};
    StatusPalette palette{*prefs, QStringLiteral("#FF0074")};

    void SetUp() override { Language::overrideSystemLanguages({QStringLiteral("en-US")}); }
    void TearDown() override { Language::clearSystemLanguagesOverride(); }

    double minutesAgo(int minutes) const {
        return static_cast<double>(start.addSecs(-60 * minutes).toMSecsSinceEpoch());
    }

    // Connects to the fake account holding `count` projects, each with a READY deployment.
    void connectWith(int count) {
        for (int i = 0; i < count; ++i) {
            const QString id = QStringLiteral("p_%1").arg(i, 2, 10, QLatin1Char('0'));
            account.addProject(
                "", id, QStringLiteral("project-%1").arg(i),
                QJsonArray{FakeVercelAccount::deployment("dpl_" + id, id, "READY",
                                                         minutesAgo(60 + i), minutesAgo(50 + i))});
        }
        QCoro::waitFor(state.connect(QStringLiteral("tok_secret_123")));
        ASSERT_TRUE(waitUntil([&] { return !state.isRefreshing(); }));
        ASSERT_EQ(state.snapshots().size(), count);
    }
};

} // namespace

TEST(PanelViewBody, FollowsTheConnection) {
    using B = PanelView::Body;
    EXPECT_EQ(PanelView::bodyFor(Connection::failed("x"), true, true), B::failed);
    EXPECT_EQ(PanelView::bodyFor(Connection::checking(), true, true), B::checking);
    EXPECT_EQ(PanelView::bodyFor(Connection::noToken(), true, true), B::noToken);
    EXPECT_EQ(PanelView::bodyFor(Connection::connected("ada"), false, false), B::loading);
    EXPECT_EQ(PanelView::bodyFor(Connection::connected("ada"), false, true), B::noProjects);
    EXPECT_EQ(PanelView::bodyFor(Connection::connected("ada"), true, false), B::list);
    EXPECT_EQ(PanelView::bodyFor(Connection::connected("ada"), true, true), B::list);
}

TEST(PanelViewAccent, MostRecentReadyWinsAndTiesGoToTheFirst) {
    EXPECT_EQ(PanelView::accentProjectId({}), std::nullopt);
    // Only READY counts, whatever its case; a failed newer deployment does not.
    EXPECT_EQ(PanelView::accentProjectId({snap("a", "ERROR", 9000), snap("b", "ready", 1000),
                                          snap("c", "BUILDING", 8000)}),
              "b");
    EXPECT_EQ(PanelView::accentProjectId({snap("a", "READY", 1000), snap("b", "READY", 5000)}),
              "b");
    EXPECT_EQ(PanelView::accentProjectId({snap("a", "READY", 5000), snap("b", "READY", 5000)}),
              "a");
    // A READY deployment without a time only wins when no other has one.
    EXPECT_EQ(PanelView::accentProjectId({snap("a", "READY", std::nullopt), snap("b", "READY", 1)}),
              "b");
    EXPECT_EQ(PanelView::accentProjectId(
                  {snap("a", "READY", std::nullopt), snap("b", "READY", std::nullopt)}),
              "a");
    // `state` stands in for a missing readyState.
    ProjectSnapshot byState = snap("s", "QUEUED", 7000);
    byState.latest->readyState.reset();
    byState.latest->state = QStringLiteral("Ready");
    EXPECT_EQ(PanelView::accentProjectId({snap("a", "READY", 1000), byState}), "s");
    ProjectSnapshot none = snap("n", "READY", 9000);
    none.latest.reset();
    EXPECT_EQ(PanelView::accentProjectId({none, snap("a", "CANCELED", 1)}), std::nullopt);
}

TEST_F(PanelViewTest, WithoutTokenShowsTheConnectCardAndNoRefreshButton) {
    state.start(false);
    PanelView panel(state, palette);
    panel.show();
    EXPECT_EQ(panel.body(), PanelView::Body::noToken);
    EXPECT_EQ(panel.bodyTitle(), "Connect your Vercel account");
    EXPECT_FALSE(panel.refreshButton()->isVisible());
    EXPECT_EQ(panel.width(), 320);
    EXPECT_TRUE(panel.lastRefreshText().isEmpty());
    QSignalSpy settings(&panel, &PanelView::quillonOpenSettings);
    ASSERT_NE(panel.bodyButton(), nullptr);
    QTest::mouseClick(panel.bodyButton(), Qt::LeftButton);
    EXPECT_EQ(settings.count(), 1);
    QTest::mouseClick(panel.settingsButton(), Qt::LeftButton);
    EXPECT_EQ(settings.count(), 2);
    EXPECT_EQ(panel.settingsButton()->text(), "Settings");
    EXPECT_EQ(panel.quitButton()->text(), "Quit");
}

TEST_F(PanelViewTest, FailedConnectionShowsTheMessageVerbatim) {
    account.failures.insert("/v2/user",
                            LoopbackHttpServer::Response::vercelError(403, "forbidden", "no"));
    PanelView panel(state, palette);
    QCoro::waitFor(state.connect(QStringLiteral("bad")));
    ASSERT_EQ(state.connection().kind, Connection::Kind::failed);
    EXPECT_EQ(panel.body(), PanelView::Body::failed);
    EXPECT_EQ(panel.bodyTitle(), "Connection failed");
    EXPECT_EQ(panel.bodyMessage(), state.connection().detail);
    EXPECT_FALSE(panel.refreshButton()->isVisibleTo(&panel));
}

TEST_F(PanelViewTest, ConnectedWithoutProjectsShowsTheNoProjectCard) {
    PanelView panel(state, palette);
    connectWith(0);
    EXPECT_TRUE(state.hasLoadedOnce());
    EXPECT_EQ(panel.body(), PanelView::Body::noProjects);
    EXPECT_EQ(panel.bodyTitle(), "No project monitored");
    EXPECT_TRUE(panel.refreshButton()->isVisibleTo(&panel));
    EXPECT_TRUE(panel.statusText().contains("today"));
    EXPECT_TRUE(panel.lastRefreshText().startsWith("Updated "));
}

TEST_F(PanelViewTest, RowsFollowTheSnapshotsWithTheAccentOnTheNewestReady) {
    PanelView panel(state, palette);
    connectWith(3);
    ASSERT_EQ(panel.body(), PanelView::Body::list);
    ASSERT_EQ(panel.rows().size(), 3);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(panel.rows()[i]->snapshot().id, state.snapshots()[i].id);
    // p_00 finished 50 minutes ago, the others earlier.
    EXPECT_EQ(panel.accentId(), "p_00");
}

TEST_F(PanelViewTest, NineRowsGrowThePanelAndTenScroll) {
    PanelView panel(state, palette);
    connectWith(9);
    EXPECT_FALSE(panel.isScrolling());
    const int nine = panel.height();
    EXPECT_EQ(panel.height(), panel.fittingHeight());
    EXPECT_GT(nine, 9 * panel.rows().first()->heightForWidth(PanelView::panelWidth));

    const QString id = QStringLiteral("p_09");
    account.addProject("", id, "project-9",
                       QJsonArray{FakeVercelAccount::deployment("dpl_p_09", id, "READY",
                                                                minutesAgo(70), minutesAgo(69))});
    QCoro::waitFor(state.loadProjects());
    state.addMonitored(id);
    QCoro::waitFor(state.refresh());
    ASSERT_TRUE(waitUntil([&] { return state.snapshots().size() == 10; }));
    ASSERT_EQ(panel.rows().size(), 10);
    ASSERT_TRUE(panel.isScrolling());
    EXPECT_EQ(panel.scrollArea()->height(), PanelView::scrollHeight);
    EXPECT_EQ(panel.height(), panel.fittingHeight());
    // The ten rows need more than the fixed height: the list scrolls instead of growing.
    EXPECT_GT(10 * panel.rows().first()->heightForWidth(PanelView::panelWidth),
              PanelView::scrollHeight);
}

TEST_F(PanelViewTest, RefreshButtonStartsAPass) {
    PanelView panel(state, palette);
    panel.show();
    connectWith(1);
    const int before = account.requestCount("/v6/deployments");
    QTest::mouseClick(panel.refreshButton(), Qt::LeftButton);
    ASSERT_TRUE(waitUntil([&] { return account.requestCount("/v6/deployments") > before; }));
    ASSERT_TRUE(waitUntil([&] { return !state.isRefreshing(); }));
}

TEST_F(PanelViewTest, LanguageChangeSwitchesEveryText) {
    PanelView panel(state, palette);
    connectWith(0);
    state.setLanguage(QStringLiteral("fr"));
    EXPECT_EQ(panel.bodyTitle(), "Aucun projet surveillé");
    EXPECT_EQ(panel.settingsButton()->text(), "Réglages");
    EXPECT_TRUE(panel.lastRefreshText().startsWith("Mis à jour "));
    EXPECT_TRUE(panel.statusText().contains("aujourd'hui"));
}

TEST_F(PanelViewTest, RendersTheDemoPanel) {
    state.start(true);
    ASSERT_TRUE(waitUntil([&] { return !state.snapshots().isEmpty(); }));
    PanelView panel(state, palette);
    panel.show();
    EXPECT_EQ(panel.body(), PanelView::Body::list);
    EXPECT_EQ(panel.rows().size(), state.snapshots().size());
    const QString dir = qEnvironmentVariable("QUILLON_SHOTS_DIR");
    if (!dir.isEmpty()) {
        QDir().mkpath(dir);
        EXPECT_TRUE(panel.grab().save(dir + "/panel-demo.png"));
    }
}
