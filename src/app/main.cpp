// quillon: the tray application. The access token comes from the keyring, never from the
// argument list.
#include "app/CommandLine.h"
#include "app/QuillonApp.h"
#include "app/QuitOnSignals.h"
#include "app/ScreenCapture.h"
#include "core/common/Language.h"
#include "core/vercel/VercelAPI.h"
#include "platform/ServiceModule.h"
#include "platform/SingleInstance.h"
#include "ui/status/WaylandSession.h"

#include <QApplication>
#include <QTimer>
#include <csignal>
#include <cstdio>

namespace {

void printTo(FILE* stream, const QString& text) {
    std::fputs(text.toUtf8().constData(), stream);
}

// Plain Wayland lets no client place a window under the tray icon: run on XWayland instead,
// unless the user chose a platform.
void preferX11OnWayland() {
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM") || qEnvironmentVariableIsEmpty("DISPLAY"))
        return;
    if (inWaylandSession())
        qputenv("QT_QPA_PLATFORM", "xcb");
}

// Without a tray nothing of Quillon could be reached. A panel that starts with the session may
// come a moment after us, so the verdict waits a little; then Settings opens, and starting
// quillon again brings it back. Quillon keeps running: notifications and the Live Activity still
// work, and Qt embeds the icon if a tray appears later.
void watchForMissingTray(QuillonApp& quillon) {
    constexpr std::chrono::seconds grace(3);
    QTimer::singleShot(grace, &quillon, [&quillon] {
        if (quillon.hasTray())
            return;
        printTo(stderr, QStringLiteral("quillon: %1\n")
                            .arg(Language::text(
                                "no system tray found. Quillon keeps running: failures still "
                                "arrive as notifications, and its Settings window is open. Run "
                                "quillon again to bring Settings back.",
                                "aucune zone de notification trouvée. Quillon continue de "
                                "fonctionner : les échecs arrivent toujours en notifications, et "
                                "sa fenêtre de réglages est ouverte. Relancez quillon pour "
                                "rouvrir les réglages.")));
        quillon.showSettings();
    });
}

std::optional<int> demoScene() {
    bool ok = false;
    const int scene = qEnvironmentVariableIntValue("QUILLON_DEMO_SCENE", &ok);
    return ok ? std::optional<int>(scene) : std::nullopt;
}

} // namespace

int main(int argc, char** argv) {
    QStringList early;
    for (int i = 1; i < argc; ++i)
        early.append(QString::fromLocal8Bit(argv[i]));
    const CommandLine::Action earlyAction = CommandLine::earlyAction(early);
    if (earlyAction == CommandLine::Action::help) {
        printTo(stdout, CommandLine::helpText());
        return 0;
    }
    if (earlyAction == CommandLine::Action::version) {
        printTo(stdout, QStringLiteral("quillon %1\n").arg(QStringLiteral(QUILLON_VERSION)));
        return 0;
    }
    QString problem;
    const std::optional<QUrl> apiBase = VercelAPI::baseFromEnvironment(&problem);
    if (!apiBase) {
        printTo(stderr, QStringLiteral("quillon: %1\n").arg(problem));
        return 2;
    }

    preferX11OnWayland();
    QApplication app(argc, argv);
    // HTTP, the keyring and the network state come from a module loaded on first use.
    ServiceModule::loadFrom(ServiceModule::defaultDirectories());
    QApplication::setApplicationName(QStringLiteral("quillon"));
    QApplication::setApplicationVersion(QStringLiteral(QUILLON_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("com.fernhollow.quillon"));
    QApplication::setQuitOnLastWindowClosed(false);
    // Qt has taken its own options (-platform …); what remains must be ours.
    const CommandLine options = CommandLine::parse(QApplication::arguments().mid(1));
    if (options.action == CommandLine::Action::fail) {
        printTo(stderr, QStringLiteral("quillon: %1\n").arg(options.problem));
        return 2;
    }
    QuitOnSignals quitOnSignals({SIGINT, SIGTERM});

    // A second launch brings the running instance's Settings forward instead of a second icon.
    SingleInstance instance;
    switch (instance.claim()) {
    case SingleInstance::Claim::forwarded:
        printTo(stderr, QStringLiteral(
                            "quillon: already running; its Settings window was brought forward\n"));
        return 0;
    case SingleInstance::Claim::unanswered:
        printTo(stderr, QStringLiteral("quillon: already running, but it did not answer: %1\n")
                            .arg(instance.problem()));
        return 1;
    case SingleInstance::Claim::owned:
    case SingleInstance::Claim::noBus:
        break;
    }

    QuillonApp quillon(*apiBase, QApplication::applicationFilePath());
    QObject::connect(&instance, &SingleInstance::showSettingsRequested, &quillon,
                     &QuillonApp::showSettings);
    instance.setStatusSource([&quillon] { return quillon.statusJson(); });
    quillon.start(qEnvironmentVariable("QUILLON_DEMO") == QLatin1String("1"), demoScene());
    watchForMissingTray(quillon);
    if (options.screenshot)
        ScreenCapture::saveAfter(*options.screenshot, options.screenshotDelay);
    return app.exec();
}
