#include "ui/panel/PanelView.h"
#include "core/common/Language.h"
#include "support/FakeDesktop.h"
#include "support/FakeVercelAccount.h"
#include "support/LoopbackHttpServer.h"
#include "support/WaitUntil.h"
#include "ui/panel/InlineConfirmation.h"
#include "ui/panel/ProjectRow.h"
#include "ui/panel/RowAction.h"
#include "ui/status/StatusPalette.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QCoro/QCoroTask>
#include <QMenu>
#include <QScrollArea>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <gtest/gtest.h>

namespace {

ProjectSnapshot snap(const QString& id, const char* state, std::optional<double> readyMs) {
    ProjectSnapshot made{id, id, "acme", std::nullopt, VercelDeployment{}, std::nullopt};
    made.latest->uid = "dpl_" + id;
    made.latest->readyState = QString::fromLatin1(state);
    made.latest->ready = readyMs;
    return made;
}

class PanelViewTest : public ::testing::Test, protected FakeDesktop {
protected:
    LoopbackHttpServer server;
    FakeVercelAccount account{server};
    AppState state{services(server.baseUrl())};
    StatusPalette palette{*prefs, "#FF0074"};

    void SetUp() override { Language::overrideSystemLanguages({"en-US"}); }
    void TearDown() override { Language::clearSystemLanguagesOverride(); }

    double minutesAgo(int minutes) const {
        return static_cast<double>(startTime().addSecs(-60 * minutes).toMSecsSinceEpoch());
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
        QCoro::waitFor(state.connect("tok_secret_123"));
        ASSERT_TRUE(waitUntil([&] { return !state.isRefreshing(); }));
        ASSERT_EQ(state.snapshots().size(), count);
    }
};

} // namespace

TEST(PanelViewAccent, MostRecentReadyWinsAndTiesGoToTheFirst) {
    // Only READY counts, whatever its case; a failed newer deployment does not.
    EXPECT_EQ(PanelView::accentProjectId({snap("a", "ERROR", 9000), snap("b", "ready", 1000),
                                          snap("c", "BUILDING", 8000)}),
              "b");
    EXPECT_EQ(PanelView::accentProjectId({snap("a", "READY", 5000), snap("b", "READY", 5000)}),
              "a");
    // A READY deployment without a time only wins when no other has one.
    EXPECT_EQ(PanelView::accentProjectId({snap("a", "READY", std::nullopt), snap("b", "READY", 1)}),
              "b");
    // `state` stands in for a missing readyState.
    ProjectSnapshot byState = snap("s", "QUEUED", 7000);
    byState.latest->readyState.reset();
    byState.latest->state = "Ready";
    EXPECT_EQ(PanelView::accentProjectId({snap("a", "READY", 1000), byState}), "s");
}

TEST_F(PanelViewTest, WithoutTokenShowsTheConnectCardAndNoRefreshButton) {
    state.start(false);
    PanelView panel(state, palette);
    panel.show();
    EXPECT_EQ(panel.body(), PanelView::Body::noToken);
    EXPECT_EQ(panel.bodyTitle(), "Connect your Vercel account");
    EXPECT_FALSE(panel.refreshButton()->isVisible());
    EXPECT_TRUE(panel.lastRefreshText().isEmpty());
    QSignalSpy settings(&panel, &PanelView::quillonOpenSettings);
    ASSERT_NE(panel.bodyButton(), nullptr);
    QTest::mouseClick(panel.bodyButton(), Qt::LeftButton);
    EXPECT_EQ(settings.count(), 1);
    QTest::mouseClick(panel.settingsButton(), Qt::LeftButton);
    EXPECT_EQ(settings.count(), 2);
}

TEST_F(PanelViewTest, FailedConnectionShowsTheMessageVerbatim) {
    account.failures.insert("/v2/user",
                            LoopbackHttpServer::Response::vercelError(403, "forbidden", "no"));
    PanelView panel(state, palette);
    QCoro::waitFor(state.connect("bad"));
    ASSERT_EQ(state.connection().kind, Connection::Kind::failed);
    EXPECT_EQ(panel.body(), PanelView::Body::failed);
    EXPECT_EQ(panel.bodyTitle(), "Connection failed");
    EXPECT_EQ(panel.bodyMessage(), state.connection().detail);
    EXPECT_FALSE(panel.refreshButton()->isVisibleTo(&panel));
}

TEST_F(PanelViewTest, ConnectedWithoutProjectsShowsTheNoProjectCardInTheChosenLanguage) {
    PanelView panel(state, palette);
    connectWith(0);
    EXPECT_TRUE(state.hasLoadedOnce());
    EXPECT_EQ(panel.body(), PanelView::Body::noProjects);
    EXPECT_EQ(panel.bodyTitle(), "No project monitored");
    EXPECT_TRUE(panel.refreshButton()->isVisibleTo(&panel));
    EXPECT_TRUE(panel.statusText().contains("today"));
    EXPECT_TRUE(panel.lastRefreshText().startsWith("Updated "));
    state.setLanguage("fr");
    EXPECT_EQ(panel.bodyTitle(), "Aucun projet surveillé");
    EXPECT_EQ(panel.settingsButton()->text(), "Réglages");
    EXPECT_TRUE(panel.lastRefreshText().startsWith("Mis à jour "));
    EXPECT_TRUE(panel.statusText().contains("aujourd'hui"));
}

TEST_F(PanelViewTest, RowsFollowTheSnapshotsWithTheAccentOnTheNewestReady) {
    PanelView panel(state, palette);
    panel.show();
    connectWith(3);
    ASSERT_EQ(panel.body(), PanelView::Body::list);
    ASSERT_EQ(panel.rows().size(), 3);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(panel.rows()[i]->snapshot().id, state.snapshots()[i].id);
    // p_00 finished 50 minutes ago, the others earlier.
    EXPECT_EQ(panel.accentId(), "p_00");

    const int before = account.requestCount("/v6/deployments");
    QTest::mouseClick(panel.refreshButton(), Qt::LeftButton);
    ASSERT_TRUE(waitUntil([&] { return account.requestCount("/v6/deployments") > before; }));
    ASSERT_TRUE(waitUntil([&] { return !state.isRefreshing(); }));
}

TEST_F(PanelViewTest, NineRowsGrowThePanelAndTenScroll) {
    PanelView panel(state, palette);
    connectWith(9);
    EXPECT_FALSE(panel.isScrolling());
    const int nine = panel.height();
    EXPECT_EQ(panel.height(), panel.fittingHeight());
    EXPECT_GT(nine, 9 * panel.rows().first()->heightForWidth(PanelView::panelWidth));

    const QString id = "p_09";
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

// A team Vercel keeps closed and a rate limit are said under the header; what the rows show
// stays, with its age marked stale.
TEST_F(PanelViewTest, NoticesSayWhatKeepsATeamOutAndStaleDataIsMarked) {
    account.addSamlTeam("team_saml", "acme", "Acme Team");
    PanelView panel(state, palette);
    connectWith(1);
    EXPECT_EQ(panel.noticesText(), "Acme Team requires SAML sign-in: sign in on vercel.com.");
    EXPECT_FALSE(panel.lastRefreshText().contains("stale"));

    account.failures.insert("/v9/projects",
                            LoopbackHttpServer::Response::vercelError(429, "rate_limited", "x")
                                .withHeader("Retry-After", "120"));
    QCoro::waitFor(state.refresh());
    // The clock stands at 3:00 PM: Retry-After puts the next request two minutes later.
    EXPECT_TRUE(
        panel.noticesText().endsWith("\nVercel asked Quillon to slow down. Next check at 3:02 PM."))
        << panel.noticesText().toStdString();
    EXPECT_EQ(panel.rows().size(), 1);
    EXPECT_TRUE(panel.lastRefreshText().endsWith(" · stale"));
    state.setLanguage("fr");
    EXPECT_TRUE(panel.noticesText().startsWith("Acme Team exige une connexion SAML"));
    EXPECT_TRUE(panel.lastRefreshText().endsWith(" · pas à jour"));
}

// A muted project keeps its row, marked with a crossed-out bell and its end as the tooltip; the
// row's context menu mutes and unmutes, and the mark goes when the hour is over.
TEST_F(PanelViewTest, ARowsContextMenuMutesItsProjectAndTheMarkLastsAsLongAsTheMute) {
    PanelView panel(state, palette);
    panel.show();
    connectWith(2);
    ProjectRow* row = panel.rows().first();
    // New rows show from the event loop, and only then take their width in the list.
    ASSERT_TRUE(
        waitUntil([&] { return row->isVisible() && row->width() == PanelView::panelWidth; }));
    const QString id = row->snapshot().id;
    // Light pixels where the row puts its mark, or 0 when it has none.
    const auto markInk = [&] {
        if (row->muteMarkFrame().isEmpty())
            return 0;
        QImage image(row->size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::black);
        row->render(&image, {}, {}, QWidget::DrawChildren);
        const QRect mark = row->muteMarkFrame().toAlignedRect();
        int lit = 0;
        for (int y = mark.top(); y <= mark.bottom(); ++y)
            for (int x = mark.left(); x <= mark.right(); ++x)
                lit += qGray(image.pixel(x, y)) > 60;
        return lit;
    };
    const QRectF nameBefore = row->nameFrame();
    EXPECT_EQ(markInk(), 0);
    EXPECT_EQ(row->toolTip(), "");

    const auto openMenu = [&] {
        const QPoint at(100, 12);
        QContextMenuEvent click(QContextMenuEvent::Mouse, at, row->mapToGlobal(at));
        QCoreApplication::sendEvent(row, &click);
        return qobject_cast<QMenu*>(QApplication::activePopupWidget());
    };
    const auto texts = [](QMenu* menu) {
        QStringList shown;
        for (QAction* action : menu->actions())
            if (!action->isSeparator())
                shown << action->text() + (action->isEnabled() ? "" : " (disabled)");
        return shown;
    };
    const auto pick = [](QMenu* menu, const QString& text) {
        for (QAction* action : menu->actions())
            if (action->text() == text)
                action->trigger();
    };
    QMenu* menu = openMenu();
    ASSERT_TRUE(menu);
    // The row's own actions come first: a live deployment's address.
    EXPECT_EQ(texts(menu), QStringList({"Copy URL", "Mute for 1 hour", "Mute until tomorrow",
                                        "Mute until unmuted"}));
    pick(menu, "Mute for 1 hour");
    menu->close();
    ASSERT_TRUE(state.activeMute(id));
    EXPECT_EQ(state.activeMute(id)->name, row->snapshot().name);

    // Same row, same place in the list; the name makes room for the mark.
    ASSERT_EQ(panel.rows().size(), 2);
    row = panel.rows().first();
    EXPECT_EQ(row->snapshot().id, id);
    EXPECT_EQ(row->toolTip(), "Muted until 16:00");
    EXPECT_GT(markInk(), 10);
    EXPECT_GE(row->muteMarkFrame().left(), row->nameFrame().right());
    EXPECT_FALSE(panel.rows()[1]->mute());

    menu = openMenu();
    ASSERT_TRUE(menu);
    EXPECT_EQ(texts(menu),
              QStringList({"Copy URL", "Muted until 16:00 (disabled)", "Unmute", "Mute for 1 hour",
                           "Mute until tomorrow", "Mute until unmuted"}));
    menu->close();
    clock.advance(std::chrono::hours(1));
    ASSERT_TRUE(waitUntil([&] { return !panel.rows().first()->mute(); }));
    row = panel.rows().first();
    EXPECT_EQ(row->toolTip(), "");
    EXPECT_EQ(markInk(), 0);
    EXPECT_EQ(row->nameFrame(), nameBefore);

    state.muteProject(id, "project-0", MuteLength::untilUnmuted);
    menu = openMenu();
    ASSERT_TRUE(menu);
    pick(menu, "Unmute");
    menu->close();
    EXPECT_FALSE(state.activeMute(id));
}

// Redeploy and cancel ask inside the row (the panel is a popup a window would close): kept with
// the button or Escape, nothing is sent; confirmed, the row says "Redeploying…" while the request
// runs and then why Vercel refused, or the next pass shows the canceled build. The panel follows
// the row's height.
TEST_F(PanelViewTest, ARowAsksInsideItselfBeforeActingAndTellsHowTheRequestWent) {
    account.now = [this] { return clock.now(); };
    account.addTeam("team_acme", "acme");
    account.readOnlyTeams.insert("team_acme");
    account.addProject("team_acme", "p_api", "api");
    QJsonObject failed =
        FakeVercelAccount::deployment("dpl_api1", "p_api", "ERROR", minutesAgo(10), minutesAgo(8));
    failed.insert("target", "production");
    account.addDeployment("team_acme", failed);
    account.addProject("", "p_web", "web");
    account.addDeployment(
        "", FakeVercelAccount::deployment("dpl_web1", "p_web", "BUILDING", minutesAgo(2)));
    PanelView panel(state, palette);
    panel.show();
    QCoro::waitFor(state.connect("tok_secret_123"));
    ASSERT_TRUE(waitUntil([&] { return !state.isRefreshing(); }));
    const auto rowOf = [&](const QString& name) -> ProjectRow* {
        for (ProjectRow* row : panel.rows())
            if (row->snapshot().name == name)
                return row;
        return nullptr;
    };
    const auto writes = [&] {
        QStringList sent;
        for (const LoopbackHttpServer::Request& request : server.requests())
            if (request.method != "GET")
                sent << QString::fromLatin1(request.method) + ' ' + request.path;
        return sent;
    };
    ProjectRow* api = rowOf("api");
    ASSERT_TRUE(api);
    ASSERT_TRUE(
        waitUntil([&] { return api->isVisible() && api->width() == PanelView::panelWidth; }));
    QList<QUrl> opened;
    api->setLinkOpener([&](const QUrl& url) { opened << url; });
    const auto settled = [&] {
        return api->height() == api->heightForWidth(api->width()) &&
               panel.height() == panel.fittingHeight();
    };
    ASSERT_TRUE(waitUntil(settled));
    const int restingHeight = panel.height();
    const QString description = api->descriptionText();

    QTest::mouseClick(api->redeployAction(), Qt::LeftButton);
    ASSERT_EQ(api->asking(), DeploymentAction::redeploy);
    InlineConfirmation* question = api->confirmation();
    EXPECT_TRUE(question->isVisible());
    EXPECT_EQ(question->question(),
              "Redeploy api to Production? Commit “Fix login” (4f2a9c1) on main.");
    EXPECT_EQ(question->confirmButton()->title(), "Redeploy");
    EXPECT_EQ(question->keepButton()->title(), "Keep");
    EXPECT_FALSE(api->redeployAction()->isVisible()); // the question takes the action line
    // The question replaces the (wrapped) action line; the panel follows the row's new height.
    ASSERT_TRUE(waitUntil([&] { return panel.height() != restingHeight && settled(); }));
    QTest::mouseClick(question, Qt::LeftButton, {}, QPoint(4, 4)); // on the text: nothing
    EXPECT_TRUE(api->asking());
    QTest::mouseClick(question->keepButton(), Qt::LeftButton);
    EXPECT_FALSE(api->asking());
    EXPECT_FALSE(state.actionState("p_api"));
    ASSERT_TRUE(waitUntil([&] { return panel.height() == restingHeight; }));
    api->redeployAction()->trigger();
    QTest::keyClick(api->confirmation(), Qt::Key_Escape);
    EXPECT_FALSE(api->asking());
    EXPECT_FALSE(state.actionState("p_api")); // no request started
    EXPECT_TRUE(panel.isVisible());
    EXPECT_TRUE(writes().isEmpty());
    EXPECT_TRUE(opened.isEmpty());

    // The team lets the token read but not deploy: the refusal's sentence, nothing else changes.
    api->redeployAction()->trigger();
    QTest::mouseClick(api->confirmation()->confirmButton(), Qt::LeftButton);
    EXPECT_EQ(api->redeployAction()->title(), "Redeploying…");
    ASSERT_TRUE(waitUntil([&] { return !api->problemText().isEmpty(); }));
    EXPECT_EQ(api->problemText(),
              "Not allowed: this token may not change the deployments of this team or project.");
    EXPECT_EQ(api->redeployAction()->title(), "Redeploy");
    EXPECT_EQ(api->descriptionText(), description);
    EXPECT_EQ(writes(), QStringList{"POST /v13/deployments"});
    ASSERT_TRUE(waitUntil([&] { return panel.height() > restingHeight; }));

    ProjectRow* web = rowOf("web");
    web->cancelAction()->trigger();
    EXPECT_EQ(web->confirmation()->confirmButton()->title(), "Cancel build");
    QTest::mouseClick(web->confirmation()->confirmButton(), Qt::LeftButton);
    EXPECT_EQ(web->cancelAction()->title(), "Canceling…");
    ASSERT_TRUE(
        waitUntil([&] { return rowOf("web")->snapshot().status() == DeployStatus::canceled; }));
    EXPECT_TRUE(rowOf("web")->redeployAction()->isVisible());
    EXPECT_EQ(writes(),
              QStringList({"POST /v13/deployments", "PATCH /v12/deployments/dpl_web1/cancel"}));
}
