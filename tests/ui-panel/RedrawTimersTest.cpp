#include "support/FakeDesktop.h"
#include "ui/panel/LetterBleed.h"
#include "ui/panel/PrismHero.h"
#include "ui/panel/ProgressLine.h"
#include "ui/panel/ProjectRow.h"
#include "ui/status/LiveActivityController.h"
#include "ui/status/LiveActivityView.h"
#include "ui/status/LiveActivityWindow.h"
#include "ui/status/StatusPalette.h"

#include <functional>
#include <gtest/gtest.h>

// Every animated view redraws on a timer that must not run while nobody can see it.
TEST(RedrawTimers, RunOnlyWhileTheirViewIsShown) {
    FakeDesktop desktop;
    AppState state{desktop.services()};
    StatusPalette palette{*desktop.prefs, "#FF0074"};

    VercelDeployment deployment;
    deployment.uid = "dpl_1";
    deployment.readyState = "BUILDING";
    deployment.createdAt = double(desktop.clock.now().toMSecsSinceEpoch() - 30'000);
    const ProjectSnapshot building{"web", "web", "acme", std::nullopt, deployment, 120.0};

    ProjectRow row(state, palette);
    row.setSnapshot(building, false);
    ProgressLine line;
    line.resize(200, ProgressLine::thickness);
    line.setProgress(std::nullopt); // slides for ever
    LetterBleed bleed;
    bleed.resize(240, 24);
    bleed.setActive(true);
    PrismHero hero;
    LiveActivityController capsule(palette, desktop.clock);
    capsule.setAnchorSource([] { return QRectF(700, 0, 37, 25); });
    capsule.update({building}, true);
    LiveActivityWindow* window = capsule.window();
    ASSERT_NE(window, nullptr);

    const struct {
        const char* name;
        QWidget* widget;
        std::function<bool()> running;
    } views[] = {
        {"project row", &row, [&] { return row.isRedrawing(); }},
        {"progress line", &line, [&] { return line.isAnimating(); }},
        {"letter bleed", &bleed, [&] { return bleed.isAnimating(); }},
        {"hero", &hero, [&] { return hero.isAnimating(); }},
        {"capsule", window, [&] { return window->view()->isTicking(); }},
    };
    for (const auto& view : views) {
        view.widget->show();
        EXPECT_TRUE(view.running()) << view.name;
        view.widget->hide();
        EXPECT_FALSE(view.running()) << view.name;
        view.widget->show();
        EXPECT_TRUE(view.running()) << view.name;
        view.widget->hide();
    }
    line.setProgress(0.4); // a change while hidden wakes nothing
    EXPECT_FALSE(line.isAnimating());
}
