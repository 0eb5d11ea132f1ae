// Quillon on XFCE's own panel: a dark bar whose tray hosts StatusNotifierItems, at the top or at
// the bottom of the screen. What a user sees is checked: the triangle and the count legible on
// the dark bar, the item's name, and the panel and the Live Activity opening next to the icon,
// on screen, wherever the pointer happens to be when the click is reported.
#include "app-desktop/XWindow.h"
#include "desktops/XfceDesktop.h"
#include "support/WaitUntil.h"

#include <QDBusInterface>
#include <gtest/gtest.h>

namespace {

using Edge = XfceDesktop::Edge;

constexpr int capsuleMargin = 46; // the transparent room around the capsule's body
constexpr int nearby = 12;        // at most this far from the icon counts as next to it

std::optional<XWindow> shownWindowOfWidth(const QProcessEnvironment& env, int width) {
    for (const XWindow& window : shownTopLevels(env)) {
        if (window.rect.width() == width)
            return window;
    }
    return std::nullopt;
}

// The gap between the icon and `rect` on the side away from the screen edge, negative when
// they overlap.
int gapFromTray(const QRect& rect, const QRect& tray, Edge edge) {
    return edge == Edge::top ? rect.top() - (tray.bottom() + 1) : tray.top() - (rect.bottom() + 1);
}

void checkOnXfce(Edge edge, bool workArea, bool appFirst) {
    XfceDesktop desktop;
    std::optional<QString> failure = desktop.start(edge, workArea, appFirst);
    ASSERT_FALSE(failure) << failure->toStdString();
    if (!appFirst) {
        failure = desktop.startApp();
        ASSERT_FALSE(failure) << failure->toStdString();
    }

    std::optional<QString> item;
    std::optional<QRect> tray;
    ASSERT_TRUE(waitUntil(
        [&] {
            item = desktop.registeredItem();
            tray = desktop.tray();
            return item && tray;
        },
        XfceDesktop::startTimeoutMs))
        << "no item in the tray";
    QDBusInterface sni(*item, QStringLiteral("/StatusNotifierItem"),
                       QStringLiteral("org.kde.StatusNotifierItem"), desktop.bus());
    EXPECT_EQ(sni.property("Id").toString(), "quillon");
    EXPECT_EQ(sni.property("Title").toString(), "Quillon");
    EXPECT_EQ(sni.property("Category").toString(), "ApplicationStatus");

    // The neutral triangle and today's count, light (as the tray asks) on the dark bar.
    const QRect icon = *tray;
    const auto light = [](QColor c) { return c.lightness() > 200; };
    int count = 0;
    ASSERT_TRUE(waitUntil(
        [&] {
            count = countPixels(desktop.screenshot(), icon, light);
            return count > 40;
        },
        5000))
        << "the icon's area holds " << count << " light pixels";
    // The host reports a click on the icon while the pointer is somewhere else.
    ASSERT_TRUE(desktop.xdotool(
        {QStringLiteral("mousemove"), QStringLiteral("640"), QStringLiteral("400")}));
    sni.call(QStringLiteral("Activate"), icon.center().x(), icon.center().y());
    std::optional<XWindow> panel;
    ASSERT_TRUE(waitUntil(
        [&] {
            panel = shownWindowOfWidth(desktop.environment(), 320);
            return panel.has_value();
        },
        5000));
    const int panelGap = gapFromTray(panel->rect, icon, edge);
    EXPECT_TRUE(panelGap >= 0 && panelGap <= nearby)
        << "panel " << describe(panel->rect).toStdString() << " for the icon "
        << describe(icon).toStdString();
    EXPECT_TRUE(QRect(0, 0, 1280, 800).contains(panel->rect));
    ASSERT_TRUE(desktop.xdotool({QStringLiteral("key"), QStringLiteral("Escape")}));
    ASSERT_TRUE(waitUntil([&] { return !shownWindowOfWidth(desktop.environment(), 320); }));

    // A deployment starts: the capsule's body touches the icon's side of the bar.
    ASSERT_TRUE(desktop.xdotool({QStringLiteral("key"), QStringLiteral("ctrl+alt+super+1")}));
    QRect body;
    const bool placed = waitUntil(
        [&] {
            const std::optional<XWindow> capsule = shownWindowOfWidth(desktop.environment(), 472);
            if (!capsule)
                return false;
            body = capsule->rect.adjusted(capsuleMargin, capsuleMargin, -capsuleMargin,
                                          -capsuleMargin);
            const int gap = gapFromTray(body, icon, edge);
            return gap >= 0 && gap <= nearby && body.left() <= icon.center().x() + 30 &&
                   QRect(0, 0, 1280, 800).contains(body);
        },
        5000);
    if (edge == Edge::top) {
        // waybar before 0.9.22 reports the click inside the icon: the panel then opens under
        // the bar's right end, where that bar keeps its tray.
        ASSERT_TRUE(desktop.callAsWaybar(*item, QStringLiteral("Activate"), 11, 14));
        ASSERT_TRUE(waitUntil([&] {
            panel = shownWindowOfWidth(desktop.environment(), 320);
            return panel.has_value();
        }));
        EXPECT_GE(panel->rect.right(), 1280 - 2 * nearby) << describe(panel->rect).toStdString();
        EXPECT_TRUE(gapFromTray(panel->rect, icon, edge) >= 0 &&
                    gapFromTray(panel->rect, icon, edge) <= nearby)
            << describe(panel->rect).toStdString();
    }
    EXPECT_TRUE(desktop.quitApp());
    EXPECT_TRUE(placed) << "capsule body " << describe(body).toStdString() << " for the icon "
                        << describe(icon).toStdString();
}

} // namespace

TEST(XfcePanel, ATopBarShowsALegibleIconWithPanelAndCapsuleUnderIt) {
    checkOnXfce(Edge::top, true, false);
}

// Without a window manager nothing tells how tall the bar is: the click stands for it. The panel
// starts after the app here, so the app has to move its icon to the host once one appears.
TEST(XfcePanel, ABottomBarWithoutAWindowManagerHasPanelAndCapsuleAboveTheIcon) {
    checkOnXfce(Edge::bottom, false, true);
}
