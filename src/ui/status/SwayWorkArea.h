#pragma once

#include <QRect>
#include <optional>

// sway keeps room for its bars (their exclusive zones) but tells X clients nothing of it, so
// through XWayland the whole screen looks usable. Its visible workspace on the output `screen`
// knows the usable rectangle; absent outside sway or when sway cannot be asked.
std::optional<QRect> swayUsableArea(const QRect& screen);
