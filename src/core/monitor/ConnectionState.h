#pragma once

#include <QDateTime>
#include <QString>
#include <optional>

// The link to the Vercel account.
struct Connection {
    // `retrying`: the account check failed for a reason that can pass (no network, a server
    // error) and runs again by itself at `retryAt`.
    enum class Kind { connected, failed, noToken, checking, retrying };
    Kind kind = Kind::noToken;
    QString detail;    // account name when connected, why it failed when failed or retrying
    QDateTime retryAt; // only for `retrying`

    static Connection connected(QString account) {
        return {Kind::connected, std::move(account), {}};
    }
    static Connection failed(QString message) { return {Kind::failed, std::move(message), {}}; }
    static Connection noToken() { return {Kind::noToken, {}, {}}; }
    static Connection checking() { return {Kind::checking, {}, {}}; }
    static Connection retrying(QString message, QDateTime at) {
        return {Kind::retrying, std::move(message), std::move(at)};
    }

    bool isConnected() const { return kind == Kind::connected; }
    friend bool operator==(const Connection&, const Connection&) = default;
};

// When Vercel will disable the token.
struct TokenExpiry {
    enum class Kind { at, unknown, never };
    Kind kind = Kind::unknown;
    QDateTime date; // only for `at`

    static TokenExpiry at(QDateTime date) { return {Kind::at, std::move(date)}; }
    static TokenExpiry unknown() { return {Kind::unknown, {}}; }
    static TokenExpiry never() { return {Kind::never, {}}; }
    friend bool operator==(const TokenExpiry&, const TokenExpiry&) = default;
};

// The state of the whole application as one value, for colours and emblems.
enum class Tone { disconnected, idle, success, building, queued, error };

// One account scope a pass polls: the personal account (no team id, the user name as slug) or a
// team.
struct Scope {
    std::optional<QString> teamId;
    QString slug;
    friend bool operator==(const Scope&, const Scope&) = default;
};

// A key per scope for the engine's bookkeeping; team ids and user names never collide with each
// other's prefix.
inline QString scopeKey(const Scope& scope) {
    return scope.teamId ? QStringLiteral("team:") + *scope.teamId
                        : QStringLiteral("user:") + scope.slug;
}
