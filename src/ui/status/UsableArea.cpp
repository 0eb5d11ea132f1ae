#include "ui/status/UsableArea.h"

#include "ui/status/SwayWorkArea.h"

#include <QGuiApplication>
#include <QScreen>

std::optional<QRect> usableAreaAt(const std::optional<QPoint>& point) {
    QScreen* screen = point ? QGuiApplication::screenAt(*point) : nullptr;
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (!screen)
        return std::nullopt;
    const QRect available = screen->availableGeometry();
    if (available != screen->geometry())
        return available;
    return swayUsableArea(available).value_or(available);
}
