#pragma once

#include <QColor>
#include <QStringList>
#include <optional>

// The colour of the bar that holds the tray, where the desktop states it. Plasma paints its
// panels in its Plasma style's colours, or in the colour scheme's where the style has none of its
// own (Breeze): Breeze Twilight pairs a dark panel with light applications, so the application
// colour scheme the portal reports says nothing of the panel. GNOME Shell's top bar is black
// whatever the colour scheme (GNOME Classic's is light: nothing is stated there). Absent on other
// desktops.
namespace DesktopBarColor {

// `desktops` as XDG_CURRENT_DESKTOP lists them; `configDirs` and `dataDirs` the XDG folders in
// order of precedence (the user's first).
std::optional<QColor> of(const QStringList& desktops, const QStringList& configDirs,
                         const QStringList& dataDirs);

// The same for this session.
std::optional<QColor> current();

} // namespace DesktopBarColor
