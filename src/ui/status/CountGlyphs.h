#pragma once

#include <QPainterPath>
#include <QString>

// The tray count's characters (digits and "+") as outlines kept in the program, so that drawing
// the count loads no font, text shaper or font configuration: an idle tray would map 1.5 MB of
// them for two digits. Taken once from DejaVu Sans Bold, the face Qt picks for the count's bold
// sans-serif.
namespace CountGlyphs {

// `text` laid out on one line at `pixelSize`, its origin on the baseline at the left edge.
// Characters it does not hold are skipped.
QPainterPath path(const QString& text, qreal pixelSize);
// The line's width under the same layout.
qreal width(const QString& text, qreal pixelSize);
// Above and below the baseline, per pixel of size.
constexpr qreal ascent = 0.928;
constexpr qreal descent = 0.236;

} // namespace CountGlyphs
