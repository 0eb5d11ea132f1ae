#include "desktops/XfceDesktop.h"

#include "app-desktop/XWindow.h"
#include "desktops/ScreenGrab.h"
#include "support/StopProcess.h"
#include "support/WaitUntil.h"

#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QDBusVariant>
#include <QDir>
#include <QFile>

namespace {

const QString xfconfd = QStringLiteral("/usr/lib/x86_64-linux-gnu/xfce4/xfconf/xfconfd");
const QString watcher = QStringLiteral("org.kde.StatusNotifierWatcher");

// XFCE's default panel, dark, reduced to the tray. Snap position 6 is the top edge, 10 the
// bottom one.
QByteArray panelConfig(XfceDesktop::Edge edge) {
    const QByteArray position = edge == XfceDesktop::Edge::top ? "p=6;x=0;y=0" : "p=10;x=0;y=0";
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="true"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value=")" +
           position + R"("/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="icon-size" type="uint" value="16"/>
      <property name="size" type="uint" value="26"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray"/>
  </property>
</channel>
)";
}

std::optional<XWindow> panelWindow(const QProcessEnvironment& environment) {
    for (const XWindow& window : windowTree(environment)) {
        if (window.depth == 0 && window.instance == QLatin1String("xfce4-panel") &&
            window.rect.width() > 100)
            return window;
    }
    return std::nullopt;
}

} // namespace

XfceDesktop::~XfceDesktop() {
    stopProcess(app_);
    stopProcess(panel_);
    stopProcess(xfconfd_);
}

std::optional<QString> XfceDesktop::start(Edge edge, bool workArea) {
    for (auto part : {&PrivateDesktop::startDisplay, &PrivateDesktop::startBus}) {
        if (std::optional<QString> failure = (desktop_.*part)())
            return failure;
    }
    QProcessEnvironment env = environment();
    env.insert(QStringLiteral("NO_AT_BRIDGE"), QStringLiteral("1"));
    const QString configDir = env.value(QStringLiteral("XDG_CONFIG_HOME")) +
                              QStringLiteral("/xfce4/xfconf/xfce-perchannel-xml");
    QFile config(configDir + QStringLiteral("/xfce4-panel.xml"));
    if (!QDir().mkpath(configDir) || !config.open(QIODevice::WriteOnly) ||
        config.write(panelConfig(edge)) < 0)
        return QStringLiteral("cannot write the panel's configuration");
    config.close();
    // The private bus starts no service by itself.
    xfconfd_.setProcessEnvironment(env);
    xfconfd_.start(xfconfd, {});
    if (!waitUntil(
            [this] {
                return bus().interface()->isServiceRegistered(QStringLiteral("org.xfce.Xfconf"));
            },
            startTimeoutMs))
        return QStringLiteral("xfconfd did not start");
    panel_.setProcessEnvironment(env);
    panel_.setProcessChannelMode(QProcess::MergedChannels);
    std::optional<XWindow> panel;
    // Xvfb resets when its last client leaves, and a client that connects meanwhile is turned
    // away: the panel then ends at once and is started again.
    for (int attempt = 0; attempt < 3 && !panel; ++attempt) {
        panel_.start(QStringLiteral("xfce4-panel"), {});
        if (!panel_.waitForStarted(kXToolTimeoutMs))
            return QStringLiteral("xfce4-panel did not start: ") + panel_.errorString();
        waitUntil(
            [&] {
                panel = panelWindow(env);
                return panel_.state() != QProcess::Running ||
                       (panel && bus().interface()->isServiceRegistered(watcher));
            },
            startTimeoutMs);
        if (panel_.state() != QProcess::Running)
            panel.reset();
    }
    if (!panel || !bus().interface()->isServiceRegistered(watcher))
        return QStringLiteral("xfce4-panel showed no tray: ") + QString::fromUtf8(panel_.readAll());
    return workArea ? publishWorkArea(panel->rect) : std::nullopt;
}

std::optional<QString> XfceDesktop::publishWorkArea(const QRect& panel) {
    const QRect screen(0, 0, 1280, 800);
    QRect free = screen;
    if (panel.top() == 0)
        free.setTop(panel.bottom() + 1);
    else
        free.setBottom(panel.top() - 1);
    const QString value = QStringLiteral("%1, %2, %3, %4")
                              .arg(free.x())
                              .arg(free.y())
                              .arg(free.width())
                              .arg(free.height());
    if (!runTool(QStringLiteral("xprop"),
                 {QStringLiteral("-root"), QStringLiteral("-f"), QStringLiteral("_NET_WORKAREA"),
                  QStringLiteral("32c"), QStringLiteral("-set"), QStringLiteral("_NET_WORKAREA"),
                  value},
                 environment()))
        return QStringLiteral("cannot publish the work area");
    return std::nullopt;
}

std::optional<QString> XfceDesktop::startApp() {
    QProcessEnvironment env = environment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    env.insert(QStringLiteral("QUILLON_DEMO"), QStringLiteral("1"));
    env.insert(QStringLiteral("QUILLON_DEMO_SPEED"), QStringLiteral("10"));
    app_.setProcessEnvironment(env);
    app_.setProcessChannelMode(QProcess::MergedChannels);
    app_.start(QStringLiteral(QUILLON_APP_PATH), {});
    if (!app_.waitForStarted(kXToolTimeoutMs))
        return QStringLiteral("quillon did not start: ") + app_.errorString();
    return std::nullopt;
}

QString XfceDesktop::appOutput() {
    output_ += QString::fromUtf8(app_.readAll());
    return output_;
}

std::optional<QRect> XfceDesktop::tray() const {
    const QList<XWindow> windows = windowTree(environment());
    const std::optional<XWindow> panel = panelWindow(environment());
    if (!panel)
        return std::nullopt;
    // The panel's one plugin, grown past its empty width once it holds an icon.
    for (const XWindow& window : windows) {
        if (window.depth == 1 && panel->rect.contains(window.rect) && window.rect.width() > 8 &&
            window.rect.height() > 8)
            return window.rect;
    }
    return std::nullopt;
}

std::optional<QString> XfceDesktop::registeredItem() const {
    QDBusMessage get = QDBusMessage::createMethodCall(
        watcher, QStringLiteral("/StatusNotifierWatcher"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    get << watcher << QStringLiteral("RegisteredStatusNotifierItems");
    const QDBusReply<QDBusVariant> reply = bus().call(get);
    if (!reply.isValid())
        return std::nullopt;
    const QStringList items = reply.value().variant().toStringList();
    if (items.isEmpty())
        return std::nullopt;
    return items.first().section(QLatin1Char('/'), 0, 0); // "service/path" or "service"
}

QImage XfceDesktop::screenshot() const {
    return grabScreen(desktop_.display());
}
