#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <initializer_list>
#include <memory>

// Ends the event loop on SIGINT and SIGTERM. A signal handler may do almost nothing, so it only
// writes a byte to a socket that the event loop watches; the quit happens in the loop.
class QuitOnSignals : public QObject {
    Q_OBJECT
public:
    explicit QuitOnSignals(std::initializer_list<int> signals, QObject* parent = nullptr);
    ~QuitOnSignals() override;

private:
    static void handle(int signal);

    std::unique_ptr<QSocketNotifier> notifier_;
};
