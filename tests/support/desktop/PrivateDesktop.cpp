#include "support/desktop/PrivateDesktop.h"
#include "support/StopProcess.h"

#include "support/WaitUntil.h"

#include <QDBusConnectionInterface>
#include <QDir>
#include <QFile>
#include <QUuid>

#include <signal.h>

namespace {

constexpr int kStartTimeoutMs = 10000;
const QString kNotifications = QStringLiteral("org.freedesktop.Notifications");

// Notifications stay on screen until acted upon, so a slow test still finds them there.
const QByteArray dunstConfig = "[urgency_low]\n    timeout = 0\n"
                               "[urgency_normal]\n    timeout = 0\n"
                               "[urgency_critical]\n    timeout = 0\n";

// A session bus listening in the home, without service directories: a name nobody owns stays
// unowned instead of activating the machine's own keyring or notifier.
QByteArray privateBusConfig(const QString& socketDir) {
    return QStringLiteral(
               "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
               "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
               "<busconfig><type>session</type><listen>unix:dir=%1</listen>"
               "<auth>EXTERNAL</auth><policy context=\"default\">"
               "<allow send_destination=\"*\" eavesdrop=\"true\"/><allow eavesdrop=\"true\"/>"
               "<allow own=\"*\"/></policy></busconfig>\n")
        .arg(socketDir)
        .toUtf8();
}

bool writeFile(const QString& path, const QByteArray& contents) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
}

// The first line the process prints on standard output, or empty when it prints none in time.
QString firstLine(QProcess& process) {
    QDeadlineTimer deadline(kStartTimeoutMs);
    while (!process.canReadLine() && !deadline.hasExpired() && process.state() == QProcess::Running)
        process.waitForReadyRead(int(deadline.remainingTime()));
    return QString::fromUtf8(process.readLine()).trimmed();
}

bool displayAnswers(const QString& display) {
    QProcess probe;
    probe.start(QStringLiteral("xdpyinfo"), {QStringLiteral("-display"), display});
    return probe.waitForFinished(kStartTimeoutMs) && probe.exitStatus() == QProcess::NormalExit &&
           probe.exitCode() == 0;
}

} // namespace

PrivateDesktop::PrivateDesktop() {
    for (const char* dir : {"config", "data", "cache"})
        QDir(home_.path()).mkpath(QString::fromLatin1(dir));
}

PrivateDesktop::~PrivateDesktop() {
    if (!connectionName_.isEmpty())
        QDBusConnection::disconnectFromBus(connectionName_);
    resumeDunst(); // a stopped process would not act on the termination signal
    stop(dunst_);
    keyring_.stop();
    stop(bus_);
    stop(xvfb_);
}

std::optional<QString> PrivateDesktop::startDisplay() {
    // -displayfd: Xvfb picks a free display number and prints it once it accepts clients.
    // -noreset: by default Xvfb resets when its last client leaves and turns away whoever
    // connects meanwhile, so a short-lived tool (xdpyinfo, xwininfo) could shut out the next.
    xvfb_.start(QStringLiteral("Xvfb"),
                {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                 QStringLiteral("0"), QStringLiteral("1280x800x24"), QStringLiteral("-nolisten"),
                 QStringLiteral("tcp"), QStringLiteral("-noreset")});
    if (!xvfb_.waitForStarted(kStartTimeoutMs))
        return QStringLiteral("Xvfb did not start: ") + xvfb_.errorString();
    const QString number = firstLine(xvfb_);
    if (number.isEmpty())
        return QStringLiteral("Xvfb gave no display: ") +
               QString::fromUtf8(xvfb_.readAllStandardError());
    display_ = QLatin1Char(':') + number;
    // The first client is tried here: a display that takes none is Xvfb's failure, reported with
    // its own words, not the application's.
    if (!waitUntil([this] { return displayAnswers(display_); }, kStartTimeoutMs))
        return QStringLiteral("Xvfb display ") + display_ + QStringLiteral(" takes no client: ") +
               QString::fromUtf8(xvfb_.readAllStandardError());
    return std::nullopt;
}

std::optional<QString> PrivateDesktop::startBus() {
    if (!home_.isValid())
        return QStringLiteral("no temporary directory");
    const QString configPath = home_.filePath(QStringLiteral("bus.conf"));
    if (!writeFile(configPath, privateBusConfig(home_.path())))
        return QStringLiteral("cannot write the bus configuration");
    bus_.start(QStringLiteral("dbus-daemon"),
               {QStringLiteral("--config-file=") + configPath, QStringLiteral("--nofork"),
                QStringLiteral("--print-address=1")});
    if (!bus_.waitForStarted(kStartTimeoutMs))
        return QStringLiteral("dbus-daemon did not start: ") + bus_.errorString();
    address_ = firstLine(bus_);
    if (address_.isEmpty())
        return QStringLiteral("dbus-daemon printed no address");
    connectionName_ = QUuid::createUuid().toString();
    if (!QDBusConnection::connectToBus(address_, connectionName_).isConnected())
        return QStringLiteral("cannot connect to the private bus");
    return std::nullopt;
}

std::optional<QString> PrivateDesktop::startDunstWith(const QByteArray& globalSettings) {
    const QString configPath = home_.filePath(QStringLiteral("dunstrc"));
    const QByteArray global = "[global]\n    idle_threshold = 0\n" + globalSettings + "\n";
    if (!writeFile(configPath, global + dunstConfig))
        return QStringLiteral("cannot write the dunst configuration");
    dunst_.setProcessEnvironment(environment());
    dunst_.start(QStringLiteral("dunst"), {QStringLiteral("-config"), configPath});
    if (!dunst_.waitForStarted(kStartTimeoutMs))
        return QStringLiteral("dunst did not start: ") + dunst_.errorString();
    if (!waitUntil([this] { return dunstServes(); }, kStartTimeoutMs))
        return QStringLiteral("dunst never served notifications: ") +
               QString::fromUtf8(dunst_.readAllStandardError());
    return std::nullopt;
}

std::optional<QString> PrivateDesktop::startKeyring(KeyringDaemon::Login login) {
    keyring_.stop();
    return keyring_.start(login, environment(), connection());
}

bool PrivateDesktop::dunstServes() const {
    return dunst_.state() == QProcess::Running &&
           connection().interface()->isServiceRegistered(kNotifications);
}

void PrivateDesktop::pauseDunst() {
    if (dunst_.state() == QProcess::Running)
        ::kill(pid_t(dunst_.processId()), SIGSTOP);
}

void PrivateDesktop::resumeDunst() {
    if (dunst_.state() == QProcess::Running)
        ::kill(pid_t(dunst_.processId()), SIGCONT);
}

QProcessEnvironment PrivateDesktop::environment() const {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char* name :
         {"DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "LANGUAGE", "XAUTHORITY",
          "QUILLON_DEMO", "QUILLON_DEMO_SPEED", "GNOME_KEYRING_CONTROL", "SSH_AUTH_SOCK"})
        env.remove(QString::fromLatin1(name));
    env.insert(QStringLiteral("HOME"), home_.path());
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home_.filePath(QStringLiteral("config")));
    env.insert(QStringLiteral("XDG_DATA_HOME"), home_.filePath(QStringLiteral("data")));
    env.insert(QStringLiteral("XDG_CACHE_HOME"), home_.filePath(QStringLiteral("cache")));
    env.insert(QStringLiteral("LANGUAGE"), QStringLiteral("en"));
    env.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    if (!display_.isEmpty())
        env.insert(QStringLiteral("DISPLAY"), display_);
    if (!address_.isEmpty())
        env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), address_);
    return env;
}

bool PrivateDesktop::xdotool(const QStringList& arguments) const {
    QProcess process;
    process.setProcessEnvironment(environment());
    process.start(QStringLiteral("xdotool"), arguments);
    return process.waitForFinished(kStartTimeoutMs) &&
           process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

void PrivateDesktop::stop(QProcess& process) {
    stopProcess(process);
}
