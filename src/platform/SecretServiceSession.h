#pragma once

#include "core/common/Expected.h"
#include "platform/GlibAsyncRunner.h"

#include <QDeadlineTimer>
#include <QString>
#include <optional>

// Why a Secret Service call failed: a LibsecretBackend status and the service's own message.
struct SecretFailure {
    int status;
    QString message;
};

// The Secret Service proxy on the session bus of the environment, opened on first use and opened
// again after the service went away.
class SecretServiceSession {
public:
    SecretServiceSession() = default;
    ~SecretServiceSession();
    SecretServiceSession(const SecretServiceSession&) = delete;
    SecretServiceSession& operator=(const SecretServiceSession&) = delete;

    Expected<SecretService*, SecretFailure> service();
    // Runs one call against the service, bounded in time.
    GObjectPtr<GAsyncResult> call(const GlibAsyncRunner::Start& start);
    // Classifies a failed call (no error: it never answered); a service that vanished or hung
    // is dropped.
    SecretFailure failure(GError* error);

private:
    std::optional<SecretFailure> open();
    SecretFailure remember(SecretFailure failure);
    void drop();

    GlibAsyncRunner runner_;
    GObjectPtr<GDBusConnection> bus_; // the process's shared session connection
    GObjectPtr<SecretService> service_;
    // After the service failed to answer, calls fail at once for a while rather than each one
    // waiting out its own deadline again.
    std::optional<SecretFailure> unresponsive_;
    QDeadlineTimer quietUntil_;
};
