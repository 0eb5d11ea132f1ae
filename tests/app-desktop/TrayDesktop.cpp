#include "app-desktop/TrayDesktop.h"
#include "support/StopProcess.h"

#include "app-desktop/XWindow.h"
#include "support/WaitUntil.h"

TrayDesktop::~TrayDesktop() {
    stopProcess(app_);
    stopProcess(trayer_);
}

std::optional<QString> TrayDesktop::start(bool bare) {
    for (auto part :
         {&PrivateDesktop::startDisplay, &PrivateDesktop::startBus, &PrivateDesktop::startDunst}) {
        if (bare && part == &PrivateDesktop::startDunst)
            return std::nullopt;
        if (std::optional<QString> failure = (desktop_.*part)())
            return failure;
    }
    // A panel across the top of the screen with the tray on the right, as on many desktops.
    trayer_.setProcessEnvironment(desktop_.environment());
    trayer_.start("trayer",
                  {"--edge", "top", "--align", "right", "--widthtype", "percent", "--width", "100",
                   "--height", "28", "--SetDockType", "true", "--SetPartialStrut", "true"});
    if (!trayer_.waitForStarted(kXToolTimeoutMs))
        return "trayer did not start: " + trayer_.errorString();
    if (!waitUntil([this] { return trayerShowsPanel(environment()); }, TrayDesktop::startTimeoutMs))
        return "trayer showed no panel: " + QString::fromUtf8(trayer_.readAllStandardError());
    return std::nullopt;
}

std::optional<QString> TrayDesktop::startApp(const QProcessEnvironment& settings) {
    QProcessEnvironment env = environment();
    env.insert("QT_QPA_PLATFORM", "xcb");
    for (const char* name : {"QUILLON_DEMO_SCENE", "QUILLON_API_BASE"})
        env.remove(QString::fromLatin1(name));
    env.insert(settings);
    app_.setProcessEnvironment(env);
    app_.start(QStringLiteral(QUILLON_APP_PATH), {});
    if (!app_.waitForStarted(kXToolTimeoutMs))
        return "quillon did not start: " + app_.errorString();
    return std::nullopt;
}

QByteArray TrayDesktop::appOutput() {
    output_ += app_.readAllStandardOutput();
    output_ += app_.readAllStandardError();
    return output_;
}

bool TrayDesktop::quitApp() {
    app_.terminate();
    return app_.waitForFinished(kXToolTimeoutMs) && app_.exitStatus() == QProcess::NormalExit &&
           app_.exitCode() == 0;
}

bool TrayDesktop::press(const QString& keys) const {
    return desktop_.xdotool({"key", keys});
}
