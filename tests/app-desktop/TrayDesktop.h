#pragma once

#include "support/desktop/PrivateDesktop.h"

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <optional>

// A private desktop with a tray (trayer's panel across the top, the tray on the right), or a bare
// one, and the real `quillon` on it; the destructor stops them in the reverse order.
class TrayDesktop {
public:
    // How long the X server, the tray and the application may take to come up.
    static constexpr int startTimeoutMs = 20000;

    ~TrayDesktop();

    // Xvfb and the bus, then unless `bare` dunst and trayer; answers what went wrong, if anything
    // did.
    std::optional<QString> start(bool bare = false);
    // `quillon` on the xcb platform with the desktop's environment and `settings` on top of it
    // (variables set there replace the desktop's).
    std::optional<QString> startApp(const QProcessEnvironment& settings);

    PrivateDesktop& parts() { return desktop_; }
    QProcessEnvironment environment() const { return desktop_.environment(); }
    // What the app was started with, for a second launch.
    QProcessEnvironment appEnvironment() const { return app_.processEnvironment(); }
    bool appRuns() const { return app_.state() == QProcess::Running; }
    qint64 appPid() const { return app_.processId(); }
    // Everything the app printed so far, standard output and error.
    QByteArray appOutput();
    // Asks the app to quit as the session would on logout; answers whether it did so cleanly.
    bool quitApp();
    bool press(const QString& keys) const;

private:
    PrivateDesktop desktop_;
    QProcess trayer_;
    QProcess app_;
    QByteArray output_;
};
