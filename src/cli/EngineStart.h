#pragma once

#include "core/monitor/AppState.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <optional>

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

// Starts the engine the way the tray does (demo, or the account of the token) and answers 0 once
// its snapshots and project list are ready to read, else the exit code, having said why.
QCoro::Task<int> startEngine(AppState& state, KeychainStore& keychain);
