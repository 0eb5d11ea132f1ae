#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

// The symbols of the panel and the Settings window. Buttons and tabs take the freedesktop theme's
// icon when the theme has one; every symbol also has a drawing of its own, so no button is ever
// empty. Status marks are always drawn here, in the palette's colours.
namespace SymbolArt {

// The freedesktop icon name standing for a symbol; empty when the theme offers none.
QString themeName(const QString& symbol);

// The symbol drawn in `color`, `size` × `size` device-independent pixels, turned by `angle`
// degrees (the spinner).
QPixmap drawn(const QString& symbol, const QColor& color, int size, double devicePixelRatio,
              double angle = 0);

// The theme's icon recoloured to `color` (the panel's monochrome buttons), or the drawing.
QPixmap tinted(const QString& symbol, const QColor& color, int size, double devicePixelRatio,
               double angle = 0);

// For buttons and tabs: the theme's icon, or the drawing in `color`.
QIcon icon(const QString& symbol, const QColor& color);

} // namespace SymbolArt
