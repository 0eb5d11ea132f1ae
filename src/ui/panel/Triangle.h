#pragma once

#include <QPainterPath>
#include <QPointF>
#include <QRectF>
#include <array>

// A triangle with rounded corners whose apex and left corner can be pulled towards the lower
// left: pull 0 is upright and isosceles, pull 1 leans. Both fields animate, so the path is
// rebuilt from interpolated values on each frame.
struct Triangle {
    double cornerRadius = 0;
    double pull = 0; // 0…1

    // Apex A, right corner B, left corner C, before any rounding.
    std::array<QPointF, 3> corners(const QRectF& rect) const;
    // Never more than a quarter of the width, so two corners can never overlap.
    double effectiveRadius(const QRectF& rect) const;
    QPainterPath path(const QRectF& rect) const;
};
