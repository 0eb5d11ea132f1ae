// trayer: an XEmbed tray on a light bar that declares no colours of its own. The neutral
// triangle and the count must then be dark, as the bar beside the icon asks.
#include "app-desktop/TrayDesktop.h"
#include "app-desktop/XWindow.h"
#include "desktops/XfceDesktop.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

TEST(TrayerBar, TheNeutralIconIsDarkOnTheLightBar) {
    TrayDesktop desktop;
    std::optional<QString> failure = desktop.start();
    ASSERT_FALSE(failure) << failure->toStdString();
    QProcessEnvironment demo;
    demo.insert(QStringLiteral("QUILLON_DEMO"), QStringLiteral("1"));
    failure = desktop.startApp(demo);
    ASSERT_FALSE(failure) << failure->toStdString();

    std::optional<XWindow> icon;
    ASSERT_TRUE(waitUntil(
        [&] {
            icon = trayIcon(desktop.environment());
            return icon.has_value();
        },
        TrayDesktop::startTimeoutMs));
    const auto dark = [](QColor c) { return c.lightness() < 90; };
    int count = 0;
    const bool legible = waitUntil(
        [&] {
            count = countPixels(grabScreen(desktop.parts().display()), icon->rect, dark);
            return count > 40;
        },
        10000);
    EXPECT_TRUE(legible) << count << " dark pixels in the icon "
                         << describe(icon->rect).toStdString();
}
