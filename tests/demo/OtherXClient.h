#pragma once

#include <QByteArray>
#include <QtGlobal>
#include <memory>

struct xcb_connection_t;

// Another program on an X display, as the hot keys meet it: it may own a key chord first, and it
// can read the keyboard's modifier and lock state.
class OtherXClient {
public:
    explicit OtherXClient(const QByteArray& display);
    ~OtherXClient();
    OtherXClient(const OtherXClient&) = delete;
    OtherXClient& operator=(const OtherXClient&) = delete;

    bool isConnected() const;
    // Grabs Control+Alt+Super with the key of `keysym`, alone and with CapsLock and NumLock, as a
    // careful program does. Answers whether every grab held.
    bool grabChord(quint32 keysym);
    // The modifier bits now set, locks included (XCB_MOD_MASK_LOCK, XCB_MOD_MASK_2 for NumLock).
    quint16 modifierState();

private:
    xcb_connection_t* connection_;
    quint32 root_ = 0;
};
