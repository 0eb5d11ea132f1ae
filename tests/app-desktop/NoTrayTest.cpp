// The tray application on a desktop without any tray (Xvfb and a private session bus, no
// trayer): nothing of it could be reached, so it says so in one sentence on standard error, opens
// its Settings window and keeps running until the session ends it.
#include "app-desktop/XWindow.h"
#include "support/QtPrinters.h"
#include "support/WaitUntil.h"
#include "support/desktop/PrivateDesktop.h"

#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

TEST(NoTray, SaysSoOpensSettingsAndKeepsRunning) {
    PrivateDesktop desktop;
    for (auto part : {&PrivateDesktop::startDisplay, &PrivateDesktop::startBus}) {
        const std::optional<QString> failure = (desktop.*part)();
        ASSERT_FALSE(failure) << failure->toStdString();
    }
    QTemporaryDir config;
    QProcessEnvironment env = desktop.environment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
    env.remove(QStringLiteral("QUILLON_DEMO"));
    env.remove(QStringLiteral("QUILLON_API_BASE"));
    QProcess app;
    app.setProcessEnvironment(env);
    app.start(QStringLiteral(QUILLON_APP_PATH), {});
    ASSERT_TRUE(app.waitForStarted(10000)) << app.errorString().toStdString();

    QList<XWindow> shown;
    ASSERT_TRUE(waitUntil(
        [&] {
            shown = shownTopLevels(env);
            return !shown.isEmpty() || app.state() != QProcess::Running;
        },
        20000));
    ASSERT_EQ(shown.size(), 1) << app.readAllStandardError().toStdString();
    const std::optional<QString> window =
        runTool(QStringLiteral("xwininfo"), {QStringLiteral("-id"), shown.first().id}, env);
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->contains(QStringLiteral("\"Quillon Settings\""))) << window->toStdString();
    // Qt may add its own warnings; ours is one whole line.
    const QStringList lines = QString::fromUtf8(app.readAllStandardError()).split(u'\n');
    EXPECT_EQ(lines.count("quillon: no system tray found. Quillon keeps running: failures still "
                          "arrive as notifications, and its Settings window is open. Run quillon "
                          "again to bring Settings back."),
              1)
        << lines.join(u'\n').toStdString();

    EXPECT_EQ(app.state(), QProcess::Running);
    app.terminate();
    ASSERT_TRUE(app.waitForFinished(10000));
    EXPECT_EQ(app.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(app.exitCode(), 0);
}
