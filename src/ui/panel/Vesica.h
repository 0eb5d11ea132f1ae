#pragma once

#include <QPainterPath>
#include <QRectF>

// A pointed oval: two circular arcs that meet at the top and bottom centre of the rectangle and
// touch its left and right edges at mid-height.
namespace Vesica {

QPainterPath path(const QRectF& rect);

} // namespace Vesica
