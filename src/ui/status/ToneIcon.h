#pragma once

#include <QColor>
#include <QIcon>
#include <QImage>
#include <QString>

// The tray image: the triangle of the overall tone and, from one deployment on, today's count.
// A tray slot is a small square, so the count cannot follow the triangle as it would in a menu
// bar: with a count the triangle shrinks to the top of the square and the number sits under it,
// both whole, so neither the tone (outline or filled) nor the digits are hidden.
struct ToneIconLook {
    QColor color;        // the tone colour, or the panel's text colour for a neutral tone
    bool filled = false; // failure is the only filled triangle
    QString count;       // empty: the triangle alone, at full size
    QColor countColor;   // the panel's text colour, legible on the panel by construction
};

namespace ToneIcon {

// Nothing below 1, the number up to 99, "99+" from 100 on.
QString countText(int todayCount);

// One square image of `pixels` × `pixels`, drawn natively at that size for crisp edges.
QImage draw(const ToneIconLook& look, int pixels);

// The image at every size a tray commonly asks for.
QIcon icon(const ToneIconLook& look);

} // namespace ToneIcon
