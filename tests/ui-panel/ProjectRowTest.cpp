#include "ui/panel/ProjectRow.h"
#include "core/common/Language.h"
#include "core/common/TimeTexts.h"
#include "core/keychain/KeychainStore.h"
#include "core/monitor/AppState.h"
#include "core/monitor/PreferenceKeys.h"
#include "support/FakeDesktop.h"
#include "support/FakeServices.h"
#include "support/ManualClock.h"
#include "support/MemorySecretBackend.h"
#include "support/TempPreferences.h"
#include "support/WaitUntil.h"
#include "ui-panel/PanelScene.h"
#include "ui/panel/LetterBleed.h"
#include "ui/panel/ProgressLine.h"
#include "ui/panel/ProjectRowTexts.h"
#include "ui/panel/RowAction.h"
#include "ui/status/StatusPalette.h"

#include <QDir>
#include <QEnterEvent>
#include <QPainter>
#include <QTest>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using namespace ProjectRowTexts;

namespace {

using PanelScene::start;

double msAgo(double seconds) {
    return static_cast<double>(start.toMSecsSinceEpoch()) - seconds * 1000;
}

// A snapshot of "quillon-web" whose latest deployment is built up case by case.
struct Snap {
    ProjectSnapshot snap{QStringLiteral("prj_1"), QStringLiteral("quillon-web"),
                         QStringLiteral("acme"),  std::nullopt,
                         VercelDeployment{},      std::nullopt};
    explicit Snap(const char* state) {
        snap.latest->uid = QStringLiteral("dpl_1");
        snap.latest->readyState = QString::fromLatin1(state);
    }
    Snap& commit(const QString& message) {
        meta()[QStringLiteral("githubCommitMessage")] = JSONScalar{message};
        return *this;
    }
    Snap& branch(const QString& ref) {
        meta()[QStringLiteral("githubCommitRef")] = JSONScalar{ref};
        return *this;
    }
    Snap& target(const char* target) {
        snap.latest->target = QString::fromLatin1(target);
        return *this;
    }
    Snap& readyAgo(double seconds) {
        snap.latest->ready = msAgo(seconds);
        return *this;
    }
    Snap& createdAgo(double seconds) {
        snap.latest->createdAt = msAgo(seconds);
        return *this;
    }
    Snap& buildingAgo(double seconds) {
        snap.latest->buildingAt = msAgo(seconds);
        return *this;
    }
    operator ProjectSnapshot() const { return snap; }

private:
    QMap<QString, JSONScalar>& meta() {
        if (!snap.latest->meta)
            snap.latest->meta.emplace();
        return *snap.latest->meta;
    }
};

ProjectSnapshot noDeployment() {
    ProjectSnapshot snap = Snap("READY");
    snap.latest.reset();
    return snap;
}

// Both languages of a description or age at once: {english, french}.
std::pair<QString, QString> described(const ProjectSnapshot& snap) {
    return {description(snap, false), description(snap, true)};
}
using Texts = std::pair<QString, QString>;

} // namespace

TEST(ProjectRowTexts, DescriptionOfFinishedDeployments) {
    EXPECT_EQ(described(Snap("READY")), Texts("Deployed", "Déployé"));
    EXPECT_EQ(described(Snap("READY").branch("main")), Texts("main", "main"));
    // The commit title wins over the branch and keeps only its first line.
    EXPECT_EQ(described(Snap("READY").branch("main").commit("Add login\n\nbody")),
              Texts("Add login", "Add login"));
    // A state no one knows reads like a finished one.
    EXPECT_EQ(described(Snap("SLEEPING")), Texts("Deployed", "Déployé"));
    EXPECT_EQ(described(Snap("SLEEPING").branch("dev")), Texts("dev", "dev"));
    EXPECT_EQ(described(noDeployment()), Texts("No deployment yet", "Aucun déploiement"));
}

TEST(ProjectRowTexts, DescriptionOfRunningAndCanceledDeployments) {
    EXPECT_EQ(described(Snap("BUILDING")), Texts("Building", "Build en cours"));
    EXPECT_EQ(described(Snap("BUILDING").commit("Fix nav")), Texts("Fix nav", "Fix nav"));
    EXPECT_EQ(described(Snap("QUEUED").commit("Fix nav")),
              Texts("Queued · Fix nav", "En attente · Fix nav"));
    EXPECT_EQ(described(Snap("QUEUED")), Texts("Queued", "En attente"));
    EXPECT_EQ(described(Snap("INITIALIZING").branch("main")),
              Texts("Initializing · main", "Initialisation · main"));
    EXPECT_EQ(described(Snap("CANCELED")), Texts("Canceled", "Annulé"));
    EXPECT_EQ(described(Snap("CANCELED").branch("main")),
              Texts("Canceled · main", "Annulé · main"));
}

TEST(ProjectRowTexts, DescriptionOfFailures) {
    const Snap timed = Snap("ERROR").buildingAgo(100).readyAgo(17); // 83 000 ms apart
    EXPECT_EQ(described(Snap(timed).commit("Fix build\nsecond line")),
              Texts("Failed after 1 min 23 s · Fix build", "Échec après 1 min 23 s · Fix build"));
    EXPECT_EQ(described(timed), Texts("Failed after 1 min 23 s", "Échec après 1 min 23 s"));
    EXPECT_EQ(described(Snap("ERROR").commit("Fix build\nsecond line")),
              Texts("Failed · Fix build", "Échec · Fix build"));
    EXPECT_EQ(described(Snap("ERROR")), Texts("Failed", "Échec"));
}

TEST(ProjectRowTexts, AgeCountsUpWhileRunningAndNeverGoesNegative) {
    EXPECT_EQ(ageText(Snap("BUILDING").buildingAgo(95), start, false), "1 min 35 s");
    EXPECT_EQ(ageText(Snap("BUILDING").buildingAgo(95), start.addSecs(1), true), "1 min 36 s");
    // Without buildingAt the creation starts the clock.
    EXPECT_EQ(ageText(Snap("QUEUED").createdAgo(12), start, false), "12 s");
    EXPECT_EQ(ageText(Snap("BUILDING").buildingAgo(-30), start, false), "0 s");
    EXPECT_EQ(ageText(Snap("INITIALIZING"), start, false), "0 s");
}

TEST(ProjectRowTexts, AgeOfFinishedDeploymentsFallsBackThroughTheStamps) {
    EXPECT_EQ(ageText(Snap("READY").createdAgo(86400).readyAgo(300), start, false), "5 min ago");
    EXPECT_EQ(ageText(Snap("READY").createdAgo(86400).readyAgo(300), start, true), "il y a 5 min");
    EXPECT_EQ(ageText(Snap("ERROR").createdAgo(7200), start, false), "2 h ago");
    ProjectSnapshot older = Snap("CANCELED");
    older.latest->created = msAgo(3 * 86400);
    EXPECT_EQ(ageText(older, start, true), "il y a 3 j");
    // No stamp at all counts from 1970, and fails nothing.
    EXPECT_EQ(ageText(Snap("READY"), start, false),
              relativeAgeText(QDateTime::fromMSecsSinceEpoch(0), start, false));
    EXPECT_EQ(ageText(noDeployment(), start, false), "");
}

TEST(ProjectRowTexts, FreshnessAndBadge) {
    EXPECT_TRUE(isFresh(Snap("READY").readyAgo(6 * 86400), start));
    EXPECT_FALSE(isFresh(Snap("READY").readyAgo(freshSeconds), start));
    EXPECT_FALSE(isFresh(Snap("READY").readyAgo(8 * 86400), start));
    // ready wins over an old creation.
    EXPECT_TRUE(isFresh(Snap("READY").createdAgo(10 * 86400).readyAgo(86400), start));
    EXPECT_FALSE(isFresh(Snap("CANCELED"), start));
    // Failures and running builds stay fresh however old.
    EXPECT_TRUE(isFresh(Snap("ERROR").readyAgo(90 * 86400), start));
    EXPECT_TRUE(isFresh(Snap("QUEUED").createdAgo(90 * 86400), start));
    EXPECT_FALSE(isFresh(noDeployment(), start));

    EXPECT_TRUE(showsPreviewBadge(Snap("READY")));
    EXPECT_TRUE(showsPreviewBadge(Snap("READY").target("preview")));
    EXPECT_FALSE(showsPreviewBadge(Snap("READY").target("production")));
    EXPECT_FALSE(showsPreviewBadge(noDeployment()));
}

class ProjectRowTest : public ::testing::Test, protected FakeDesktop {
protected:
    AppState state{services()};
    StatusPalette palette{*prefs, QStringLiteral("#FF0074")};
    QList<QUrl> opened;

    void SetUp() override { Language::overrideSystemLanguages({QStringLiteral("en-US")}); }
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

TEST_F(ProjectRowTest, FailedRowCopiesTheReportAndConfirmsForTwoSeconds) {
    auto failed = row(Snap("ERROR").commit("Fix build").buildingAgo(100).readyAgo(17));
    RowAction* copy = failed->copyAction();
    ASSERT_TRUE(copy->isVisible());
    ASSERT_TRUE(failed->logAction()->isVisible());
    EXPECT_EQ(copy->title(), "Copy for AI");
    EXPECT_EQ(copy->symbol(), "doc.on.clipboard");
    EXPECT_EQ(copy->contentColor(), palette.error());
    EXPECT_EQ(failed->logAction()->title(), "View log");
    EXPECT_NEAR(failed->logAction()->contentColor().alphaF(), 0.85, 0.001);

    QTest::mouseClick(copy, Qt::LeftButton);
    ASSERT_TRUE(waitUntil([&] { return failed->isCopied(); }));
    ASSERT_EQ(clipboard.texts.size(), 1);
    EXPECT_TRUE(clipboard.texts.first().contains("quillon-web"));
    EXPECT_EQ(copy->title(), "Copied");
    EXPECT_EQ(copy->symbol(), "checkmark");
    EXPECT_TRUE(opened.isEmpty()); // the button's click stays off the row

    clock.advance(1999ms);
    EXPECT_EQ(copy->title(), "Copied");
    clock.advance(1ms);
    EXPECT_FALSE(failed->isCopied());
    EXPECT_EQ(copy->title(), "Copy for AI");
    EXPECT_EQ(copy->symbol(), "doc.on.clipboard");
}

TEST_F(ProjectRowTest, EachCopyPressClearsTheConfirmationAtItsOwnEnd) {
    prefs->setString(PreferenceKeys::appLanguage, QStringLiteral("fr"));
    auto failed = row(Snap("ERROR"));
    EXPECT_EQ(failed->copyAction()->title(), "Copier pour l'IA");
    EXPECT_EQ(failed->logAction()->title(), "Voir les logs");
    failed->copyAction()->trigger();
    ASSERT_TRUE(waitUntil([&] { return failed->isCopied(); }));
    EXPECT_EQ(failed->copyAction()->title(), "Copié");
    clock.advance(1s);
    failed->copyAction()->trigger();
    ASSERT_TRUE(waitUntil([&] { return clipboard.texts.size() == 2; }));
    clock.advance(1s); // the first press ends here
    EXPECT_FALSE(failed->isCopied());
}

TEST_F(ProjectRowTest, ClickOpensTheDashboardUnlessNoLinkCanBeFormed) {
    ProjectSnapshot snap = Snap("READY").readyAgo(60);
    snap.latest->inspectorUrl = QStringLiteral("https://vercel.com/acme/quillon-web/abc");
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
    demo.scopeSlug = QStringLiteral("demo");
    auto linkless = row(demo);
    QTest::mouseClick(linkless.get(), Qt::LeftButton, {}, QPoint(300, 20));
    EXPECT_EQ(opened.size(), 2);
}

TEST_F(ProjectRowTest, RedrawsEverySecondWhileRunningEveryHalfMinuteOtherwiseOnlyWhenShown) {
    auto building = row(Snap("BUILDING").buildingAgo(10));
    EXPECT_TRUE(building->isRedrawing());
    EXPECT_EQ(building->redrawInterval(), 1000);
    EXPECT_TRUE(building->progressLine()->isVisible());
    EXPECT_EQ(building->ageColor(), palette.success());
    clock.advance(1s);
    EXPECT_EQ(building->ageText(), "11 s");
    building->hide();
    EXPECT_FALSE(building->isRedrawing());

    auto ready = row(Snap("READY").readyAgo(60));
    EXPECT_EQ(ready->redrawInterval(), 30000);
    EXPECT_TRUE(ready->isRedrawing());
    EXPECT_FALSE(ready->progressLine()->isVisible());
    ready->hide();
    EXPECT_FALSE(ready->isRedrawing());
    ready->show();
    EXPECT_TRUE(ready->isRedrawing());
}

TEST_F(ProjectRowTest, StaleRowsDimWhileFailuresStayBright) {
    auto stale = row(Snap("READY").target("production").readyAgo(8 * 86400));
    EXPECT_DOUBLE_EQ(stale->emblemOpacity(), 0.35);
    EXPECT_EQ(stale->nameColor(), ProjectRow::tertiaryText());
    EXPECT_EQ(stale->ageColor(), ProjectRow::quaternaryText());
    EXPECT_FALSE(stale->hasBadge());

    auto failed = row(Snap("ERROR").readyAgo(80 * 86400));
    EXPECT_DOUBLE_EQ(failed->emblemOpacity(), 1.0);
    EXPECT_EQ(failed->nameColor(), ProjectRow::primaryText());
    EXPECT_EQ(failed->descriptionColor().rgb(), palette.error().rgb());
    EXPECT_TRUE(failed->hasBadge());

    auto empty = row(noDeployment());
    EXPECT_FALSE(empty->hasBadge());
    EXPECT_EQ(empty->descriptionText(), "No deployment yet");
    EXPECT_EQ(empty->ageText(), "");
}

TEST_F(ProjectRowTest, LongNamesShrinkInTheMiddleAndTheEffectFollowsThePointer) {
    ProjectSnapshot snap = Snap("READY").readyAgo(60);
    snap.name = QStringLiteral("a-really-long-project-name-that-never-fits-in-the-panel");
    auto longRow = row(snap, 320);
    EXPECT_TRUE(longRow->shownName().startsWith("A-R")) << longRow->shownName().toStdString();
    EXPECT_TRUE(longRow->shownName().endsWith("NEL"));
    EXPECT_TRUE(longRow->shownName().contains(QChar(0x2026)));
    EXPECT_LE(longRow->nameFrame().right(), 320 - ProjectRow::paddingX);
    EXPECT_EQ(longRow->letterBleed()->geometry(), longRow->nameFrame().toRect());

    QEnterEvent enter(QPointF(60, 15), QPointF(60, 15), QPointF(60, 15));
    QCoreApplication::sendEvent(longRow.get(), &enter);
    EXPECT_TRUE(longRow->isHovering());
    EXPECT_TRUE(longRow->letterBleed()->isActive());
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(longRow.get(), &leave);
    EXPECT_FALSE(longRow->isHovering());
    EXPECT_FALSE(longRow->letterBleed()->isActive());
}

TEST(RowAction, HoverFillEasesBetweenTwelveAndTwentyTwoPercent) {
    RowAction action;
    action.setTitle(QStringLiteral("View log"));
    action.show();
    EXPECT_DOUBLE_EQ(action.currentFillOpacity(), 0.12);
    action.setHovering(true);
    action.tick(0.075);
    // Ease-out: more than half way after half the time.
    EXPECT_GT(action.currentFillOpacity(), 0.17 + 0.01);
    action.tick(0.1);
    EXPECT_DOUBLE_EQ(action.currentFillOpacity(), 0.22);
    int runs = 0;
    action.setAction([&] { ++runs; });
    QTest::mouseClick(&action, Qt::LeftButton);
    EXPECT_EQ(runs, 1);
}

namespace {

using PanelScene::panelBackground;

QImage rendered(QWidget& widget) {
    QImage image(widget.size() * 2, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(2);
    image.fill(panelBackground);
    widget.render(&image, {}, {}, QWidget::DrawChildren);
    if (const QString dir = qEnvironmentVariable("QUILLON_SHOTS_DIR"); !dir.isEmpty()) {
        QDir().mkpath(dir);
        image.save(QDir(dir).filePath(QStringLiteral("rows-%1.png").arg(widget.objectName())));
    }
    return image;
}

} // namespace

TEST_F(ProjectRowTest, RowsRenderTheirBackgroundsAndDimmedEmblems) {
    struct Case {
        const char* name;
        ProjectSnapshot snap;
    };
    ProjectSnapshot building =
        Snap("BUILDING").target("production").commit("Speed up images").buildingAgo(50);
    building.medianBuildDuration = 120;
    const Case cases[] = {
        {"ready-fresh",
         Snap("READY").target("production").commit("Add pricing page").readyAgo(300)},
        {"ready-stale", Snap("READY").target("production").branch("main").readyAgo(8 * 86400)},
        {"building", building},
        {"queued-preview", Snap("QUEUED").commit("Try new header").createdAgo(20)},
        {"failed",
         Snap("ERROR").target("production").commit("Fix build").buildingAgo(100).readyAgo(17)},
        {"none", noDeployment()},
    };
    QHash<QString, QImage> images;
    for (const Case& c : cases) {
        auto shown = row(c.snap);
        shown->setObjectName(QString::fromLatin1(c.name));
        shown->progressLine()->tick(1);
        if (shown->objectName() == "ready-fresh") {
            // Also keep the name's hover effect, which must not disturb the leading edge.
            ProjectRow hovered(state, palette);
            hovered.setObjectName(QStringLiteral("hovered"));
            hovered.setSnapshot(c.snap, true);
            hovered.resize(shown->size());
            hovered.show();
            QEnterEvent enter(QPointF(110, 18), QPointF(110, 18), QPointF(110, 18));
            QCoreApplication::sendEvent(&hovered, &enter);
            for (int i = 0; i < 30; ++i)
                hovered.letterBleed()->tick();
            images.insert("hovered", rendered(hovered));
        }
        images.insert(c.name, rendered(*shown));
    }
    const auto pixel = [&](const char* name, int x, int y) {
        return images[name].pixelColor(x, y);
    };
    // Leading edge tinted for the failure (pink) and the build (cyan), bare for a ready row.
    EXPECT_EQ(pixel("ready-fresh", 4, 10), panelBackground);
    EXPECT_EQ(pixel("hovered", 4, 10), panelBackground);
    EXPECT_GT(pixel("failed", 4, 10).red(), panelBackground.red() + 20);
    EXPECT_GT(pixel("building", 4, 10).green(), panelBackground.green() + 20);
    EXPECT_EQ(images["ready-fresh"].size(), images["ready-stale"].size());
    EXPECT_GT(images["failed"].height(), images["ready-fresh"].height()); // the actions' row

    // The emblem of the stale row is much darker than the fresh one.
    const auto brightness = [&](const char* name) {
        double sum = 0;
        for (int y = 18; y < 50; ++y)
            for (int x = 28; x < 64; ++x)
                sum += pixel(name, x, y).greenF();
        return sum;
    };
    const double bare = 32 * 36 * panelBackground.greenF();
    EXPECT_GT(brightness("ready-fresh") - bare, 1);
    EXPECT_LT(brightness("ready-stale") - bare, 0.5 * (brightness("ready-fresh") - bare));
}
