#include "app-desktop/TrayDesktop.h"
#include "support/StopProcess.h"

#include "app-desktop/XWindow.h"
#include "support/WaitUntil.h"

TrayDesktop::~TrayDesktop() {
    stopProcess(app_);
    stopProcess(trayer_);
}

std::optional<QString> TrayDesktop::start() {
    for (auto part :
         {&PrivateDesktop::startDisplay, &PrivateDesktop::startBus, &PrivateDesktop::startDunst}) {
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
    if (!trayer_.waitForStarted(kXToolTimeoutMs))
        return QStringLiteral("trayer did not start: ") + trayer_.errorString();
    if (!waitUntil([this] { return trayerShowsPanel(environment()); }, TrayDesktop::startTimeoutMs))
        return QStringLiteral("trayer showed no panel: ") +
               QString::fromUtf8(trayer_.readAllStandardError());
    return std::nullopt;
}

std::optional<QString> TrayDesktop::startApp(const QProcessEnvironment& settings) {
    QProcessEnvironment env = environment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    for (const char* name : {"QUILLON_DEMO_SCENE", "QUILLON_API_BASE"})
        env.remove(QString::fromLatin1(name));
    env.insert(settings);
    app_.setProcessEnvironment(env);
    app_.start(QStringLiteral(QUILLON_APP_PATH), {});
    if (!app_.waitForStarted(kXToolTimeoutMs))
        return QStringLiteral("quillon did not start: ") + app_.errorString();
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
    return desktop_.xdotool({QStringLiteral("key"), keys});
}
