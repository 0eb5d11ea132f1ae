#include "services/SecretServiceSession.h"

#include "core/common/Language.h"
#include "services/LibsecretBackend.h"

namespace {

using namespace std::chrono_literals;

// Generous for a D-Bus activation of the keyring daemon, short enough that a tray waiting on a
// stuck one recovers in seconds.
constexpr std::chrono::milliseconds kOpenTimeout = 5s;
constexpr std::chrono::milliseconds kCallTimeout = 5s;
constexpr std::chrono::milliseconds kPromptTimeout = 60s;
constexpr std::chrono::milliseconds kQuietPeriod = 10s;

QString messageOf(GError* error) {
    if (!error)
        return {};
    g_dbus_error_strip_remote_error(error); // "GDBus.Error:org.….ServiceUnknown: " goes
    return QString::fromUtf8(error->message);
}

QString timeoutMessage() {
    return Language::text("The Secret Service did not answer in time.",
                          "Le Secret Service n'a pas répondu à temps.");
}

int dbusStatus(int code) {
    switch (code) {
    case G_DBUS_ERROR_SERVICE_UNKNOWN:
    case G_DBUS_ERROR_NAME_HAS_NO_OWNER:
    case G_DBUS_ERROR_DISCONNECTED:
    case G_DBUS_ERROR_NO_SERVER:
    case G_DBUS_ERROR_SPAWN_EXEC_FAILED:
    case G_DBUS_ERROR_SPAWN_CHILD_EXITED:
    case G_DBUS_ERROR_SPAWN_SERVICE_NOT_FOUND:
        return LibsecretBackend::noService;
    case G_DBUS_ERROR_NO_REPLY:
    case G_DBUS_ERROR_TIMEOUT:
    case G_DBUS_ERROR_TIMED_OUT:
        return LibsecretBackend::timedOut;
    case G_DBUS_ERROR_ACCESS_DENIED:
    case G_DBUS_ERROR_AUTH_FAILED:
        return LibsecretBackend::refused;
    default:
        return LibsecretBackend::failed;
    }
}

int ioStatus(int code) {
    switch (code) {
    case G_IO_ERROR_CANCELLED: // only the deadline cancels
    case G_IO_ERROR_TIMED_OUT:
        return LibsecretBackend::timedOut;
    case G_IO_ERROR_CLOSED:
    case G_IO_ERROR_NOT_FOUND:
    case G_IO_ERROR_CONNECTION_REFUSED:
    case G_IO_ERROR_BROKEN_PIPE: // also G_IO_ERROR_CONNECTION_CLOSED
        return LibsecretBackend::noService;
    default:
        return LibsecretBackend::failed;
    }
}

int secretStatus(int code) {
    switch (code) {
    case SECRET_ERROR_IS_LOCKED:
        return LibsecretBackend::locked;
    case SECRET_ERROR_NO_SUCH_OBJECT:
        return LibsecretBackend::noCollection;
    default:
        return LibsecretBackend::failed;
    }
}

int statusOf(const GError* error) {
    if (error->domain == G_DBUS_ERROR)
        return dbusStatus(error->code);
    if (error->domain == G_IO_ERROR)
        return ioStatus(error->code);
    if (error->domain == SECRET_ERROR)
        return secretStatus(error->code);
    return LibsecretBackend::failed;
}

// Whatever stops the service from opening means there is none, unless it is a timeout.
SecretFailure openFailure(GError* error) {
    if (!error || statusOf(error) == LibsecretBackend::timedOut)
        return {LibsecretBackend::timedOut, timeoutMessage()};
    return {LibsecretBackend::noService, messageOf(error)};
}

std::chrono::milliseconds remaining(const QDeadlineTimer& deadline) {
    return std::chrono::milliseconds(deadline.remainingTime());
}

} // namespace

SecretServiceSession::~SecretServiceSession() {
    release();
}

Expected<SecretService*, SecretFailure> SecretServiceSession::service() {
    if (service_)
        return service_.get();
    if (unresponsive_ && !quietUntil_.hasExpired())
        return *unresponsive_;
    if (const std::optional<SecretFailure> failure = open()) {
        release();
        return remember(*failure);
    }
    unresponsive_.reset();
    return service_.get();
}

GObjectPtr<GAsyncResult> SecretServiceSession::call(const GlibAsyncRunner::Start& start) {
    return runner_.run(start, kCallTimeout);
}

GObjectPtr<GAsyncResult> SecretServiceSession::promptingCall(const GlibAsyncRunner::Start& start) {
    return runner_.run(start, kPromptTimeout);
}

SecretFailure SecretServiceSession::failure(GError* error) {
    const int status = error ? statusOf(error) : LibsecretBackend::timedOut;
    if (status == LibsecretBackend::timedOut)
        return remember({status, timeoutMessage()});
    return {status, messageOf(error)};
}

std::optional<SecretFailure> SecretServiceSession::open() {
    const QDeadlineTimer deadline(kOpenTimeout);
    const GObjectPtr<GAsyncResult> connected =
        runner_.run([](GCancellable* cancellable, GAsyncReadyCallback done,
                       gpointer data) { g_bus_get(G_BUS_TYPE_SESSION, cancellable, done, data); },
                    remaining(deadline));
    GError* raw = nullptr;
    bus_.reset(connected ? g_bus_get_finish(connected.get(), &raw) : nullptr);
    if (!bus_)
        return openFailure(GErrorPtr(raw).get());
    // GLib's shared session connection ends the process when the bus closes; a tray that lost
    // its bus should rather report the keyring as unreachable.
    g_dbus_connection_set_exit_on_close(bus_.get(), FALSE);

    // libsecret opens its proxy on that same shared connection. Opening may start the service by
    // D-Bus activation; the deadline bounds that too.
    const GObjectPtr<GAsyncResult> opened = runner_.run(
        [](GCancellable* cancellable, GAsyncReadyCallback done, gpointer data) {
            secret_service_open(SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION,
                                cancellable, done, data);
        },
        remaining(deadline));
    service_.reset(opened ? secret_service_open_finish(opened.get(), &raw) : nullptr);
    if (!service_)
        return openFailure(GErrorPtr(raw).get());
    return std::nullopt;
}

SecretFailure SecretServiceSession::remember(SecretFailure failure) {
    if (failure.status == LibsecretBackend::timedOut) {
        release();
        unresponsive_ = failure;
        quietUntil_.setRemainingTime(kQuietPeriod);
    }
    return failure;
}

void SecretServiceSession::release() {
    GlibAsyncRunner::Scope scope(runner_); // the proxy unsubscribes in the context it used
    service_.reset();
    bus_.reset();
}
