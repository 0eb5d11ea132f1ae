#pragma once

#include <QRectF>
#include <optional>

// The screen edge that holds the tray, seen from an icon (or a click on it) and the usable area
// of its screen. Screen coordinates, y pointing down.
enum class TrayEdge { top, bottom, left, right };

// A panel that reserves its room leaves the icon outside the usable area, on the panel's side.
// One that reserves nothing (trayer without a strut, a Wayland bar seen through XWayland) puts
// it near an edge: the nearer of top and bottom, unless a side is much nearer still, since a
// corner icon of a top bar is often nearer the right edge than the top by a few pixels.
TrayEdge trayEdge(const QRectF& icon, const QRectF& area);

// Whether the tray runs along the top or bottom of the screen (the usual case).
inline bool isHorizontal(TrayEdge edge) {
    return edge == TrayEdge::top || edge == TrayEdge::bottom;
}

// The part of the tray bar a click on an icon stands for. Where the bar reserves its room the
// click already lies outside the usable area. Where it reserves nothing (no window manager to
// publish a work area; a Wayland bar seen through XWayland), the click lies near the middle of
// the bar, so the bar reaches about twice as far from the screen's edge.
QRectF barAroundClick(const QPointF& click, const QRectF& area);

// Where a click `depth` into a bar along the top (or, given `TrayEdge::bottom`, the bottom) of
// `area`, near its right end, lands: the place most trays sit. The point keeps twice that depth
// from the right edge so that it still reads as a click on a top or bottom bar.
QPointF rightEndClick(const QRectF& area, double depth, TrayEdge edge);

// The edge of the screen `whole` where the usable `area` leaves room for a bar: the top, else
// the bottom, else a side. Absent when nothing is reserved.
std::optional<TrayEdge> reservedEdge(const QRectF& whole, const QRectF& area);

// Where a click on the tray is taken to be before the tray tells anything: at the tray's end of
// the bar the usable area leaves room for (the right end of a top or bottom bar, the lower end of
// a side bar) or, where nothing is reserved (a Wayland bar seen
// through XWayland), in a bar of the usual thickness along the top.
QPointF cornerClick(const QRectF& whole, const QRectF& area);
