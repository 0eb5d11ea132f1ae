#include "app/CommandLine.h"

CommandLine CommandLine::parse(const QStringList& arguments) {
    CommandLine line;
    auto fail = [&line](QString problem) {
        line.action = Action::fail;
        line.problem = std::move(problem);
        return line;
    };
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (argument == QLatin1String("--help") || argument == QLatin1String("-h"))
            line.action = Action::help;
        else if (argument == QLatin1String("--version"))
            line.action = Action::version;
        else if (argument == QLatin1String("--screenshot") && i + 1 < arguments.size())
            line.screenshot = arguments[++i];
        else if (argument == QLatin1String("--screenshot-delay") && i + 1 < arguments.size()) {
            bool ok = false;
            const double seconds = arguments[++i].toDouble(&ok);
            if (!ok || !(seconds >= 0 && seconds <= 86400))
                return fail(QStringLiteral("--screenshot-delay needs a number of seconds "
                                           "(at most a day)"));
            line.screenshotDelay = std::chrono::milliseconds(qRound64(seconds * 1000));
        } else
            return fail(QStringLiteral("unknown option '%1' (see --help)").arg(argument));
        if (line.action == Action::help || line.action == Action::version)
            return line;
    }
    return line;
}

CommandLine::Action CommandLine::earlyAction(const QStringList& arguments) {
    for (const QString& argument : arguments) {
        if (argument == QLatin1String("--help") || argument == QLatin1String("-h"))
            return Action::help;
        if (argument == QLatin1String("--version"))
            return Action::version;
    }
    return Action::run;
}

QString CommandLine::helpText() {
    return QStringLiteral(
        "Usage: quillon [OPTIONS]\n\n"
        "Watches your Vercel deployments from the desktop tray.\n\n"
        "Options:\n"
        "  --help                     show this help\n"
        "  --version                  show the version\n"
        "  --screenshot PATH          save a PNG of the screen after a delay, then quit\n"
        "  --screenshot-delay SECONDS the delay before --screenshot (default 5)\n\n"
        "Environment:\n"
        "  QUILLON_DEMO=1             play fake projects, without any network traffic\n"
        "  QUILLON_DEMO_SCENE=N       in demo mode, play scene N once at start (0 to 5)\n"
        "  QUILLON_DEMO_SPEED=F       in demo mode, play the scenes F times faster\n"
        "  QUILLON_ERROR_COLOR        default failure colour, as #RRGGBB\n"
        "  QUILLON_API_BASE           Vercel API address (https://, or http:// on loopback)\n"
        "  QT_QPA_PLATFORM            Qt platform; xcb is chosen in a Wayland session\n\n"
        "In demo mode the global hot keys Ctrl+Alt+Super+1…5 and 0 play the scenes.\n");
}
