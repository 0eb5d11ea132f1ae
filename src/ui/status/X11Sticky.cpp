#include "ui/status/X11Sticky.h"

#include <QGuiApplication>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <xcb/xcb.h>

namespace {

xcb_atom_t atom(xcb_connection_t* connection, const char* name) {
    const auto cookie = xcb_intern_atom(connection, 0, uint16_t(strlen(name)), name);
    std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr), &std::free);
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

// Adds `value` to the atom list `property` unless it is there already.
void addAtom(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property,
             xcb_atom_t value) {
    const auto cookie = xcb_get_property(connection, 0, window, property, XCB_ATOM_ATOM, 0, 64);
    std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> reply(
        xcb_get_property_reply(connection, cookie, nullptr), &std::free);
    if (reply && reply->format == 32) {
        const auto* atoms = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get()));
        const int count = xcb_get_property_value_length(reply.get()) / int(sizeof(xcb_atom_t));
        if (std::find(atoms, atoms + count, value) != atoms + count)
            return;
    }
    xcb_change_property(connection, XCB_PROP_MODE_APPEND, window, property, XCB_ATOM_ATOM, 32, 1,
                        &value);
}

} // namespace

void x11MakeSticky(WId id) {
    auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    if (!x11 || !x11->connection())
        return;
    xcb_connection_t* connection = x11->connection();
    const auto window = static_cast<xcb_window_t>(id);
    // Qt keeps the states it finds on an unmapped window and adds its own (above, skip taskbar).
    const xcb_atom_t state = atom(connection, "_NET_WM_STATE");
    const xcb_atom_t sticky = atom(connection, "_NET_WM_STATE_STICKY");
    if (state != XCB_ATOM_NONE && sticky != XCB_ATOM_NONE)
        addAtom(connection, window, state, sticky);
    const xcb_atom_t desktop = atom(connection, "_NET_WM_DESKTOP");
    const uint32_t everyDesktop = 0xFFFFFFFF;
    if (desktop != XCB_ATOM_NONE)
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, desktop, XCB_ATOM_CARDINAL,
                            32, 1, &everyDesktop);
    xcb_flush(connection);
}
