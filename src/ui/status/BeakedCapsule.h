#pragma once

#include "ui/status/TrayEdge.h"

#include <QPainterPath>
#include <QRectF>

// The Live Activity's outline: a capsule body with rounded corners whose edge facing the tray
// rises into a small beak pointing at the tray icon: the top edge under a top tray, the bottom
// edge above a bottom one, the left or right edge beside a tray on a side. The beak alone
// (`onlyBeak`) lets it be drawn apart from the body. The y axis points down.
struct BeakedCapsule {
    // The beak's tip along its edge: from the rectangle's left edge on the top and bottom edges,
    // from its top edge on the sides.
    double beakX = 0;
    double beak = 6; // height of the beak
    double radius = 22;
    bool showBeak = true;
    bool onlyBeak = false;
    double inset = 0;
    TrayEdge edge = TrayEdge::top;

    // Half the beak's base.
    double halfBase() const;
    // The tip's x in `rect` for a beak on the top edge, kept clear of the rounded corners.
    double tipX(const QRectF& rect) const;
    QPainterPath path(const QRectF& rect) const;

private:
    QPainterPath upward(const QRectF& rect) const;
    void addBeak(QPainterPath& path, double tip, double top, double rectTop) const;
};
