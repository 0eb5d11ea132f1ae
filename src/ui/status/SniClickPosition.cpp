#include "ui/status/SniClickPosition.h"

#include "ui/status/TrayEdge.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QFile>
#include <QHash>

namespace SniClickPosition {

bool reportsCorner(const QString& program) {
    return program == QLatin1String("xapp-sn-watcher");
}

QPoint centreOfCorner(QPoint corner, const QRect& whole, const QRect& area) {
    const QRectF usable(area);
    const TrayEdge edge = trayEdge(QRectF(corner, QSizeF(0, 0)), usable);
    const int reserved = [&] {
        switch (edge) {
        case TrayEdge::top:
            return area.top() - whole.top();
        case TrayEdge::bottom:
            return whole.bottom() - area.bottom();
        case TrayEdge::left:
            return area.left() - whole.left();
        case TrayEdge::right:
            return whole.right() - area.right();
        }
        return 0;
    }();
    constexpr int usualThickness = 32; // a panel that reserves nothing
    const int half = (reserved > 0 ? reserved : usualThickness) / 2;
    switch (edge) {
    case TrayEdge::top: // the icon's lower left corner
        return corner + QPoint(half, -half);
    case TrayEdge::left: // its upper right corner
        return corner + QPoint(-half, half);
    case TrayEdge::bottom: // its upper left corner
    case TrayEdge::right:
        break;
    }
    return corner + QPoint(half, half);
}

bool isInsideIcon(const QString& program, QPoint reported) {
    // No icon cell of a bar is this large; a fixed waybar reports true screen positions, which
    // fall in this corner only for a tray at the very left of a top bar.
    constexpr int largestCell = 64;
    return program.contains(QLatin1String("waybar")) && reported.x() >= 0 && reported.y() >= 0 &&
           reported.x() < largestCell && reported.y() < largestCell;
}

QString programOf(const QString& busName) {
    static QHash<QString, QString> known;
    const bool unique = busName.startsWith(u':');
    if (const auto found = known.constFind(busName); unique && found != known.constEnd())
        return *found;
    const QDBusReply<uint> pid = QDBusConnection::sessionBus().interface()->servicePid(busName);
    if (!pid.isValid())
        return {};
    QFile comm(QStringLiteral("/proc/%1/comm").arg(pid.value()));
    if (!comm.open(QIODevice::ReadOnly))
        return {};
    const QString program = QString::fromLocal8Bit(comm.readAll()).trimmed();
    if (unique)
        known.insert(busName, program);
    return program;
}

bool isGnomeShell(const QString& program) {
    return program == QLatin1String("gnome-shell");
}

} // namespace SniClickPosition
