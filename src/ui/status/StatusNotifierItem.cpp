#include "ui/status/StatusNotifierItem.h"

#include "ui/status/DBusMenuExporter.h"
#include "ui/status/SniClickPosition.h"
#include "ui/status/TrayEdge.h"
#include "ui/status/UsableArea.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QScreen>
#include <QtEndian>

namespace {

const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString itemPath = QStringLiteral("/StatusNotifierItem");
constexpr int busTimeoutMs = 2000;

SniPixmap toSni(const QImage& source) {
    const QImage image = source.convertToFormat(QImage::Format_ARGB32);
    SniPixmap pixmap{image.width(), image.height(), {}};
    pixmap.argb.resize(qsizetype(image.width()) * image.height() * 4);
    auto* out = reinterpret_cast<quint32*>(pixmap.argb.data());
    for (int y = 0; y < image.height(); ++y) {
        const auto* line = reinterpret_cast<const quint32*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x)
            *out++ = qToBigEndian(line[x]);
    }
    return pixmap;
}

} // namespace

QDBusArgument& operator<<(QDBusArgument& argument, const SniPixmap& pixmap) {
    argument.beginStructure();
    argument << pixmap.width << pixmap.height << pixmap.argb;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, SniPixmap& pixmap) {
    argument.beginStructure();
    argument >> pixmap.width >> pixmap.height >> pixmap.argb;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const SniToolTip& tip) {
    argument.beginStructure();
    argument << tip.iconName << tip.icon << tip.title << tip.text;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, SniToolTip& tip) {
    argument.beginStructure();
    argument >> tip.iconName >> tip.icon >> tip.title >> tip.text;
    argument.endStructure();
    return argument;
}

StatusNotifierItem::StatusNotifierItem(QObject* parent) : QObject(parent) {
    qDBusRegisterMetaType<SniPixmap>();
    qDBusRegisterMetaType<SniPixmaps>();
    qDBusRegisterMetaType<SniToolTip>();
}

StatusNotifierItem::~StatusNotifierItem() {
    if (!published_)
        return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.unregisterObject(itemPath);
    if (menuExporter_)
        bus.unregisterObject(DBusMenuExporter::path);
    bus.unregisterService(service_);
}

bool StatusNotifierItem::hostRuns() {
    QDBusMessage get = QDBusMessage::createMethodCall(
        watcherService, watcherPath, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    get << watcherService << QStringLiteral("IsStatusNotifierHostRegistered");
    const QDBusMessage reply = QDBusConnection::sessionBus().call(get, QDBus::Block, busTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return false;
    return reply.arguments().first().value<QDBusVariant>().variant().toBool();
}

bool StatusNotifierItem::publish() {
    if (published_)
        return true;
    QDBusConnection bus = QDBusConnection::sessionBus();
    service_ =
        QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
    if (!bus.registerService(service_) ||
        !bus.registerObject(itemPath, this,
                            QDBusConnection::ExportAllProperties | QDBusConnection::ExportAllSlots |
                                QDBusConnection::ExportScriptableSignals))
        return false;
    if (menuExporter_)
        bus.registerObject(DBusMenuExporter::path, menuExporter_,
                           QDBusConnection::ExportAllProperties | QDBusConnection::ExportAllSlots |
                               QDBusConnection::ExportScriptableSignals);
    published_ = true;
    hostShowsLabel_ = SniClickPosition::isGnomeShell(SniClickPosition::programOf(watcherService));
    // A panel that restarts brings a new watcher, which knows nothing of us.
    auto* watcher = new QDBusServiceWatcher(watcherService, bus,
                                            QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this,
            &StatusNotifierItem::registerWithWatcher);
    return registerWithWatcher();
}

void StatusNotifierItem::awaitHost(std::function<void()> onHost) {
    onHost_ = std::move(onHost);
    QDBusConnection bus = QDBusConnection::sessionBus();
    auto* watcher = new QDBusServiceWatcher(watcherService, bus,
                                            QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this,
            &StatusNotifierItem::checkForHost);
    // The host may register with the watcher a moment after the watcher itself appears.
    bus.connect(watcherService, watcherPath, watcherService,
                QStringLiteral("StatusNotifierHostRegistered"), this, SLOT(checkForHost()));
}

void StatusNotifierItem::checkForHost() {
    if (onHost_ && !published_ && hostRuns())
        std::exchange(onHost_, nullptr)();
}

bool StatusNotifierItem::registerWithWatcher() {
    QDBusMessage call = QDBusMessage::createMethodCall(
        watcherService, watcherPath, watcherService, QStringLiteral("RegisterStatusNotifierItem"));
    call << service_;
    return QDBusConnection::sessionBus().call(call, QDBus::Block, busTimeoutMs).type() ==
           QDBusMessage::ReplyMessage;
}

void StatusNotifierItem::setIcon(const QIcon& icon) {
    SniPixmaps pixmaps;
    for (const QSize& size : icon.availableSizes())
        pixmaps.append(toSni(icon.pixmap(size).toImage()));
    pixmaps_ = pixmaps;
    if (published_)
        Q_EMIT NewIcon();
}

void StatusNotifierItem::setToolTip(const QString& text) {
    if (toolTip_ == text)
        return;
    toolTip_ = text;
    if (published_)
        Q_EMIT NewToolTip();
}

void StatusNotifierItem::setLabel(const QString& text) {
    if (label_ == text)
        return;
    label_ = text;
    if (published_)
        Q_EMIT XAyatanaNewLabel(label_, labelGuide());
}

void StatusNotifierItem::setMenu(QMenu& menu) {
    if (!menuExporter_)
        menuExporter_ = new DBusMenuExporter(menu, this);
}

QDBusObjectPath StatusNotifierItem::menu() const {
    return QDBusObjectPath(menuExporter_ ? DBusMenuExporter::path : QStringLiteral("/NO_DBUSMENU"));
}

SniToolTip StatusNotifierItem::toolTip() const {
    return {QString(), {}, title(), toolTip_};
}

QPoint StatusNotifierItem::clickOnScreen(int x, int y) const {
    const QPoint reported(x, y);
    if (!calledFromDBus())
        return reported;
    const QString host = SniClickPosition::programOf(message().service());
    const QScreen* screen = QGuiApplication::screenAt(reported);
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (screen && SniClickPosition::reportsCorner(host))
        return SniClickPosition::centreOfCorner(
            reported, screen->geometry(), usableAreaAt(reported).value_or(screen->geometry()));
    if (!screen || !SniClickPosition::isInsideIcon(host, reported))
        return reported;
    screen = QGuiApplication::primaryScreen();
    // Measured from the screen's edge: a bar that reserves its room lies outside the usable area,
    // on the bottom when that is the only side where the area leaves room.
    const QRect whole = screen->geometry();
    const QRect area = usableAreaAt(whole.center()).value_or(whole);
    const bool bottom = area.top() == whole.top() && area.bottom() < whole.bottom();
    return rightEndClick(whole, reported.y(), bottom ? TrayEdge::bottom : TrayEdge::top).toPoint();
}

void StatusNotifierItem::Activate(int x, int y) {
    Q_EMIT activated(clickOnScreen(x, y));
    // GNOME's extension stops turning single clicks into Activate once one is answered without
    // an error; the panel is open all the same.
    if (calledFromDBus() &&
        SniClickPosition::isGnomeShell(SniClickPosition::programOf(message().service())))
        sendErrorReply(QDBusError::Failed,
                       QStringLiteral("Quillon opened its panel; keep sending single clicks"));
}

void StatusNotifierItem::SecondaryActivate(int x, int y) {
    // GNOME's extension shows the menu it was given on a right click, and Quillon gives it an
    // empty one so that a left click opens the panel: there a middle click opens the menu.
    if (calledFromDBus() &&
        SniClickPosition::isGnomeShell(SniClickPosition::programOf(message().service())))
        Q_EMIT contextMenuRequested(clickOnScreen(x, y));
    else
        Q_EMIT activated(clickOnScreen(x, y));
}

void StatusNotifierItem::ContextMenu(int x, int y) {
    Q_EMIT contextMenuRequested(clickOnScreen(x, y));
}

void StatusNotifierItem::Scroll(int, const QString&) {}
