#pragma once

#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

// The X11 connection of Qt's xcb platform; null on other platforms.
xcb_connection_t* x11Connection();

// Qt's X11 connection and the screen its windows are on; both null on other platforms.
struct X11Screen {
    xcb_connection_t* connection = nullptr;
    const xcb_screen_t* screen = nullptr;
};
X11Screen x11Screen();

// The atom of `name`; XCB_ATOM_NONE when the server has none yet and `create` is off.
xcb_atom_t x11Atom(xcb_connection_t* connection, const char* name, bool create = true);

// A reply of xcb, which the caller frees.
template <typename T> using XcbReply = std::unique_ptr<T, decltype(&std::free)>;
