// The tray application on a desktop of its own: Xvfb with a tray (trayer), a private session bus
// and dunst. The demo's hot key starts a deployment; the Live Activity capsule must appear under
// the tray icon while it builds and go away a few seconds after it finished.
#include "support/QtPrinters.h"
#include "support/WaitUntil.h"
#include "support/desktop/PrivateDesktop.h"
#include "ui/status/LiveActivityGeometry.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QRect>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <algorithm>
#include <gtest/gtest.h>
#include <optional>

namespace {

constexpr int kToolTimeoutMs = 10000;
constexpr int kStartTimeoutMs = 20000;

// One window of `xwininfo -root -tree`, with its place on screen.
struct XWindow {
    QString id;
    QString instance; // WM_CLASS, e.g. "quillon" "quillon"
    QString className;
    QRect rect; // absolute: the screen position xwininfo prints after the size
    int depth = 0;
    QStringList ancestorClasses; // WM_CLASS names of every window above it
};

std::optional<QString> runTool(const QString& program, const QStringList& arguments,
                               const QProcessEnvironment& environment) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished(kToolTimeoutMs) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0)
        return std::nullopt;
    return QString::fromUtf8(process.readAllStandardOutput());
}

// Every window below the root, parents before their children.
QList<XWindow> windowTree(const QProcessEnvironment& environment) {
    const std::optional<QString> tree =
        runTool(QStringLiteral("xwininfo"), {QStringLiteral("-root"), QStringLiteral("-tree")},
                environment);
    if (!tree)
        return {};
    // `     0x400006 "quillon": ("quillon" "quillon")  22x26+0+0  +1257+1`
    static const QRegularExpression line(QString::fromLatin1(
        R"re(^(\s*)(0x[0-9a-f]+) .*: \((?:"([^"]*)" "([^"]*)")?\)\s+(\d+)x(\d+)[+-]-?\d+[+-]-?\d+)re"
        R"re(\s+\+(-?\d+)\+(-?\d+)\s*$)re"));
    QList<XWindow> windows;
    QList<std::pair<int, QString>> stack; // indentation and class of the open ancestors
    for (const QString& text : tree->split(QLatin1Char('\n'))) {
        const QRegularExpressionMatch match = line.match(text);
        if (!match.hasMatch())
            continue;
        const int indent = int(match.capturedLength(1));
        while (!stack.isEmpty() && stack.last().first >= indent)
            stack.removeLast();
        XWindow window;
        window.id = match.captured(2);
        window.instance = match.captured(3);
        window.className = match.captured(4);
        window.rect = QRect(match.captured(7).toInt(), match.captured(8).toInt(),
                            match.captured(5).toInt(), match.captured(6).toInt());
        window.depth = int(stack.size());
        for (const auto& ancestor : std::as_const(stack))
            window.ancestorClasses.append(ancestor.second);
        stack.append({indent, window.instance + QLatin1Char(' ') + window.className});
        windows.append(window);
    }
    return windows;
}

bool isViewable(const QString& id, const QProcessEnvironment& environment) {
    const std::optional<QString> info =
        runTool(QStringLiteral("xwininfo"), {QStringLiteral("-id"), id}, environment);
    return info && info->contains(QStringLiteral("Map State: IsViewable"));
}

bool isApp(const XWindow& window) {
    return window.instance == QLatin1String("quillon");
}

bool isTrayerPanel(const XWindow& window) {
    return window.depth == 0 && window.className == QLatin1String("trayer") &&
           window.rect.width() > 100;
}

// The app's icon once trayer has embedded it and laid it out inside its panel.
std::optional<XWindow> trayIcon(const QProcessEnvironment& environment) {
    const QList<XWindow> windows = windowTree(environment);
    const auto panel = std::find_if(windows.begin(), windows.end(), isTrayerPanel);
    if (panel == windows.end())
        return std::nullopt;
    const QString panelClass = panel->instance + QLatin1Char(' ') + panel->className;
    for (const XWindow& window : windows) {
        if (isApp(window) && window.ancestorClasses.contains(panelClass) &&
            window.rect.width() > 1 && panel->rect.contains(window.rect))
            return window;
    }
    return std::nullopt;
}

bool trayerShowsPanel(const QProcessEnvironment& environment) {
    const QList<XWindow> windows = windowTree(environment);
    return std::any_of(windows.begin(), windows.end(), isTrayerPanel);
}

// The app's top-level windows that are on screen now.
QList<XWindow> shownTopLevels(const QProcessEnvironment& environment) {
    QList<XWindow> shown;
    for (const XWindow& window : windowTree(environment)) {
        if (window.depth == 0 && isApp(window) && isViewable(window.id, environment))
            shown.append(window);
    }
    return shown;
}

QString describe(const QRect& r) {
    return QStringLiteral("%1x%2 at (%3, %4)").arg(r.width()).arg(r.height()).arg(r.x()).arg(r.y());
}

void stop(QProcess& process) {
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(5000)) {
        process.kill();
        process.waitForFinished(5000);
    }
}

// The desktop, trayer and the app; the destructor stops them in the reverse order.
class TrayDesktop {
public:
    ~TrayDesktop() {
        stop(app_);
        stop(trayer_);
    }

    std::optional<QString> start() {
        for (auto part : {&PrivateDesktop::startDisplay, &PrivateDesktop::startBus,
                          &PrivateDesktop::startDunst}) {
            if (std::optional<QString> failure = (desktop_.*part)())
                return failure;
        }
        // A panel across the top of the screen with the tray on the right, as on many desktops.
        trayer_.setProcessEnvironment(desktop_.environment());
        trayer_.start(QStringLiteral("trayer"),
                      {QStringLiteral("--edge"), QStringLiteral("top"), QStringLiteral("--align"),
                       QStringLiteral("right"), QStringLiteral("--widthtype"),
                       QStringLiteral("percent"), QStringLiteral("--width"), QStringLiteral("100"),
                       QStringLiteral("--height"), QStringLiteral("28"),
                       QStringLiteral("--SetDockType"), QStringLiteral("true"),
                       QStringLiteral("--SetPartialStrut"), QStringLiteral("true")});
        if (!trayer_.waitForStarted(kToolTimeoutMs))
            return QStringLiteral("trayer did not start: ") + trayer_.errorString();
        if (!waitUntil([this] { return trayerShowsPanel(environment()); }, kStartTimeoutMs))
            return QStringLiteral("trayer showed no panel: ") +
                   QString::fromUtf8(trayer_.readAllStandardError());

        QProcessEnvironment env = environment();
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        env.insert(QStringLiteral("QUILLON_DEMO"), QStringLiteral("1"));
        env.insert(QStringLiteral("QUILLON_DEMO_SPEED"), QStringLiteral("10"));
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), config_.path());
        env.remove(QStringLiteral("QUILLON_DEMO_SCENE"));
        env.remove(QStringLiteral("QUILLON_API_BASE"));
        app_.setProcessEnvironment(env);
        app_.start(QStringLiteral(QUILLON_APP_PATH), {});
        if (!app_.waitForStarted(kToolTimeoutMs))
            return QStringLiteral("quillon did not start: ") + app_.errorString();
        return std::nullopt;
    }

    QProcessEnvironment environment() const { return desktop_.environment(); }
    bool appRuns() const { return app_.state() == QProcess::Running; }
    QString appErrors() { return QString::fromUtf8(app_.readAllStandardError()); }
    // Asks the app to quit as the session would on logout; answers whether it did so cleanly.
    bool quitApp() {
        app_.terminate();
        return app_.waitForFinished(kToolTimeoutMs) && app_.exitStatus() == QProcess::NormalExit &&
               app_.exitCode() == 0;
    }
    bool press(const QString& keys) const {
        return desktop_.xdotool({QStringLiteral("key"), keys});
    }

private:
    PrivateDesktop desktop_;
    QTemporaryDir config_;
    QProcess trayer_;
    QProcess app_;
};

} // namespace

TEST(TrayEndToEnd, HotKeyOneShowsTheLiveActivityUnderTheTrayIconUntilTheDeploymentIsDone) {
    namespace G = LiveActivityGeometry;
    TrayDesktop desktop;
    const std::optional<QString> failure = desktop.start();
    ASSERT_FALSE(failure) << failure->toStdString();
    const QProcessEnvironment env = desktop.environment();

    std::optional<XWindow> icon;
    ASSERT_TRUE(waitUntil(
        [&] {
            icon = trayIcon(env);
            return icon.has_value() || !desktop.appRuns();
        },
        kStartTimeoutMs));
    ASSERT_TRUE(icon) << "no tray icon embedded in trayer; quillon said: "
                      << desktop.appErrors().toStdString();
    ASSERT_TRUE(isViewable(icon->id, env));
    // Nothing of the app is on screen yet besides the icon.
    ASSERT_TRUE(shownTopLevels(env).isEmpty());

    QElapsedTimer sincePress;
    sincePress.start();
    ASSERT_TRUE(desktop.press(QStringLiteral("ctrl+alt+super+1")));
    QList<XWindow> shown;
    ASSERT_TRUE(waitUntil(
        [&] {
            shown = shownTopLevels(env);
            return !shown.isEmpty() || !desktop.appRuns();
        },
        10000))
        << "no capsule after the hot key; quillon said: " << desktop.appErrors().toStdString();
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
    EXPECT_TRUE(desktop.appRuns()) << desktop.appErrors().toStdString();
    // The icon is still in the tray.
    const std::optional<XWindow> after = trayIcon(env);
    ASSERT_TRUE(after);
    EXPECT_EQ(after->id, icon->id);
    EXPECT_TRUE(desktop.quitApp()) << desktop.appErrors().toStdString();
}
