#include "core/vercel/RateLimitPacer.h"

#include <QRandomGenerator>

using namespace std::chrono_literals;

namespace {

// Without a word from Vercel on how long to wait, a minute: its windows are a minute long.
constexpr auto defaultHold = 60s;
// Reset values below this are a count of seconds from now rather than a Unix time.
constexpr qint64 smallestUnixTime = 1'000'000'000;

std::optional<qint64> number(const HttpReply& reply, QByteArrayView name) {
    const std::optional<QByteArray> value = reply.header(name);
    if (!value)
        return std::nullopt;
    bool ok = false;
    const qint64 parsed = value->trimmed().toLongLong(&ok);
    return ok && parsed >= 0 ? std::optional(parsed) : std::nullopt;
}

std::optional<QDateTime> resetTime(const HttpReply& reply, const QDateTime& now) {
    const std::optional<qint64> reset = number(reply, "X-RateLimit-Reset");
    if (!reset)
        return std::nullopt;
    if (*reset < smallestUnixTime)
        return now.addSecs(*reset);
    return QDateTime::fromSecsSinceEpoch(*reset);
}

std::chrono::milliseconds until(const QDateTime& from, const QDateTime& to) {
    return std::chrono::milliseconds(std::max<qint64>(0, from.msecsTo(to)));
}

} // namespace

std::optional<QDateTime> retryTimeOf(const HttpReply& reply, const QDateTime& now) {
    if (const std::optional<qint64> seconds = number(reply, "Retry-After"))
        return now.addSecs(*seconds);
    return resetTime(reply, now);
}

RateLimitPacer::RateLimitPacer(Now now, Jitter jitter)
    : now_(std::move(now)), jitter_(std::move(jitter)) {}

std::chrono::milliseconds RateLimitPacer::randomJitter() {
    return std::chrono::milliseconds(QRandomGenerator::global()->bounded(250, 1500));
}

void RateLimitPacer::forgetClock() {
    now_ = [] { return QDateTime::currentDateTime(); };
}

std::optional<QDateTime> RateLimitPacer::heldUntil() const {
    if (heldUntil_ && now_() < *heldUntil_)
        return heldUntil_;
    return std::nullopt;
}

void RateLimitPacer::observe(const HttpReply& reply) {
    if (!reply.status)
        return;
    const QDateTime now = now_();
    if (const std::optional<qint64> remaining = number(reply, "X-RateLimit-Remaining"))
        remaining_ = remaining;
    if (const std::optional<QDateTime> reset = resetTime(reply, now))
        resetAt_ = reset;
    if (*reply.status != 429)
        return;
    remaining_ = 0;
    const QDateTime retry = retryTimeOf(reply, now).value_or(now.addSecs(defaultHold.count()));
    heldUntil_ = std::max(retry, now).addMSecs(jitter_().count());
}

std::chrono::milliseconds RateLimitPacer::pauseFor(int requests) const {
    const QDateTime now = now_();
    if (const std::optional<QDateTime> held = heldUntil())
        return until(now, *held);
    if (!remaining_ || !resetAt_ || *resetAt_ <= now || requests <= 0)
        return 0ms;
    const std::chrono::milliseconds window = until(now, *resetAt_);
    if (*remaining_ < requests)
        return window + jitter_();
    // The passes the requests left allow, spread over the time left.
    return window * requests / *remaining_;
}
