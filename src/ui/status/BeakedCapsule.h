#pragma once

#include <QPainterPath>
#include <QRectF>

// The Live Activity's outline: a capsule body with rounded corners whose top edge rises into a
// small beak pointing at the tray icon; under a tray at the bottom of the screen the outline is
// mirrored, so the beak rises from the bottom edge. The beak alone (`onlyBeak`) lets it be drawn
// apart from the body. The y axis points down.
struct BeakedCapsule {
    double beakX = 0; // x of the beak's tip, from the rectangle's left edge
    double beak = 6;  // height of the beak
    double radius = 22;
    bool showBeak = true;
    bool onlyBeak = false;
    double inset = 0;
    bool pointsDown = false;

    // Half the beak's base.
    double halfBase() const;
    // The tip's x in `rect`, kept clear of the rounded corners.
    double tipX(const QRectF& rect) const;
    QPainterPath path(const QRectF& rect) const;

private:
    QPainterPath upward(const QRectF& rect) const;
    void addBeak(QPainterPath& path, double tip, double top, double rectTop) const;
};
