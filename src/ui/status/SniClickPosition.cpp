#include "ui/status/SniClickPosition.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QFile>

namespace SniClickPosition {

bool isInsideIcon(const QString& program, QPoint reported) {
    // No icon cell of a bar is this large; a fixed waybar reports true screen positions, which
    // fall in this corner only for a tray at the very left of a top bar.
    constexpr int largestCell = 64;
    return program.contains(QLatin1String("waybar")) && reported.x() >= 0 && reported.y() >= 0 &&
           reported.x() < largestCell && reported.y() < largestCell;
}

QString programOf(const QString& busName) {
    const QDBusReply<uint> pid = QDBusConnection::sessionBus().interface()->servicePid(busName);
    if (!pid.isValid())
        return {};
    QFile comm(QStringLiteral("/proc/%1/comm").arg(pid.value()));
    if (!comm.open(QIODevice::ReadOnly))
        return {};
    return QString::fromLocal8Bit(comm.readAll()).trimmed();
}

} // namespace SniClickPosition
