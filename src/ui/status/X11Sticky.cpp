#include "ui/status/X11Sticky.h"

#include "ui/status/X11Connection.h"

#include <algorithm>

namespace {

// Adds `value` to the atom list `property` unless it is there already.
void addAtom(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property,
             xcb_atom_t value) {
    const auto cookie = xcb_get_property(connection, 0, window, property, XCB_ATOM_ATOM, 0, 64);
    const XcbReply<xcb_get_property_reply_t> reply(
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
    xcb_connection_t* connection = x11Connection();
    if (!connection)
        return;
    const auto window = static_cast<xcb_window_t>(id);
    // Qt keeps the states it finds on an unmapped window and adds its own (above, skip taskbar).
    const xcb_atom_t state = x11Atom(connection, "_NET_WM_STATE");
    const xcb_atom_t sticky = x11Atom(connection, "_NET_WM_STATE_STICKY");
    if (state != XCB_ATOM_NONE && sticky != XCB_ATOM_NONE)
        addAtom(connection, window, state, sticky);
    const xcb_atom_t desktop = x11Atom(connection, "_NET_WM_DESKTOP");
    const uint32_t everyDesktop = 0xFFFFFFFF;
    if (desktop != XCB_ATOM_NONE)
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, desktop, XCB_ATOM_CARDINAL,
                            32, 1, &everyDesktop);
    xcb_flush(connection);
}
