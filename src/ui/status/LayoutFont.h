#pragma once

#include <QFont>

// Sizes in the layouts are in device-independent pixels, like every other length of the views.
// Qt 6 keeps the logical DPI at 96 and scales high-density screens through the device pixel
// ratio, so a pixel size is 3/4 of a point size; QFont::setPixelSize would round 10.5 to 10.
inline void setLayoutPixelSize(QFont& font, double pixels) {
    font.setPointSizeF(pixels * 72.0 / 96.0);
}
