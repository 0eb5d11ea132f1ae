#include "demo/DemoHotKeys.h"

#include <QPointer>
#include <QSocketNotifier>
#include <X11/keysym.h>
#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>

#include <cstdlib>

namespace {

template <typename T> using XcbReply = std::unique_ptr<T, decltype(&std::free)>;

template <typename T> XcbReply<T> owned(T* reply) {
    return XcbReply<T>(reply, &std::free);
}

using KeySymbols = std::unique_ptr<xcb_key_symbols_t, decltype(&xcb_key_symbols_free)>;

// Every keycode that produces `keysym` in the current keyboard map.
QList<xcb_keycode_t> keycodesOf(xcb_key_symbols_t* symbols, xcb_keysym_t keysym) {
    QList<xcb_keycode_t> keycodes;
    const auto found = owned(xcb_key_symbols_get_keycode(symbols, keysym));
    for (const xcb_keycode_t* code = found.get(); code && *code != XCB_NO_SYMBOL; ++code)
        keycodes.append(*code);
    return keycodes;
}

// The modifier bits the grabs use. Alt, Super and NumLock sit on whichever of Mod1…Mod5 the
// keyboard map puts them; the usual bits stand in when the map has no such key.
struct ModifierBits {
    quint16 alt = XCB_MOD_MASK_1;
    quint16 super = XCB_MOD_MASK_4;
    quint16 numLock = XCB_MOD_MASK_2;
};

// The bit of the modifier whose keys include one producing `keysym`, or `fallback`.
quint16 bitOf(xcb_key_symbols_t* symbols, const xcb_get_modifier_mapping_reply_t& map,
              xcb_keysym_t keysym, quint16 fallback) {
    const QList<xcb_keycode_t> wanted = keycodesOf(symbols, keysym);
    const xcb_keycode_t* keycodes = xcb_get_modifier_mapping_keycodes(&map);
    const int perModifier = map.keycodes_per_modifier;
    for (int modifier = 0; modifier < 8; ++modifier) {
        for (int i = 0; i < perModifier; ++i) {
            const xcb_keycode_t code = keycodes[modifier * perModifier + i];
            if (code != XCB_NO_SYMBOL && wanted.contains(code))
                return quint16(1u << modifier);
        }
    }
    return fallback;
}

ModifierBits modifierBits(xcb_connection_t* connection, xcb_key_symbols_t* symbols) {
    ModifierBits bits;
    const auto map = owned(
        xcb_get_modifier_mapping_reply(connection, xcb_get_modifier_mapping(connection), nullptr));
    if (!map)
        return bits;
    bits.alt = bitOf(symbols, *map, XK_Alt_L, bits.alt);
    bits.super = bitOf(symbols, *map, XK_Super_L, bits.super);
    bits.numLock = bitOf(symbols, *map, XK_Num_Lock, bits.numLock);
    return bits;
}

// Grabs the keys with Control+Alt+Super, alone and with each lock. Answers the keycodes for which
// any of those grabs held: the server refuses one that another client owns (BadAccess).
QList<xcb_keycode_t> grabChord(xcb_connection_t* connection, xcb_window_t root,
                               const QList<xcb_keycode_t>& keycodes, const ModifierBits& bits) {
    const quint16 chord = XCB_MOD_MASK_CONTROL | bits.alt | bits.super;
    const quint16 locks[] = {0, XCB_MOD_MASK_LOCK, bits.numLock,
                             quint16(XCB_MOD_MASK_LOCK | bits.numLock)};
    QList<xcb_keycode_t> held;
    for (const xcb_keycode_t keycode : keycodes) {
        for (const quint16 lock : locks) {
            const xcb_void_cookie_t cookie =
                xcb_grab_key_checked(connection, 0, root, chord | lock, keycode,
                                     XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
            if (owned(xcb_request_check(connection, cookie)))
                continue;
            if (!held.contains(keycode))
                held.append(keycode);
        }
    }
    return held;
}

} // namespace

void DemoHotKeys::Disconnect::operator()(xcb_connection_t* connection) const {
    xcb_disconnect(connection); // the server releases every grab of the connection
}

DemoHotKeys::DemoHotKeys(Handler handler, QObject* parent)
    : QObject(parent), handler_(std::move(handler)) {}

DemoHotKeys::~DemoHotKeys() = default;

const QList<int>& DemoHotKeys::digits() {
    static const QList<int> list{1, 2, 3, 4, 5, 0};
    return list;
}

QList<int> DemoHotKeys::registerKeys() {
    if (connection_ || !connectToDisplay())
        return registered_;
    grabDigits();
    const int fd = xcb_get_file_descriptor(connection_.get());
    notifier_ = new QSocketNotifier(fd, QSocketNotifier::Read, this);
    connect(notifier_, &QSocketNotifier::activated, this, &DemoHotKeys::readEvents);
    // Checking the grabs read from the socket; whatever arrived meanwhile waits in xcb's queue.
    readEvents();
    return registered_;
}

bool DemoHotKeys::connectToDisplay() {
    int screenNumber = 0;
    xcb_connection_t* connection = xcb_connect(nullptr, &screenNumber);
    if (xcb_connection_has_error(connection)) {
        xcb_disconnect(connection);
        return false; // no X11 display: the demo simply has no keys
    }
    connection_.reset(connection);
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int i = 0; i < screenNumber && screens.rem > 1; ++i)
        xcb_screen_next(&screens);
    root_ = screens.data->root;
    return true;
}

void DemoHotKeys::grabDigits() {
    xcb_connection_t* connection = connection_.get();
    const KeySymbols symbols(xcb_key_symbols_alloc(connection), &xcb_key_symbols_free);
    const ModifierBits bits = modifierBits(connection, symbols.get());
    for (const int digit : digits()) {
        const QList<xcb_keycode_t> held =
            grabChord(connection, root_, keycodesOf(symbols.get(), XK_0 + digit), bits);
        for (const xcb_keycode_t keycode : held)
            digitOfKeycode_.insert(keycode, digit);
        if (!held.isEmpty())
            registered_.append(digit);
    }
}

void DemoHotKeys::readEvents() {
    xcb_connection_t* connection = connection_.get();
    QList<int> pressed;
    while (const auto event = owned(xcb_poll_for_event(connection))) {
        if ((event->response_type & 0x7f) != XCB_KEY_PRESS)
            continue;
        const auto* press = reinterpret_cast<const xcb_key_press_event_t*>(event.get());
        if (const auto found = digitOfKeycode_.constFind(press->detail);
            found != digitOfKeycode_.constEnd())
            pressed.append(*found);
    }
    if (xcb_connection_has_error(connection))
        notifier_->setEnabled(false); // the display went away; the keys went with it
    // The handler may end this object, so it runs once the queue is drained.
    const QPointer<DemoHotKeys> self(this);
    for (const int digit : pressed) {
        if (!self)
            return;
        if (handler_)
            handler_(digit);
    }
}
