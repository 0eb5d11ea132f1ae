#include "ui/status/TrayForeground.h"

#include "ui/status/DesktopBarColor.h"
#include "ui/status/TrayEdge.h"
#include "ui/status/UsableArea.h"
#include "ui/status/X11TrayColors.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QRect>

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString colorScheme = QStringLiteral("color-scheme");
constexpr uint preferLight = 2;
constexpr int portalTimeoutMs = 1000;

// Unwraps the variants the portal nests its value in.
QVariant unwrap(QVariant value) {
    while (value.canConvert<QDBusVariant>() && value.userType() == qMetaTypeId<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

std::optional<uint> portalColorScheme() {
    QDBusMessage read = QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface,
                                                       QStringLiteral("Read"));
    read << appearance << colorScheme;
    const QDBusMessage reply =
        QDBusConnection::sessionBus().call(read, QDBus::Block, portalTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return std::nullopt;
    bool ok = false;
    const uint scheme = unwrap(reply.arguments().first()).toUInt(&ok);
    return ok ? std::optional(scheme) : std::nullopt;
}

} // namespace

const QColor TrayForeground::light(0xF2, 0xF2, 0xF2);
const QColor TrayForeground::dark(0x20, 0x20, 0x20);

TrayForeground::TrayForeground(QObject* parent) : QObject(parent), color_(current()) {
    QDBusConnection::sessionBus().connect(portalService, portalPath, settingsInterface,
                                          QStringLiteral("SettingChanged"), this,
                                          SLOT(onSettingChanged(QString, QString, QDBusVariant)));
}

QColor TrayForeground::forScheme(uint scheme) {
    // 1 asks for dark, 0 states no preference: both get the light colour of dark panels.
    return scheme == preferLight ? dark : light;
}

QColor TrayForeground::current() {
    if (const std::optional<QColor> tray = x11TrayForeground())
        return *tray;
    if (const std::optional<QColor> bar = DesktopBarColor::current())
        return forBar(*bar);
    return forScheme(portalColorScheme().value_or(0));
}

QColor TrayForeground::forBar(const QColor& bar) {
    constexpr int lightBar = 140;
    return bar.lightness() > lightBar ? dark : light;
}

void TrayForeground::set(const QColor& color) {
    if (color == color_)
        return;
    color_ = color;
    Q_EMIT changed();
}

void TrayForeground::followBarAround(const QRect& icon) {
    if (x11TrayForeground())
        return;
    // Along the bar: beside the icon on a top or bottom bar, above and below it on a side one.
    const std::optional<QRect> area = usableAreaAt(icon.center());
    const bool alongRow = !area || isHorizontal(trayEdge(icon, QRectF(*area)));
    const std::optional<QColor> bar = x11ColorBeside(icon, alongRow);
    if (!bar)
        return;
    barSeen_ = true;
    set(forBar(*bar));
}

void TrayForeground::onSettingChanged(const QString& group, const QString& key,
                                      const QDBusVariant& value) {
    if (group != appearance || key != colorScheme || barSeen_ || x11TrayForeground() ||
        DesktopBarColor::current())
        return;
    set(forScheme(unwrap(value.variant()).toUInt()));
}
