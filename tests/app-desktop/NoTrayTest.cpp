// The tray application on a desktop without any tray (Xvfb and a private session bus, no
// trayer): nothing of it could be reached, so it says so in one sentence on standard error, opens
// its Settings window and keeps running until the session ends it.
#include "app-desktop/TrayDesktop.h"
#include "app-desktop/XWindow.h"
#include "support/QtPrinters.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

TEST(NoTray, SaysSoOpensSettingsAndKeepsRunning) {
    TrayDesktop desktop;
    std::optional<QString> failure = desktop.start(true);
    if (!failure)
        failure = desktop.startApp({});
    ASSERT_FALSE(failure) << failure->toStdString();
    const QProcessEnvironment env = desktop.environment();
    QList<XWindow> shown;
    ASSERT_TRUE(waitUntil(
        [&] {
            shown = shownTopLevels(env);
            return !shown.isEmpty() || !desktop.appRuns();
        },
        TrayDesktop::startTimeoutMs));
    ASSERT_EQ(shown.size(), 1) << desktop.appOutput().toStdString();
    const std::optional<QString> window = runTool("xwininfo", {"-id", shown.first().id}, env);
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->contains("\"Quillon Settings\"")) << window->toStdString();
    // Qt may add its own warnings; ours is one whole line.
    const QStringList lines = QString::fromUtf8(desktop.appOutput()).split(u'\n');
    EXPECT_EQ(lines.count("quillon: no system tray found. Quillon keeps running: failures still "
                          "arrive as notifications, and its Settings window is open. Run quillon "
                          "again to bring Settings back."),
              1)
        << lines.join(u'\n').toStdString();
    EXPECT_TRUE(desktop.appRuns());
    EXPECT_TRUE(desktop.quitApp()) << desktop.appOutput().toStdString();
}
