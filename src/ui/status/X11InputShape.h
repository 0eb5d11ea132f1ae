#pragma once

#include <QRegion>
#include <QWindow>

// Sets the part of an X11 window that takes the pointer. Qt's mask shapes only what is drawn,
// and GNOME Shell and KWin, running X11 windows through XWayland, give such a window every
// click over its whole rectangle, transparent margin included. Does nothing off X11.
void x11SetInputShape(WId window, const QRegion& region);
