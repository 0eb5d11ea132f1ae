#pragma once

#include "ui/status/TrayEdge.h"

#include <QMargins>
#include <QRectF>
#include <optional>

// Sizes and placement of the Live Activity window. Everything is in screen coordinates with y
// pointing down, as X11 and Qt give them.
namespace LiveActivityGeometry {

constexpr int maximumRows = 5;
constexpr double rowHeight = 62;
constexpr double spaceAbove = 6;
constexpr double contentWidth = 380;
// Room around the content for the capsule's shadow and beak.
constexpr double margin = 46;
constexpr double panelWidth = contentWidth + 2 * margin;
// The least distance between the capsule and the screen's left and right edges.
constexpr double screenGap = 8;
// Where the capsule sits when nothing tells where the tray icon is: below the top of the screen.
constexpr double topGap = 4;

// max(1, rows) rows and the space above the first.
double contentHeight(int rows);
double panelHeight(int rows);

struct Placement {
    QRectF frame;     // the whole window, margin included
    double beakX = 0; // the beak's tip, from the content's left edge (its top edge on a side)
    TrayEdge edge = TrayEdge::top; // a bottom tray has the beak point down
};

// Next to the tray icon `item` (its rectangle on screen) on the side away from the tray's edge:
// under it for a top tray, above it for a bottom one, centred on it as far as the screen's usable
// `area` allows, with the beak pointing at the icon's centre; beside it for a tray on a side.
// Without an item: in the top right corner of the area.
Placement place(const std::optional<QRectF>& item, const QRectF& area, int rows);

// The part of the window `frame`, on the tray's side, that lies over the tray `item` or beyond
// the usable `area`, where the bar is.
QMargins overTray(const QRectF& frame, const QRectF& item, const QRectF& area, TrayEdge edge);

} // namespace LiveActivityGeometry
