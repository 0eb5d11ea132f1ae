#include "ui/status/UsableArea.h"

#include <QGuiApplication>
#include <QScreen>

std::optional<QRect> usableAreaAt(const std::optional<QPoint>& point) {
    QScreen* screen = point ? QGuiApplication::screenAt(*point) : nullptr;
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (!screen)
        return std::nullopt;
    return screen->availableGeometry();
}
