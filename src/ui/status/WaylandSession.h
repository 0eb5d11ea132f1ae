#pragma once

// Whether a Wayland compositor runs the desktop session; Quillon then shows through XWayland.
bool inWaylandSession();
