#pragma once

#include <QPoint>
#include <QString>

// Where a click that a StatusNotifierItem host reports landed on screen. The protocol asks for
// screen coordinates, but waybar before 0.9.22 (Debian 12 ships 0.9.17) sends the position inside
// the icon, and a Wayland bar cannot know where the icon is on screen anyway. Such a click is
// taken at the top right of the screen, where waybar's default bar keeps its tray, as deep into
// the bar as it was into the icon.
namespace SniClickPosition {

// Whether `reported`, from the host program named `program`, is a position inside the icon.
bool isInsideIcon(const QString& program, QPoint reported);

// The program name of the process behind a bus name, or an empty string.
QString programOf(const QString& busName);

} // namespace SniClickPosition
