#include "services/GlibAsyncRunner.h"

#include <QDeadlineTimer>
#include <memory>

namespace {

// Shared between the runner and the callback, so a callback that fires after the runner gave up
// still finds live state.
struct Pending {
    bool done = false;
    GObjectPtr<GAsyncResult> result;
};

void onReady(GObject*, GAsyncResult* result, gpointer data) {
    std::unique_ptr<std::shared_ptr<Pending>> pending(static_cast<std::shared_ptr<Pending>*>(data));
    (*pending)->result.reset(G_ASYNC_RESULT(g_object_ref(result)));
    (*pending)->done = true;
}

gboolean wakeUp(gpointer) {
    return G_SOURCE_REMOVE;
}

// Once cancelled, GIO operations complete at their next dispatch; this only bounds a broken one.
constexpr std::chrono::milliseconds kCancelGrace{500};

} // namespace

GlibAsyncRunner::GlibAsyncRunner() : context_(g_main_context_new()) {}

GlibAsyncRunner::~GlibAsyncRunner() {
    // Lets late completions free their state before the context goes.
    {
        Scope scope(*this);
        while (g_main_context_iteration(context_, FALSE)) {
        }
    }
    g_main_context_unref(context_);
}

GObjectPtr<GAsyncResult> GlibAsyncRunner::run(const Start& start,
                                              std::chrono::milliseconds timeout) {
    Scope scope(*this);
    auto pending = std::make_shared<Pending>();
    GObjectPtr<GCancellable> cancellable(g_cancellable_new());
    start(cancellable.get(), onReady, new std::shared_ptr<Pending>(pending));
    iterateUntil(pending->done, timeout);
    if (!pending->done) {
        g_cancellable_cancel(cancellable.get());
        iterateUntil(pending->done, kCancelGrace);
    }
    return std::move(pending->result);
}

void GlibAsyncRunner::iterateUntil(const bool& done, std::chrono::milliseconds timeout) {
    const QDeadlineTimer deadline(timeout);
    while (!done && !deadline.hasExpired()) {
        // A timer source wakes the blocking iteration when the deadline passes.
        GSource* timer = g_timeout_source_new(static_cast<guint>(deadline.remainingTime()));
        g_source_set_callback(timer, wakeUp, nullptr, nullptr);
        g_source_attach(timer, context_);
        g_main_context_iteration(context_, TRUE);
        g_source_destroy(timer);
        g_source_unref(timer);
    }
}

GlibAsyncRunner::Scope::Scope(GlibAsyncRunner& runner) : context_(runner.context_) {
    g_main_context_push_thread_default(context_);
}

GlibAsyncRunner::Scope::~Scope() {
    g_main_context_pop_thread_default(context_);
}
