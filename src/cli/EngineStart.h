#pragma once

#include <QCoro/QCoroTask>
#include <QDateTime>
#include <QObject>
#include <optional>

class AppState;
class KeychainStore;

// Remembers how the engine's start ended: its first complete pass, or a failed connection.
class FirstPass : public QObject {
    Q_OBJECT
public:
    explicit FirstPass(AppState& state);

    // Answers whether the pass completed, once it has or the connection failed.
    QCoro::Task<bool> loaded();

Q_SIGNALS:
    void finished();

private:
    void finish(bool loaded);

    AppState& state_;
    QDateTime start_;
    std::optional<bool> outcome_;
};

// Starts the engine the way the tray does (the demo when QUILLON_DEMO=1 and `demoAllowed`, else
// the account of the token) and answers 0 once its projects and snapshots are there to read, or
// the exit code after saying why not on standard error.
QCoro::Task<int> startEngine(AppState& state, KeychainStore& keychain, bool demoAllowed = true);
