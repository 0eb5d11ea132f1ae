#pragma once

#include <QPoint>
#include <QRect>
#include <optional>

// The usable part (without reserved panels) of the screen that holds `point`, or of the primary
// screen when no point is given or no screen holds it; absent without any screen. Under sway,
// whose bars reserve nothing that X clients see, sway tells the usable part.
std::optional<QRect> usableAreaAt(const std::optional<QPoint>& point);
