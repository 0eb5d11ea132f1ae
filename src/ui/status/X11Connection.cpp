#include "ui/status/X11Connection.h"

#include <QGuiApplication>
#include <cstring>

xcb_connection_t* x11Connection() {
    auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    return x11 ? x11->connection() : nullptr;
}

X11Screen x11Screen() {
    xcb_connection_t* connection = x11Connection();
    if (!connection)
        return {};
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    return screen ? X11Screen{connection, screen} : X11Screen{};
}

xcb_atom_t x11Atom(xcb_connection_t* connection, const char* name, bool create) {
    const auto cookie =
        xcb_intern_atom(connection, create ? 0 : 1, uint16_t(std::strlen(name)), name);
    const XcbReply<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr), &std::free);
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}
