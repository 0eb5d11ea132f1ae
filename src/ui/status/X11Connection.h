#pragma once

#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

// The X11 connection of Qt's xcb platform; null on other platforms.
xcb_connection_t* x11Connection();

// The atom of `name`; XCB_ATOM_NONE when the server has none yet and `create` is off.
xcb_atom_t x11Atom(xcb_connection_t* connection, const char* name, bool create = true);

// A reply of xcb, which the caller frees.
template <typename T> using XcbReply = std::unique_ptr<T, decltype(&std::free)>;
