#include "desktops/XfceDesktop.h"

#include "app-desktop/XWindow.h"
#include "support/StopProcess.h"
#include "support/WaitUntil.h"

#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

namespace {

const QString xfconfd = QStringLiteral("/usr/lib/x86_64-linux-gnu/xfce4/xfconf/xfconfd");
const QString watcher = QStringLiteral("org.kde.StatusNotifierWatcher");

// XFCE's default panel, dark, reduced to the tray. Snap position 6 is the top edge, 10 the
// bottom one.
QByteArray panelConfig(XfceDesktop::Edge edge) {
    const QByteArray position = edge == XfceDesktop::Edge::top ? "p=6;x=0;y=0" : "p=10;x=0;y=0";
    return R"(<channel name="xfce4-panel" version="1.0"><property name="configver" type="int" value="2"/>
<property name="panels" type="array"><value type="int" value="1"/>
<property name="dark-mode" type="bool" value="true"/><property name="panel-1" type="empty">
<property name="position" type="string" value=")" +
           position + R"("/><property name="length" type="uint" value="100"/>
<property name="size" type="uint" value="26"/>
<property name="plugin-ids" type="array"><value type="int" value="1"/></property></property>
</property><property name="plugins" type="empty">
<property name="plugin-1" type="string" value="systray"/></property></channel>)";
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

std::optional<QString> XfceDesktop::start(Edge edge, bool workArea, bool appFirst) {
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
    if (appFirst) {
        if (std::optional<QString> failure = startApp())
            return failure;
    }
    panel_.setProcessEnvironment(env);
    panel_.setProcessChannelMode(QProcess::MergedChannels);
    panel_.start(QStringLiteral("xfce4-panel"), {});
    if (!panel_.waitForStarted(kXToolTimeoutMs))
        return QStringLiteral("xfce4-panel did not start: ") + panel_.errorString();
    std::optional<XWindow> panel;
    waitUntil(
        [&] {
            panel = panelWindow(env);
            return panel_.state() != QProcess::Running ||
                   (panel && bus().interface()->isServiceRegistered(watcher));
        },
        startTimeoutMs);
    if (!panel || !bus().interface()->isServiceRegistered(watcher))
        return QStringLiteral("xfce4-panel showed no tray: ") + QString::fromUtf8(panel_.readAll());
    return workArea ? publishWorkArea(panel->rect) : std::nullopt;
}

std::optional<QString> XfceDesktop::publishWorkArea(const QRect& panel) {
    const QRect free = panel.top() == 0 ? QRect(0, panel.bottom() + 1, 1280, 799 - panel.bottom())
                                        : QRect(0, 0, 1280, panel.top());
    const QString area = QStringLiteral("%1, %2, %3, %4")
                             .arg(free.x())
                             .arg(free.y())
                             .arg(free.width())
                             .arg(free.height());
    if (!runTool(QStringLiteral("xprop"),
                 QStringList{"-root", "-f", "_NET_WORKAREA", "32c", "-set", "_NET_WORKAREA", area},
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

bool XfceDesktop::callAsWaybar(const QString& item, const QString& method, int x, int y) const {
    QTemporaryDir dir;
    const QString waybar = dir.filePath(QStringLiteral("waybar"));
    if (!QFile::link(QStringLiteral("/usr/bin/dbus-send"), waybar))
        return false;
    QProcess call;
    call.setProcessEnvironment(environment());
    call.start(waybar, {QStringLiteral("--session"), QStringLiteral("--dest=") + item,
                        QStringLiteral("--print-reply"), QStringLiteral("/StatusNotifierItem"),
                        QStringLiteral("org.kde.StatusNotifierItem.") + method,
                        QStringLiteral("int32:%1").arg(x), QStringLiteral("int32:%1").arg(y)});
    return call.waitForFinished(kXToolTimeoutMs) && call.exitCode() == 0;
}

bool XfceDesktop::quitApp() {
    app_.terminate();
    return app_.waitForFinished(kXToolTimeoutMs) && app_.exitStatus() == QProcess::NormalExit &&
           app_.exitCode() == 0;
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
    QDBusInterface host(watcher, QStringLiteral("/StatusNotifierWatcher"), watcher, bus());
    const QStringList items = host.property("RegisteredStatusNotifierItems").toStringList();
    if (items.isEmpty())
        return std::nullopt;
    return items.first().section(QLatin1Char('/'), 0, 0); // "service/path" or "service"
}

QImage XfceDesktop::screenshot() const {
    return grabScreen(desktop_.display());
}

int countPixels(const QImage& screen, const QRect& area, const std::function<bool(QColor)>& test) {
    int count = 0;
    const QRect inside = area.intersected(screen.rect());
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        for (int x = inside.left(); x <= inside.right(); ++x)
            count += test(QColor(screen.pixel(x, y)));
    }
    return count;
}

QImage grabScreen(const QString& name) {
    const QByteArray display = name.toLatin1();
    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> x(
        xcb_connect(display.constData(), nullptr), &xcb_disconnect);
    if (xcb_connection_has_error(x.get()))
        return {};
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(x.get())).data;
    const auto cookie = xcb_get_image(x.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, screen->root, 0, 0,
                                      screen->width_in_pixels, screen->height_in_pixels, ~0u);
    std::unique_ptr<xcb_get_image_reply_t, decltype(&std::free)> reply(
        xcb_get_image_reply(x.get(), cookie, nullptr), &std::free);
    if (!reply || reply->depth != 24)
        return {};
    // 24-bit depth comes as 32 bits per pixel, blue first: Qt's RGB32 on a little-endian host.
    return QImage(xcb_get_image_data(reply.get()), screen->width_in_pixels,
                  screen->height_in_pixels, QImage::Format_RGB32)
        .copy();
}
