#pragma once

#include <QColor>
#include <QDateTime>

// What the panel's tests share: the moment they are set in and the background the panel is drawn
// on.
namespace PanelScene {
inline const QDateTime start(QDate(2026, 11, 23), QTime(15, 0));
inline const QColor panelBackground(0x1c, 0x1c, 0x22);
} // namespace PanelScene
