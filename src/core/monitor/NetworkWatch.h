#pragma once

#include <QObject>

// Tells when the desktop reports that the network came up, so that a wait for Vercel after a
// failed connection ends at once instead of at its next attempt.
class NetworkWatch : public QObject {
    Q_OBJECT
public:
    // Starts following the desktop's network state; called on the first wait, so an account
    // that connects at once (or the demo) never loads it. Calling it again does nothing.
    virtual void watch() = 0;

Q_SIGNALS:
    void cameOnline();
};
