#pragma once

#include "services/GlibHandles.h"

#include <chrono>
#include <functional>

// Runs GLib asynchronous operations to completion on a private main context. The caller's event
// loop is not re-entered, and an operation that outlives its deadline is cancelled, so a Secret
// Service that hangs (a stuck D-Bus activation, an unanswered prompt) cannot freeze the tray.
class GlibAsyncRunner {
public:
    // Starts the operation with the cancellable, callback and user data it must be given.
    using Start = std::function<void(GCancellable*, GAsyncReadyCallback, gpointer)>;

    GlibAsyncRunner();
    ~GlibAsyncRunner();
    GlibAsyncRunner(const GlibAsyncRunner&) = delete;
    GlibAsyncRunner& operator=(const GlibAsyncRunner&) = delete;

    // Answers the operation's result for its finish function; an operation still running at the
    // deadline is cancelled (its result then reports G_IO_ERROR_CANCELLED), and one that does
    // not even complete then answers null.
    GObjectPtr<GAsyncResult> run(const Start& start, std::chrono::milliseconds timeout);

    // Makes the private context the thread's default while it lives, so objects created under it
    // (D-Bus proxies and their signal subscriptions) deliver to the private context.
    class Scope {
    public:
        explicit Scope(GlibAsyncRunner& runner);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        GMainContext* context_;
    };

private:
    void iterateUntil(const bool& done, std::chrono::milliseconds timeout);

    GMainContext* context_;
};
