#pragma once

#include "core/common/Expected.h"
#include "services/GlibAsyncRunner.h"

#include <QDeadlineTimer>
#include <QString>
#include <optional>

// Why a Secret Service call failed: a LibsecretBackend status and the service's own message.
struct SecretFailure {
    int status;
    QString message;
};

// The Secret Service proxy on the session bus of the environment, held for one backend call at a
// time: the service is asked rarely (at start-up, when a token is pasted or removed), and a proxy
// kept between calls would pile up the service's signals in a context that runs only during calls.
class SecretServiceSession {
public:
    SecretServiceSession() = default;
    ~SecretServiceSession();
    SecretServiceSession(const SecretServiceSession&) = delete;
    SecretServiceSession& operator=(const SecretServiceSession&) = delete;

    // Opens the proxy unless it is open; it stays open until release().
    Expected<SecretService*, SecretFailure> service();
    void release();
    // Runs one call against the service, bounded in time.
    GObjectPtr<GAsyncResult> call(const GlibAsyncRunner::Start& start);
    // The same for a call that shows the desktop's password prompt: bounded by how long a
    // person takes to answer it.
    GObjectPtr<GAsyncResult> promptingCall(const GlibAsyncRunner::Start& start);
    // Classifies a failed call (no error: it never answered).
    SecretFailure failure(GError* error);

private:
    std::optional<SecretFailure> open();
    SecretFailure remember(SecretFailure failure);

    GlibAsyncRunner runner_;
    GObjectPtr<GDBusConnection> bus_; // the process's shared session connection
    GObjectPtr<SecretService> service_;
    // After the service failed to answer, calls fail at once for a while rather than each one
    // waiting out its own deadline again.
    std::optional<SecretFailure> unresponsive_;
    QDeadlineTimer quietUntil_;
};
