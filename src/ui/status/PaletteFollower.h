#pragma once

#include "ui/status/StatusPalette.h"

#include <QPointer>
#include <QWidget>

// Makes `view` redraw on every change of `next`, and no longer on those of the palette it
// followed before (held in `current`).
inline void followPalette(QWidget& view, QPointer<StatusPalette>& current, StatusPalette* next) {
    if (current)
        QObject::disconnect(current, nullptr, &view, nullptr);
    current = next;
    if (current)
        QObject::connect(current, &StatusPalette::changed, &view, qOverload<>(&QWidget::update));
    view.update();
}
