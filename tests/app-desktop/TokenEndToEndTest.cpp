// The token's whole road through the real application, on a desktop of its own: Xvfb with a tray
// (trayer), a private session bus with dunst and gnome-keyring, and a loopback Vercel account.
// Started without a token, the app is given one pasted into Settings; it checks it, keeps it in
// the keyring, lists the account's projects in the panel, and forgets it when it is removed.
#include "app-desktop/TrayDesktop.h"
#include "app-desktop/XWindow.h"
#include "support/FakeVercelAccount.h"
#include "support/QtPrinters.h"
#include "support/StopProcess.h"
#include "support/WaitUntil.h"

#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDirIterator>
#include <QJsonDocument>
#include <QUuid>
#include <gtest/gtest.h>

namespace {

constexpr int kStepTimeoutMs = 20000;
// Window titles as xdotool matches them: POSIX extended expressions.
const QString kSettingsTitle = "^Quillon Settings$";
const QString kRemovalTitle = "^Remove the token\\?$";

// The running app's picture, asked over D-Bus as a status bar would; absent while nobody answers.
std::optional<QJsonObject> appStatus(const QDBusConnection& bus) {
    const QString name = "com.fernhollow.Quillon";
    QDBusPendingCall pending = bus.asyncCall(
        QDBusMessage::createMethodCall(name, "/com/fernhollow/Quillon", name, "Status"));
    // The loopback account answers on this thread, so its loop turns while the app is asked.
    if (!waitUntil([&pending] { return pending.isFinished(); }, 6000))
        return std::nullopt;
    const QDBusPendingReply<QString> reply = pending;
    if (!reply.isValid())
        return std::nullopt;
    return QJsonDocument::fromJson(reply.value().toUtf8()).object();
}

QString text(const QJsonObject& status, const QString& key) {
    return status.value(key).toString();
}

// "id status" of every project Status lists, sorted.
QStringList projectStates(const QJsonObject& status) {
    QStringList states;
    for (const QJsonValue& project : status.value("projects").toArray())
        states << project["id"].toString() + ' ' + project["status"].toString();
    states.sort();
    return states;
}

// The windows on screen whose title matches `title`.
QStringList visibleWindowsTitled(const QString& title, const QProcessEnvironment& environment) {
    const std::optional<QString> found =
        runTool("xdotool", {"search", "--onlyvisible", "--name", title}, environment);
    return found ? found->split('\n', Qt::SkipEmptyParts) : QStringList();
}

bool sameWindow(const QString& a, const QString& b) {
    return a.toULongLong(nullptr, 0) == b.toULongLong(nullptr, 0); // xwininfo hex, xdotool decimal
}

// Keys typed before the window has the keyboard would go elsewhere.
bool waitForFocus(const QString& window, const QProcessEnvironment& environment) {
    return waitUntil(
        [&] {
            const std::optional<QString> focused =
                runTool("xdotool", {"getwindowfocus"}, environment);
            return focused && sameWindow(focused->trimmed(), window);
        },
        kStepTimeoutMs);
}

// The one window on screen titled `title` once it has the keyboard.
bool focusOnWindowTitled(const QString& title, const QProcessEnvironment& environment) {
    QStringList found;
    return waitUntil(
               [&] {
                   found = visibleWindowsTitled(title, environment);
                   return found.size() == 1;
               },
               kStepTimeoutMs) &&
           waitForFocus(found.first(), environment);
}

class TokenEndToEnd : public ::testing::Test {
protected:
    void SetUp() override {
        // Untidy as Vercel: a user without a default team, a team, a project seen in both scopes,
        // ids of deployments under `uid`, null fields, a project that never deployed.
        account_.user.insert("defaultTeamId", QJsonValue());
        account_.user.insert("softBlock", QJsonValue());
        account_.addTeam("team_acme", "acme");
        account_.addProject({}, "prj_web", "web");
        account_.addProject("team_acme", "prj_web", "web");
        account_.addProject("team_acme", "prj_api", "api");
        account_.addProject("team_acme", "prj_docs", "Docs");
        // An hour old, so nothing counts as just finished.
        const double created = double(QDateTime::currentMSecsSinceEpoch() - 3600 * 1000);
        account_.addDeployment({}, FakeVercelAccount::deployment("dpl_web", "prj_web", "READY",
                                                                 created, created + 6e4));
        account_.addDeployment(
            "team_acme", FakeVercelAccount::deployment("dpl_api", "prj_api", "ERROR", created));

        std::optional<QString> failure = desktop_.start();
        if (!failure)
            failure = desktop_.parts().startKeyring();
        if (!failure) {
            QProcessEnvironment app;
            app.insert("QUILLON_API_BASE", server_.baseUrl().toString());
            failure = desktop_.startApp(app);
        }
        ASSERT_FALSE(failure) << failure->toStdString();
    }

    void TearDown() override { stopProcess(clipboard_); }

    QProcessEnvironment env() const { return desktop_.environment(); }

    // What the app printed, the token masked: fit for a failure message even when it leaked.
    std::string said() {
        return QString::fromUtf8(desktop_.appOutput().replace(token_, "<token>")).toStdString();
    }

    // Waits until Status answers and `holds` is true of it; answers the last status seen.
    std::optional<QJsonObject> statusWhen(const std::function<bool(const QJsonObject&)>& holds) {
        std::optional<QJsonObject> status;
        waitUntil(
            [&] {
                status = appStatus(desktop_.parts().connection());
                return (status && holds(*status)) || !desktop_.appRuns();
            },
            kStepTimeoutMs);
        return status;
    }

    // `quillon` launched a second time, as from the desktop's menu: the running one shows its
    // Settings and the new one leaves at once. Answers whether Settings came to the front.
    bool openSettings() {
        QProcess again;
        again.setProcessEnvironment(desktop_.appEnvironment());
        again.start(QStringLiteral(QUILLON_APP_PATH), {});
        if (!waitUntil([&again] { return again.state() == QProcess::NotRunning; }, kStepTimeoutMs))
            return false;
        const QByteArray errors = again.readAllStandardError();
        secondLaunchOutput_ += again.readAllStandardOutput() + errors;
        EXPECT_EQ(again.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(again.exitCode(), 0)
            << QByteArray(errors).replace(token_, "<token>").toStdString();
        return focusOnWindowTitled(kSettingsTitle, env());
    }

    // Settings brought forward, `text` pasted in the token field it opens on, and Return. The
    // clipboard is filled through xclip's standard input, never an argument.
    bool pasteInSettings(const QByteArray& text) {
        if (!openSettings())
            return false;
        clipboard_.setProcessEnvironment(env());
        clipboard_.start("xclip", {"-selection", "clipboard", "-quiet"});
        clipboard_.write(text);
        clipboard_.closeWriteChannel();
        const bool pasted = waitUntil(
                                [&] {
                                    return runTool("xclip", {"-o", "-selection", "clipboard"},
                                                   env()) == QString::fromUtf8(text);
                                },
                                kStepTimeoutMs) &&
                            desktop_.press("ctrl+v") && desktop_.press("Return");
        stopProcess(clipboard_);
        return pasted;
    }

    // "Remove token from this computer", then Remove in the question, from the keyboard: the
    // button comes after the token field, the eye, All, None and the reload button; the
    // question starts on Cancel, followed by Remove.
    bool removeInSettings() {
        return openSettings() &&
               desktop_.parts().xdotool({"key", "Tab", "Tab", "Tab", "Tab", "Tab", "space"}) &&
               focusOnWindowTitled(kRemovalTitle, env()) &&
               desktop_.parts().xdotool({"key", "Tab", "space"});
    }

    // Clicks the tray icon; the window it opens (other than Settings), once it has the keyboard.
    std::optional<XWindow> openPanel(const XWindow& icon) {
        const QPoint centre = icon.rect.center();
        if (!desktop_.parts().xdotool({"mousemove", "--sync", QString::number(centre.x()),
                                       QString::number(centre.y()), "click", "1"}))
            return std::nullopt;
        const QStringList settings = visibleWindowsTitled(kSettingsTitle, env());
        std::optional<XWindow> panel;
        waitUntil(
            [&] {
                for (const XWindow& window : shownTopLevels(env())) {
                    if (settings.isEmpty() || !sameWindow(window.id, settings.first()))
                        panel = window;
                }
                return panel.has_value();
            },
            kStepTimeoutMs);
        if (!panel || !waitForFocus(panel->id, env()))
            return std::nullopt;
        return panel;
    }

    // Every file under the app's configuration folder that holds the token.
    QStringList configFilesHoldingToken() const {
        QStringList holding;
        QDirIterator files(desktop_.appEnvironment().value("XDG_CONFIG_HOME"), QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            if (file.open(QIODevice::ReadOnly) && file.readAll().contains(token_))
                holding << file.fileName();
        }
        return holding;
    }

    LoopbackHttpServer server_;
    FakeVercelAccount account_{server_};
    TrayDesktop desktop_;
    QProcess clipboard_;
    QByteArray secondLaunchOutput_;
    const QByteArray token_ = "vq_" + QUuid::createUuid().toByteArray(QUuid::Id128);
};

} // namespace

TEST_F(TokenEndToEnd, APastedTokenIsCheckedKeptShownAndRemoved) {
    KeyringDaemon& keyring = desktop_.parts().keyring();

    // No token yet: the app says so and asks Vercel nothing.
    std::optional<QJsonObject> status = statusWhen([](const QJsonObject&) { return true; });
    ASSERT_TRUE(status) << "quillon never answered Status: " << said();
    EXPECT_EQ(text(*status, "tone"), "disconnected");
    EXPECT_EQ(text(*status, "summary"), "Not connected");
    EXPECT_TRUE(server_.requests().isEmpty());

    // Pasted the way it often comes, with blanks and a line break around it.
    ASSERT_TRUE(pasteInSettings("  " + token_ + "\n")) << said();

    // Checked with Vercel, every project of both scopes monitored (nobody chose yet).
    status = statusWhen([](const QJsonObject& s) { return projectStates(s).size() == 3; });
    ASSERT_TRUE(status) << said();
    ASSERT_EQ(projectStates(*status),
              QStringList({"prj_api error", "prj_docs unknown", "prj_web ready"}))
        << said();
    EXPECT_EQ(text(*status, "tone"), "error");
    EXPECT_EQ(text(*status, "summary"), "1 failed");
    const QList<LoopbackHttpServer::Request> checks = server_.requestsTo("/v2/user");
    ASSERT_FALSE(checks.isEmpty());
    EXPECT_TRUE(checks.first().headerValues("Authorization") ==
                QList<QByteArray>{"Bearer " + token_})
        << "Vercel was not sent the trimmed token";

    // Kept once in the login keyring and once for the session, trimmed.
    EXPECT_EQ(keyring.itemsIn("login", "synced").size(), 1);
    EXPECT_EQ(keyring.itemsIn("session", "local").size(), 1);
    EXPECT_TRUE(keyring.secretOf("synced") == token_)
        << "the login keyring holds another text than the trimmed token";

    // The tray icon opens the panel under it; Escape closes it.
    std::optional<XWindow> icon;
    ASSERT_TRUE(waitUntil([&] { return (icon = trayIcon(env())).has_value(); }, kStepTimeoutMs));
    const std::optional<XWindow> panel = openPanel(*icon);
    ASSERT_TRUE(panel) << "no panel after a click on the tray icon: " << said();
    const int iconCentre = icon->rect.center().x();
    EXPECT_TRUE(panel->rect.top() >= icon->rect.bottom() && panel->rect.left() <= iconCentre &&
                panel->rect.right() >= iconCentre)
        << "panel " << describe(panel->rect).toStdString() << " for the icon "
        << describe(icon->rect).toStdString();
    ASSERT_TRUE(desktop_.press("Escape"));
    EXPECT_TRUE(waitUntil([&] { return !isViewable(panel->id, env()); }, kStepTimeoutMs))
        << "Escape left the panel open";

    // Removed, after confirmation: forgotten by the app and the keyring alike.
    ASSERT_TRUE(removeInSettings()) << said();
    status = statusWhen([](const QJsonObject& s) { return text(s, "summary") == "Not connected"; });
    ASSERT_TRUE(status) << said();
    EXPECT_EQ(text(*status, "tone"), "disconnected");
    EXPECT_TRUE(projectStates(*status).isEmpty());
    EXPECT_TRUE(keyring.itemsIn("login", "synced").isEmpty());
    EXPECT_TRUE(keyring.itemsIn("session", "local").isEmpty());

    // A clean exit, and the token in nothing the app printed or wrote.
    EXPECT_TRUE(desktop_.quitApp()) << said();
    EXPECT_FALSE(desktop_.appOutput().contains(token_)) << "quillon printed the token";
    EXPECT_FALSE(secondLaunchOutput_.contains(token_)) << "a second launch printed the token";
    EXPECT_EQ(configFilesHoldingToken(), QStringList());
}
