#pragma once

#include <QWindow>

// Asks the window manager to show a not yet mapped X11 window on every workspace. Qt has no
// flag for it, and a window manager drops the request whenever the window is withdrawn, so it
// is made again before each show. Does nothing on other platforms.
void x11MakeSticky(WId window);
