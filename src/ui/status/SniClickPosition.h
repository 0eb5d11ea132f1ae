#pragma once

#include <QPoint>
#include <QRect>
#include <QString>

// Where a click that a StatusNotifierItem host reports landed on screen. The protocol asks for
// screen coordinates, but waybar before 0.9.22 (Debian 12 ships 0.9.17) sends the position inside
// the icon, and a Wayland bar cannot know where the icon is on screen anyway. Such a click is
// taken at the top right of the screen, where waybar's default bar keeps its tray, as deep into
// the bar as it was into the icon.
namespace SniClickPosition {

// xapp-sn-watcher (Cinnamon's tray, XApp applets elsewhere) reports the corner of the icon that
// faces away from the panel, at the icon's left (on a side panel, top) end, for a menu to hang
// from: not the click.
bool reportsCorner(const QString& program);

// The icon's centre for such a corner, on the panel the usable `area` leaves room for in the
// screen `whole`. The icon's cell is taken to be as wide as the panel is thick.
QPoint centreOfCorner(QPoint corner, const QRect& whole, const QRect& area);

// Whether `reported`, from the host program named `program`, is a position inside the icon.
bool isInsideIcon(const QString& program, QPoint reported);

// The program name of the process behind a bus name, or an empty string. Asked of the bus
// once per name: a unique name is never given to another connection.
QString programOf(const QString& busName);

// GNOME Shell's AppIndicator extension (46, in Debian 12) turns a single click into Activate
// only while the item's menu is empty, so that the press opens no menu, and only until one
// Activate has been answered without an error; after that it waits for a double click. It also
// draws the item's label (XAyatanaLabel) beside the icon in the bar's own text.
bool isGnomeShell(const QString& program);

} // namespace SniClickPosition
