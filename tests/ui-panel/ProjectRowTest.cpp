#include "ui/panel/ProjectRow.h"
#include "core/common/Language.h"
#include "support/FakeDesktop.h"
#include "support/WaitUntil.h"
#include "ui/panel/InlineConfirmation.h"
#include "ui/panel/LetterBleed.h"
#include "ui/panel/MiniPrism.h"
#include "ui/panel/PanelView.h"
#include "ui/panel/ProgressLine.h"
#include "ui/panel/ProjectRowTexts.h"
#include "ui/panel/RowAction.h"
#include "ui/status/StatusPalette.h"

#include <QEnterEvent>
#include <QMenu>
#include <QTest>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using namespace ProjectRowTexts;

namespace {

const QDateTime start = FakeDesktop::startTime();
const QColor panelBackground(0x1c, 0x1c, 0x22);

double msAgo(double seconds) {
    return static_cast<double>(start.toMSecsSinceEpoch()) - seconds * 1000;
}

// A snapshot of "quillon-web" whose latest deployment is built up case by case; times are in
// seconds before the scene's start.
struct Snap {
    ProjectSnapshot snap{"prj_1",      "quillon-web",      "acme",
                         std::nullopt, VercelDeployment{}, std::nullopt};
    explicit Snap(const char* state) {
        snap.latest->uid = "dpl_1";
        snap.latest->readyState = QString::fromLatin1(state);
    }
    Snap& commit(const QString& message) { return meta("githubCommitMessage", message); }
    Snap& branch(const QString& ref) { return meta("githubCommitRef", ref); }
    Snap& target(const char* name) { return set(snap.latest->target, QString::fromLatin1(name)); }
    Snap& readyAgo(double seconds) { return set(snap.latest->ready, msAgo(seconds)); }
    Snap& createdAgo(double seconds) { return set(snap.latest->createdAt, msAgo(seconds)); }
    Snap& buildingAgo(double seconds) { return set(snap.latest->buildingAt, msAgo(seconds)); }
    operator ProjectSnapshot() const { return snap; }

private:
    template <typename Field, typename Value> Snap& set(Field& field, const Value& value) {
        field = value;
        return *this;
    }
    Snap& meta(const char* key, const QString& value) {
        if (!snap.latest->meta)
            snap.latest->meta.emplace();
        (*snap.latest->meta)[QString::fromLatin1(key)] = JSONScalar{value};
        return *this;
    }
};

bool nearColour(QColor a, QColor b, int tolerance = 12) {
    return std::abs(a.red() - b.red()) <= tolerance &&
           std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

ProjectSnapshot noDeployment() {
    ProjectSnapshot snap = Snap("READY");
    snap.latest.reset();
    return snap;
}

} // namespace

TEST(ProjectRowTexts, DescriptionAgeAndFreshness) {
    // The commit's first line wins over the branch; a failure tells how long it ran.
    const Snap failed = Snap("ERROR").buildingAgo(100).readyAgo(17).branch("main");
    EXPECT_EQ(description(Snap(failed).commit("Fix build\nbody"), false),
              "Failed after 1 min 23 s · Fix build");
    EXPECT_EQ(description(failed, true), "Échec après 1 min 23 s · main");
    EXPECT_EQ(description(Snap("QUEUED").branch("main"), false), "Queued · main");
    // A state Quillon does not know shows Vercel's word with the commit, not "No deployment".
    EXPECT_EQ(description(Snap("SLEEPING").commit("Fix build"), false),
              "State SLEEPING · Fix build");
    EXPECT_EQ(description(Snap("BLOCKED").branch("main"), true), "Bloqué · main");
    EXPECT_EQ(description(noDeployment(), false), "No deployment yet");

    // Running builds count up from their start, never below zero; finished ones age.
    EXPECT_EQ(ageText(Snap("BUILDING").buildingAgo(95), start, false), "1 min 35 s");
    EXPECT_EQ(ageText(Snap("QUEUED").createdAgo(12), start, false), "12 s");
    EXPECT_EQ(ageText(Snap("BUILDING").buildingAgo(-30), start, false), "0 s");
    EXPECT_EQ(ageText(Snap("READY").createdAgo(86400).readyAgo(300), start, false), "5 min ago");

    // Finished deployments go stale after a while; failures and running builds never do.
    EXPECT_FALSE(isFresh(Snap("READY").readyAgo(freshSeconds), start));
    EXPECT_TRUE(isFresh(Snap("READY").createdAgo(10 * 86400).readyAgo(86400), start));
    EXPECT_TRUE(isFresh(Snap("ERROR").readyAgo(90 * 86400), start));
    EXPECT_TRUE(isFresh(Snap("QUEUED").createdAgo(90 * 86400), start));
    EXPECT_TRUE(showsPreviewBadge(Snap("READY")));
    EXPECT_FALSE(showsPreviewBadge(Snap("READY").target("production")));
}

class ProjectRowTest : public ::testing::Test, protected FakeDesktop {
protected:
    AppState state{services()};
    StatusPalette palette{*prefs, "#FF0074"};
    QList<QUrl> opened;

    void SetUp() override { Language::overrideSystemLanguages({"en-US"}); }
    void TearDown() override { Language::clearSystemLanguagesOverride(); }

    std::unique_ptr<ProjectRow> row(const ProjectSnapshot& snap, int width = 360) {
        auto made = std::make_unique<ProjectRow>(state, palette);
        made->setLinkOpener([this](const QUrl& url) { opened.append(url); });
        made->setSnapshot(snap, false);
        made->resize(width, made->heightForWidth(width));
        made->show();
        return made;
    }
};

// The report of a failure and the address of a live deployment: copied on a click only, each
// press confirmed for two seconds.
TEST_F(ProjectRowTest, CopiesHappenOnAClickOnlyAndEachPressConfirmsForTwoSeconds) {
    auto failed = row(Snap("ERROR").commit("Fix build").buildingAgo(100).readyAgo(17));
    RowAction* copy = failed->copyAction();
    ASSERT_TRUE(copy->isVisible());
    EXPECT_EQ(copy->title(), "Copy for AI");
    EXPECT_EQ(copy->contentColor(), palette.error());

    QTest::mouseClick(copy, Qt::LeftButton);
    ASSERT_TRUE(waitUntil([&] { return failed->isCopied(); }));
    ASSERT_EQ(clipboard.texts.size(), 1);
    EXPECT_TRUE(clipboard.texts.first().contains("quillon-web"));
    EXPECT_EQ(copy->title(), "Copied");
    EXPECT_EQ(copy->symbol(), "checkmark");
    EXPECT_TRUE(opened.isEmpty()); // the button's click stays off the row

    clock.advance(1999ms);
    EXPECT_TRUE(failed->isCopied());
    clock.advance(1ms);
    EXPECT_FALSE(failed->isCopied());
    EXPECT_EQ(copy->title(), "Copy for AI");

    copy->trigger();
    ASSERT_TRUE(waitUntil([&] { return failed->isCopied(); }));
    clock.advance(1s);
    copy->trigger();
    ASSERT_TRUE(waitUntil([&] { return clipboard.texts.size() == 3; }));
    clock.advance(1s); // the earlier press ends here
    EXPECT_FALSE(failed->isCopied());

    // A live deployment offers its address while the pointer is over the row, and keeps saying
    // "Copied" its two seconds after the pointer left.
    ProjectSnapshot snap = Snap("READY").readyAgo(60);
    snap.latest->url = "quillon-web-4f2a.vercel.app";
    auto live = row(snap);
    RowAction* url = live->copyURLAction();
    EXPECT_FALSE(url->isVisible());
    QEnterEvent enter(QPointF(200, 20), QPointF(200, 20), QPointF(200, 20));
    QCoreApplication::sendEvent(live.get(), &enter);
    ASSERT_TRUE(url->isVisible());
    EXPECT_EQ(url->title(), "Copy URL");
    EXPECT_EQ(url->symbol(), "link");
    EXPECT_EQ(clipboard.texts.size(), 3); // showing it copies nothing
    QTest::mouseClick(url, Qt::LeftButton);
    ASSERT_EQ(clipboard.texts.size(), 4);
    EXPECT_EQ(clipboard.texts.last(), "https://quillon-web-4f2a.vercel.app");
    EXPECT_EQ(url->title(), "Copied");
    EXPECT_EQ(url->symbol(), "checkmark");
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(live.get(), &leave);
    clock.advance(1999ms);
    EXPECT_TRUE(url->isVisible());
    clock.advance(1ms);
    EXPECT_FALSE(url->isVisible());
    EXPECT_FALSE(live->isURLCopied());
    EXPECT_TRUE(opened.isEmpty());
}

// Which actions a row offers on its line and in its context menu (before the mute choices), by
// the state of its latest deployment; the French titles fit the panel's width too.
TEST_F(ProjectRowTest, EachStatusOffersItsActionsOnTheLineAndInTheMenu) {
    const auto offered = [](ProjectRow& r) {
        QList<std::tuple<int, int, QString>> line; // wrapped lines: top, then left
        for (RowAction* a : {r.copyAction(), r.logAction(), r.redeployAction(), r.cancelAction()})
            if (a->isVisibleTo(&r)) {
                // Inside the row, whose height was asked for before it took its width.
                EXPECT_LE(a->geometry().bottom(), r.height() - ProjectRow::paddingY)
                    << a->title().toStdString();
                EXPECT_LE(a->geometry().right(), r.width() - ProjectRow::paddingX)
                    << a->title().toStdString();
                line.append({a->y(), a->x(), a->title()});
            }
        std::sort(line.begin(), line.end());
        QStringList shown;
        for (const auto& [y, x, title] : line)
            shown << title;
        QMenu menu;
        r.fillContextMenu(menu);
        QStringList items;
        for (QAction* action : menu.actions())
            if (!action->isSeparator())
                items << action->text();
        return shown.join(", ") + " | " + items.mid(0, items.size() - 3).join(", ");
    };
    ProjectSnapshot live = Snap("READY").readyAgo(60);
    live.latest->url = "quillon-web-4f2a.vercel.app";
    const std::vector<std::pair<ProjectSnapshot, QString>> cases{
        {Snap("ERROR"), "Copy for AI, View log, Redeploy | Copy for AI, Redeploy…, View log"},
        {Snap("CANCELED"), "Redeploy, View log | Redeploy…, View log"},
        {Snap("QUEUED"), "Cancel | Cancel build…"},
        {Snap("INITIALIZING"), "Cancel | Cancel build…"},
        {Snap("BUILDING"), "Cancel | Cancel build…"},
        {live, " | Copy URL"},
        {Snap("READY"), " | "}, // no address: nothing to copy
        {noDeployment(), " | "},
    };
    for (const auto& [snap, expected] : cases) {
        auto r = row(snap, PanelView::panelWidth);
        EXPECT_EQ(offered(*r), expected)
            << snap.latest.value_or(VercelDeployment{}).readyState.value_or("none").toStdString();
        EXPECT_FALSE(r->copyURLAction()->isVisible());
    }
    state.setLanguage("fr");
    EXPECT_EQ(offered(*row(Snap("ERROR"), PanelView::panelWidth)),
              "Copier pour l'IA, Voir les logs, Redéployer | Copier pour l'IA, Redéployer…, Voir "
              "les logs");
    EXPECT_EQ(offered(*row(Snap("BUILDING"), PanelView::panelWidth)),
              "Annuler | Annuler le build…");
}

TEST_F(ProjectRowTest, ClickOpensTheDashboardUnlessNoLinkCanBeFormed) {
    ProjectSnapshot snap = Snap("READY").readyAgo(60);
    snap.latest->inspectorUrl = "https://vercel.com/acme/quillon-web/abc";
    auto ready = row(snap);
    QTest::mouseClick(ready.get(), Qt::LeftButton, {}, QPoint(300, 20));
    ASSERT_EQ(opened.size(), 1);
    EXPECT_EQ(opened.first(), QUrl("https://vercel.com/acme/quillon-web/abc"));
    EXPECT_FALSE(ready->copyAction()->isVisible());

    auto failed = row(Snap("ERROR"));
    QTest::mouseClick(failed->logAction(), Qt::LeftButton);
    ASSERT_EQ(opened.size(), 2);
    EXPECT_EQ(opened.last(), *failed->snapshot().dashboardURL());

    ProjectSnapshot demo = Snap("READY");
    demo.scopeSlug = "demo";
    auto linkless = row(demo);
    QTest::mouseClick(linkless.get(), Qt::LeftButton, {}, QPoint(300, 20));
    EXPECT_EQ(opened.size(), 2);
}

TEST_F(ProjectRowTest, RedrawsEverySecondWhileRunningAndEveryHalfMinuteOtherwise) {
    auto building = row(Snap("BUILDING").buildingAgo(10));
    EXPECT_EQ(building->redrawInterval(), 1000);
    EXPECT_TRUE(building->progressLine()->isVisible());
    clock.advance(1s);
    EXPECT_EQ(building->ageText(), "11 s");
    auto ready = row(Snap("READY").readyAgo(60));
    EXPECT_EQ(ready->redrawInterval(), 30000);
    EXPECT_FALSE(ready->progressLine()->isVisible());
}

TEST_F(ProjectRowTest, StaleRowsDimWhileFailuresStayBright) {
    auto stale = row(Snap("READY").target("production").readyAgo(8 * 86400));
    EXPECT_LT(stale->emblemOpacity(), 1.0);
    EXPECT_EQ(stale->nameColor(), ProjectRow::tertiaryText());
    EXPECT_FALSE(stale->hasBadge());

    auto failed = row(Snap("ERROR").readyAgo(80 * 86400));
    EXPECT_DOUBLE_EQ(failed->emblemOpacity(), 1.0);
    EXPECT_EQ(failed->nameColor(), ProjectRow::primaryText());
    EXPECT_EQ(failed->descriptionColor().rgb(), palette.error().rgb());
    EXPECT_TRUE(failed->hasBadge());
}

TEST_F(ProjectRowTest, LongNamesShrinkInTheMiddleAndTheEffectFollowsThePointer) {
    ProjectSnapshot snap = Snap("READY").readyAgo(60);
    snap.name = "a-really-long-project-name-that-never-fits-in-the-panel";
    auto longRow = row(snap, 320);
    EXPECT_TRUE(longRow->shownName().startsWith("A-R")) << longRow->shownName().toStdString();
    EXPECT_TRUE(longRow->shownName().endsWith("NEL"));
    EXPECT_LE(longRow->nameFrame().right(), 320 - ProjectRow::paddingX);
    EXPECT_EQ(longRow->letterBleed()->geometry(), longRow->nameFrame().toRect());

    QEnterEvent enter(QPointF(60, 15), QPointF(60, 15), QPointF(60, 15));
    QCoreApplication::sendEvent(longRow.get(), &enter);
    EXPECT_TRUE(longRow->letterBleed()->isActive());
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(longRow.get(), &leave);
    EXPECT_FALSE(longRow->letterBleed()->isActive());
}

TEST_F(ProjectRowTest, RowsTintTheirLeadingEdgeAndDimStaleEmblems) {
    ProjectSnapshot building = Snap("BUILDING").buildingAgo(50);
    building.medianBuildDuration = 120;
    const std::pair<const char*, ProjectSnapshot> cases[] = {
        {"fresh", Snap("READY").target("production").readyAgo(300)},
        {"stale", Snap("READY").target("production").readyAgo(8 * 86400)},
        {"building", building},
        {"failed", Snap("ERROR").target("production").buildingAgo(100).readyAgo(17)},
    };
    QHash<QString, QImage> images;
    for (const auto& [name, snap] : cases) {
        auto shown = row(snap);
        QImage image(shown->size() * 2, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(2);
        image.fill(panelBackground);
        shown->render(&image, {}, {}, QWidget::DrawChildren);
        images.insert(name, image);
    }
    const auto pixel = [&](const char* name, int x, int y) {
        return images[name].pixelColor(x, y);
    };
    EXPECT_EQ(pixel("fresh", 4, 10), panelBackground);
    EXPECT_GT(pixel("failed", 4, 10).red(), panelBackground.red() + 20);
    EXPECT_GT(pixel("building", 4, 10).green(), panelBackground.green() + 20);
    EXPECT_GT(images["failed"].height(), images["fresh"].height()); // the actions' row

    const auto brightness = [&](const char* name) {
        double sum = 0;
        for (int y = 18; y < 50; ++y)
            for (int x = 28; x < 64; ++x)
                sum += pixel(name, x, y).greenF() - panelBackground.greenF();
        return sum;
    };
    EXPECT_GT(brightness("fresh"), 1);
    EXPECT_LT(brightness("stale"), 0.5 * brightness("fresh"));
}

TEST_F(ProjectRowTest, TheEmblemGlowsOnlyWhileRunningOrFailed) {
    for (const DeployStatus status :
         {DeployStatus::queued, DeployStatus::initializing, DeployStatus::building,
          DeployStatus::ready, DeployStatus::error, DeployStatus::canceled,
          DeployStatus::unknown}) {
        MiniPrism prism;
        prism.setStatusPalette(&palette);
        prism.setStatus(status);
        QImage image(prism.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        prism.render(&image, {}, {}, QWidget::DrawChildren);
        const bool glows = isInProgress(status) || status == DeployStatus::error;
        // Just under the base, outside the emblem's own frame.
        EXPECT_EQ(image.pixelColor(14, 23).alpha() > 0, glows) << rawValue(status).toStdString();
        // The solid right half of the prism carries the status colour.
        EXPECT_TRUE(nearColour(image.pixelColor(18, 17), palette.statusColor(status)))
            << rawValue(status).toStdString();
    }
}
