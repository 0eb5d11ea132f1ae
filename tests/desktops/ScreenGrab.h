#pragma once

#include <QImage>
#include <QString>

// The whole screen of an X display (":3") as it shows now; null when it cannot be read.
QImage grabScreen(const QString& display);
