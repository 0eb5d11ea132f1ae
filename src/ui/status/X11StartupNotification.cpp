#include "ui/status/X11StartupNotification.h"

#include "ui/status/X11Connection.h"

#include <cstring>

QList<QByteArray> startupRemovePieces(const QString& id) {
    QByteArray quoted = id.toUtf8();
    quoted.replace('\\', "\\\\").replace('"', "\\\"");
    const QByteArray message = "remove: ID=\"" + quoted + "\"" + '\0';
    constexpr int pieceSize = 20;
    QList<QByteArray> pieces;
    for (qsizetype at = 0; at < message.size(); at += pieceSize)
        pieces.append(message.mid(at, pieceSize).leftJustified(pieceSize, '\0'));
    return pieces;
}

void markStartup(const QString& id, QWidget& window) {
    xcb_connection_t* connection = x11Connection();
    if (!connection || id.isEmpty())
        return;
    const QByteArray value = id.toUtf8();
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE,
                        static_cast<xcb_window_t>(window.winId()),
                        x11Atom(connection, "_NET_STARTUP_ID"), x11Atom(connection, "UTF8_STRING"),
                        8, uint32_t(value.size()), value.constData());
    xcb_flush(connection);
}

void completeStartup(const QString& id, const QWidget& sender) {
    const X11Screen x11 = x11Screen();
    if (!x11.connection || id.isEmpty())
        return;
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 8;
    // Receivers put the pieces together by this window.
    event.window = static_cast<xcb_window_t>(sender.winId());
    event.type = x11Atom(x11.connection, "_NET_STARTUP_INFO_BEGIN");
    for (const QByteArray& piece : startupRemovePieces(id)) {
        std::memcpy(event.data.data8, piece.constData(), sizeof(event.data.data8));
        xcb_send_event(x11.connection, 0, x11.screen->root, XCB_EVENT_MASK_PROPERTY_CHANGE,
                       reinterpret_cast<const char*>(&event));
        event.type = x11Atom(x11.connection, "_NET_STARTUP_INFO");
    }
    xcb_flush(x11.connection);
}
