#include "demo/OtherXClient.h"

#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>

#include <cstdlib>

// Xvfb's keyboard map puts Alt on Mod1, NumLock on Mod2 and Super on Mod4.
OtherXClient::OtherXClient(const QByteArray& display)
    : connection_(xcb_connect(display.constData(), nullptr)) {
    if (isConnected())
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
}

OtherXClient::~OtherXClient() {
    xcb_disconnect(connection_);
}

bool OtherXClient::isConnected() const {
    return xcb_connection_has_error(connection_) == 0;
}

bool OtherXClient::grabChord(quint32 keysym) {
    xcb_key_symbols_t* symbols = xcb_key_symbols_alloc(connection_);
    xcb_keycode_t* keycodes = xcb_key_symbols_get_keycode(symbols, keysym);
    const quint16 chord = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4;
    bool held = keycodes && keycodes[0] != XCB_NO_SYMBOL;
    const quint16 locks[] = {0, XCB_MOD_MASK_LOCK, XCB_MOD_MASK_2,
                             XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2};
    for (const quint16 lock : locks) {
        if (!held)
            break;
        const xcb_void_cookie_t cookie =
            xcb_grab_key_checked(connection_, 0, root_, chord | lock, keycodes[0],
                                 XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        if (xcb_generic_error_t* error = xcb_request_check(connection_, cookie)) {
            std::free(error);
            held = false;
        }
    }
    std::free(keycodes);
    xcb_key_symbols_free(symbols);
    return held;
}

quint16 OtherXClient::modifierState() {
    xcb_query_pointer_reply_t* reply =
        xcb_query_pointer_reply(connection_, xcb_query_pointer(connection_, root_), nullptr);
    const quint16 mask = reply ? reply->mask : 0;
    std::free(reply);
    return mask;
}
