#pragma once

#include "core/common/HttpTransport.h"

#include <QDateTime>
#include <chrono>
#include <functional>
#include <optional>

// What Vercel's rate-limit headers say about one token, shared by every request made with it.
// After a 429 no request goes before Retry-After (or, without it, the window's reset) has passed,
// plus a little jitter so that several programs sharing the token do not all come back in the
// same second. And the pause before the next pass stretches as the requests left in the window
// run low, so that they last until it resets instead of running out.
class RateLimitPacer {
public:
    using Now = std::function<QDateTime()>;
    using Jitter = std::function<std::chrono::milliseconds()>;

    explicit RateLimitPacer(Now now, Jitter jitter = &randomJitter);

    // When requests may go again after Vercel asked to wait; absent when one may go now.
    std::optional<QDateTime> heldUntil() const;
    // Reads every answer's X-RateLimit-Limit, -Remaining and -Reset and, on 429, Retry-After.
    void observe(const HttpReply& reply);
    void countSent() { ++sent_; }
    int sent() const { return sent_; }
    // The least pause before a pass of `requests` requests that keeps the window's requests left
    // enough for the passes until it resets: nothing while plenty remain, the time to the reset
    // when too few do.
    std::chrono::milliseconds pauseFor(int requests) const;
    // The clock may go before the requests still in flight: later answers use the system's.
    void forgetClock();

    // Between a quarter of a second and a second and a half.
    static std::chrono::milliseconds randomJitter();

private:
    Now now_;
    Jitter jitter_;
    std::optional<qint64> remaining_;
    std::optional<QDateTime> resetAt_;
    std::optional<QDateTime> heldUntil_;
    int sent_ = 0;
};

// When a 429 answer says the next request may go: Retry-After (seconds), else X-RateLimit-Reset
// (Unix time in seconds); absent when it says neither.
std::optional<QDateTime> retryTimeOf(const HttpReply& reply, const QDateTime& now);
