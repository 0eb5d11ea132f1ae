#include "ui/status/X11WindowPosition.h"

#include <QGuiApplication>
#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

std::optional<QPoint> x11ScreenPosition(WId window) {
    auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    if (!x11 || !x11->connection())
        return std::nullopt;
    xcb_connection_t* connection = x11->connection();
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    if (!screen)
        return std::nullopt;
    const auto cookie = xcb_translate_coordinates(connection, static_cast<xcb_window_t>(window),
                                                  screen->root, 0, 0);
    std::unique_ptr<xcb_translate_coordinates_reply_t, decltype(&std::free)> reply(
        xcb_translate_coordinates_reply(connection, cookie, nullptr), &std::free);
    if (!reply)
        return std::nullopt;
    return QPoint(reply->dst_x, reply->dst_y);
}
