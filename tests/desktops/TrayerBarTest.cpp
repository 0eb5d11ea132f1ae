// trayer: an XEmbed tray on a light bar that declares no colours of its own. The neutral
// triangle and the count must then be dark, as the bar beside the icon asks.
#include "app-desktop/TrayDesktop.h"
#include "app-desktop/XWindow.h"
#include "desktops/ScreenGrab.h"
#include "support/WaitUntil.h"

#include <QColor>
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
    int dark = 0;
    const bool legible = waitUntil(
        [&] {
            const QImage screen = grabScreen(desktop.parts().display());
            if (screen.isNull())
                return false;
            dark = 0;
            const QRect r = icon->rect.intersected(screen.rect());
            for (int y = r.top(); y <= r.bottom(); ++y) {
                for (int x = r.left(); x <= r.right(); ++x)
                    dark += QColor(screen.pixel(x, y)).lightness() < 90;
            }
            return dark > 40;
        },
        10000);
    EXPECT_TRUE(legible) << dark << " dark pixels in the icon "
                         << describe(icon->rect).toStdString();
}
