#pragma once

#include "ui/status/BeakedCapsule.h"

#include <QImage>
#include <QSizeF>

// A stack of faint copies of a capsule spread sideways, softened: the capsule seems to have
// just swept in. Drawn behind the Live Activity's body as its shadow.
struct MotionBlurMask {
    static constexpr int defaultSteps = 29;
    static constexpr double copyOpacity = 0.13;
    static constexpr double spread = 42;     // the outermost copies' shift either way
    static constexpr double copyWidth = 330; // each copy's frame, centred
    static constexpr double blurRadius = 1.5;

    BeakedCapsule shape;
    double height = 0;
    int steps = defaultSteps;

    // Horizontal shift of copy `index`, from −spread to +spread.
    double offset(int index) const;
    // The blurred stack over a frame of `size`, drawn at `devicePixelRatio`; the image is grown
    // by `margin(devicePixelRatio)` on every side so the blur is not cut off.
    QImage render(const QSizeF& size, double devicePixelRatio) const;
    static double margin(double devicePixelRatio);
};
