#include "desktops/ScreenGrab.h"

#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

QImage grabScreen(const QString& name) {
    const QByteArray display = name.toLatin1();
    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> x(
        xcb_connect(display.constData(), nullptr), &xcb_disconnect);
    if (xcb_connection_has_error(x.get()))
        return {};
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(x.get())).data;
    const auto cookie = xcb_get_image(x.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, screen->root, 0, 0,
                                      screen->width_in_pixels, screen->height_in_pixels, ~0u);
    std::unique_ptr<xcb_get_image_reply_t, decltype(&std::free)> reply(
        xcb_get_image_reply(x.get(), cookie, nullptr), &std::free);
    if (!reply || reply->depth != 24)
        return {};
    // 24-bit depth comes as 32 bits per pixel, blue first: Qt's RGB32 on a little-endian host.
    return QImage(xcb_get_image_data(reply.get()), screen->width_in_pixels,
                  screen->height_in_pixels, QImage::Format_RGB32)
        .copy();
}
