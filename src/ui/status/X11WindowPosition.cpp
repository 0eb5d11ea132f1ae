#include "ui/status/X11WindowPosition.h"

#include "ui/status/X11Connection.h"

std::optional<QPoint> x11ScreenPosition(WId window) {
    const auto [connection, screen] = x11Screen();
    if (!screen)
        return std::nullopt;
    const auto cookie = xcb_translate_coordinates(connection, static_cast<xcb_window_t>(window),
                                                  screen->root, 0, 0);
    const XcbReply<xcb_translate_coordinates_reply_t> reply(
        xcb_translate_coordinates_reply(connection, cookie, nullptr), &std::free);
    if (!reply)
        return std::nullopt;
    return QPoint(reply->dst_x, reply->dst_y);
}
