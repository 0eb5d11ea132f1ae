#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QWidget>

// A host that hands over the keyboard with a click (ProvideXdgActivationToken) starts a launch
// under the token's id, and GNOME Shell shows the busy pointer until the launched program says it
// is done, or for 15 seconds. Quillon says so as soon as its window is up, as GTK does: a
// "remove" message of the X startup notification protocol.

// The message for `id`, in the 20-byte pieces of X client messages, the last ending in a NUL.
QList<QByteArray> startupRemovePieces(const QString& id);

// Names the launch `id` on `window` (_NET_STARTUP_ID) before it is shown: the window manager then
// gives it the keyboard as it would to a window the user just launched. Does nothing without an
// X11 connection or an id.
void markStartup(const QString& id, QWidget& window);

// Sends it to the root window on behalf of `sender`, one of Quillon's windows. Does nothing
// without an X11 connection or an id.
void completeStartup(const QString& id, const QWidget& sender);
