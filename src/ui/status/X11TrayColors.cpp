#include "ui/status/X11TrayColors.h"

#include "ui/status/X11Connection.h"

namespace {

// One pixel of the root window, as the screen shows it.
std::optional<QRgb> rootPixel(xcb_connection_t* connection, xcb_window_t root, int x, int y) {
    const auto cookie = xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, root, int16_t(x),
                                      int16_t(y), 1, 1, ~0u);
    const XcbReply<xcb_get_image_reply_t> reply(xcb_get_image_reply(connection, cookie, nullptr),
                                                &std::free);
    if (!reply || reply->depth != 24 || xcb_get_image_data_length(reply.get()) < 4)
        return std::nullopt;
    const uint8_t* bgrx = xcb_get_image_data(reply.get());
    return qRgb(bgrx[2], bgrx[1], bgrx[0]);
}

} // namespace

std::optional<QColor> x11ColorBeside(const QRect& rect, bool alongRow) {
    const auto [connection, screen] = x11Screen();
    if (!screen)
        return std::nullopt;
    int red = 0, green = 0, blue = 0, count = 0;
    const QPoint centre = rect.center();
    const QPoint before =
        alongRow ? QPoint(rect.left() - 2, centre.y()) : QPoint(centre.x(), rect.top() - 2);
    const QPoint after =
        alongRow ? QPoint(rect.right() + 2, centre.y()) : QPoint(centre.x(), rect.bottom() + 2);
    for (const QPoint& point : {before, after}) {
        const int x = point.x(), y = point.y();
        if (x < 0 || x >= screen->width_in_pixels || y < 0 || y >= screen->height_in_pixels)
            continue;
        if (const std::optional<QRgb> pixel = rootPixel(connection, screen->root, x, y)) {
            red += qRed(*pixel);
            green += qGreen(*pixel);
            blue += qBlue(*pixel);
            ++count;
        }
    }
    if (count == 0)
        return std::nullopt;
    return QColor(red / count, green / count, blue / count);
}

std::optional<QColor> x11TrayForeground() {
    xcb_connection_t* connection = x11Connection();
    if (!connection)
        return std::nullopt;
    const xcb_atom_t selection = x11Atom(connection, "_NET_SYSTEM_TRAY_S0", false);
    const xcb_atom_t colors = x11Atom(connection, "_NET_SYSTEM_TRAY_COLORS", false);
    if (selection == xcb_atom_t(XCB_ATOM_NONE) || colors == xcb_atom_t(XCB_ATOM_NONE))
        return std::nullopt;
    const XcbReply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, selection),
                                      nullptr),
        &std::free);
    if (!owner || owner->owner == XCB_WINDOW_NONE)
        return std::nullopt;
    // Twelve cardinals: red, green and blue of the foreground, error, warning and success
    // colours, each 0 to 65535.
    const auto cookie =
        xcb_get_property(connection, 0, owner->owner, colors, XCB_ATOM_CARDINAL, 0, 12);
    const XcbReply<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(connection, cookie, nullptr), &std::free);
    if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 12)
        return std::nullopt;
    const auto* rgb = static_cast<const uint32_t*>(xcb_get_property_value(reply.get()));
    return QColor::fromRgba64(quint16(rgb[0]), quint16(rgb[1]), quint16(rgb[2]));
}
