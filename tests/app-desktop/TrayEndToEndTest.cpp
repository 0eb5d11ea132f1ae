// The tray application on a desktop of its own: Xvfb with a tray (trayer), a private session bus
// and dunst. The demo's hot key starts a deployment; the Live Activity capsule must appear under
// the tray icon while it builds and go away a few seconds after it finished.
#include "app-desktop/TrayDesktop.h"
#include "app-desktop/XWindow.h"
#include "support/QtPrinters.h"
#include "support/WaitUntil.h"
#include "ui/status/LiveActivityGeometry.h"

#include <QElapsedTimer>
#include <QFile>
#include <gtest/gtest.h>

namespace {

// The demo at ten times the speed, with its hot keys.
std::optional<QString> startDemo(TrayDesktop& desktop) {
    if (std::optional<QString> failure = desktop.start())
        return failure;
    QProcessEnvironment demo;
    demo.insert("QUILLON_DEMO", "1");
    demo.insert("QUILLON_DEMO_SPEED", "10");
    return desktop.startApp(demo);
}

} // namespace

TEST(TrayEndToEnd, HotKeyOneShowsTheLiveActivityUnderTheTrayIconUntilTheDeploymentIsDone) {
    namespace G = LiveActivityGeometry;
    TrayDesktop desktop;
    const std::optional<QString> failure = startDemo(desktop);
    ASSERT_FALSE(failure) << failure->toStdString();
    const QProcessEnvironment env = desktop.environment();

    std::optional<XWindow> icon;
    ASSERT_TRUE(waitUntil(
        [&] {
            icon = trayIcon(env);
            return icon.has_value() || !desktop.appRuns();
        },
        TrayDesktop::startTimeoutMs));
    ASSERT_TRUE(icon) << "no tray icon embedded in trayer; quillon said: "
                      << desktop.appOutput().toStdString();
    ASSERT_TRUE(isViewable(icon->id, env));
    // Nothing of the app is on screen yet besides the icon.
    ASSERT_TRUE(shownTopLevels(env).isEmpty());

    QElapsedTimer sincePress;
    sincePress.start();
    ASSERT_TRUE(desktop.press("ctrl+alt+super+1"));
    QList<XWindow> shown;
    ASSERT_TRUE(waitUntil(
        [&] {
            shown = shownTopLevels(env);
            return !shown.isEmpty() || !desktop.appRuns();
        },
        10000))
        << "no capsule after the hot key; quillon said: " << desktop.appOutput().toStdString();
    ASSERT_EQ(shown.size(), 1);

    // The window has a transparent margin for the shadow and the beak; the capsule's body starts
    // below it. Once it has slid in, the body lies just under the icon and spans its centre.
    QRect body;
    const bool placed = waitUntil(
        [&] {
            const QList<XWindow> now = shownTopLevels(env);
            const std::optional<XWindow> placedIcon = trayIcon(env);
            if (now.size() != 1 || !placedIcon)
                return false;
            icon = placedIcon;
            const QRect frame = now.first().rect;
            body = QRect(frame.x() + int(G::margin), frame.y() + int(G::margin + G::spaceAbove),
                         int(G::contentWidth), frame.height() - 2 * int(G::margin));
            const int iconBottom = icon->rect.y() + icon->rect.height();
            const int iconCentre = icon->rect.x() + icon->rect.width() / 2;
            return body.top() >= iconBottom && body.top() <= iconBottom + 2 * int(G::margin) &&
                   body.left() <= iconCentre && body.right() >= iconCentre;
        },
        5000);
    EXPECT_TRUE(placed) << "capsule body " << describe(body).toStdString() << " for the icon "
                        << describe(icon->rect).toStdString();

    // Queued 0.2 s and building 2.2 s at ten times the speed, then shown for 5 s as done.
    const bool gone = waitUntil([&] { return shownTopLevels(env).isEmpty(); }, 20000);
    EXPECT_TRUE(gone) << "the capsule stayed on screen";
    // A finished deployment stays on screen for 5 s (real time, whatever the demo's speed).
    EXPECT_GE(sincePress.elapsed(), 5000) << "the capsule left before the result was shown";
    EXPECT_TRUE(desktop.appRuns()) << desktop.appOutput().toStdString();
    // The icon is still in the tray.
    const std::optional<XWindow> after = trayIcon(env);
    ASSERT_TRUE(after);
    EXPECT_EQ(after->id, icon->id);
    // The demo makes no request and never reads the keyring: neither the services module nor
    // the network stack was loaded.
    QFile maps(QStringLiteral("/proc/%1/maps").arg(desktop.appPid()));
    ASSERT_TRUE(maps.open(QIODevice::ReadOnly));
    const QByteArray mapped = maps.readAll();
    EXPECT_FALSE(mapped.contains("quillon-services.so"));
    EXPECT_FALSE(mapped.contains("libQt6Network"));
    EXPECT_TRUE(mapped.contains("libQt6Widgets")); // the right process's maps were read
    EXPECT_TRUE(desktop.quitApp()) << desktop.appOutput().toStdString();
}
