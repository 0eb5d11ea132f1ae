#include "ui/status/X11TrayColors.h"

#include <QByteArray>
#include <QGuiApplication>
#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

namespace {

template <typename T> using Reply = std::unique_ptr<T, decltype(&std::free)>;

xcb_atom_t atom(xcb_connection_t* connection, const QByteArray& name) {
    const auto cookie = xcb_intern_atom(connection, 1, uint16_t(name.size()), name.constData());
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr),
                                               &std::free);
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

} // namespace

std::optional<QColor> x11TrayForeground() {
    auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    if (!x11 || !x11->connection())
        return std::nullopt;
    xcb_connection_t* connection = x11->connection();
    const xcb_atom_t selection = atom(connection, "_NET_SYSTEM_TRAY_S0");
    const xcb_atom_t colors = atom(connection, "_NET_SYSTEM_TRAY_COLORS");
    if (selection == xcb_atom_t(XCB_ATOM_NONE) || colors == xcb_atom_t(XCB_ATOM_NONE))
        return std::nullopt;
    const Reply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, selection),
                                      nullptr),
        &std::free);
    if (!owner || owner->owner == XCB_WINDOW_NONE)
        return std::nullopt;
    // Twelve cardinals: red, green and blue of the foreground, error, warning and success
    // colours, each 0 to 65535.
    const auto cookie =
        xcb_get_property(connection, 0, owner->owner, colors, XCB_ATOM_CARDINAL, 0, 12);
    const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection, cookie, nullptr),
                                                &std::free);
    if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 12)
        return std::nullopt;
    const auto* rgb = static_cast<const uint32_t*>(xcb_get_property_value(reply.get()));
    return QColor::fromRgba64(quint16(rgb[0]), quint16(rgb[1]), quint16(rgb[2]));
}
