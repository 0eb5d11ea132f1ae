#pragma once

#include <QImage>

// Gaussian-like softening for glows and bleeding letters: three box passes each way, which is
// close enough to a true Gaussian for shapes this small and needs no graphics scene.
namespace SoftBlur {

// A copy of `image` (any format) grown by `radius` on every side and blurred by it, in
// premultiplied ARGB so that colour does not bleed out of transparent pixels.
QImage blurred(const QImage& image, double radius);

} // namespace SoftBlur
