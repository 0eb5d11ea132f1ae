#pragma once

#include <QProcess>

// Ends a helper process the tests started: politely first, then for sure, and reaps it.
inline void stopProcess(QProcess& process) {
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(5000)) {
        process.kill();
        process.waitForFinished(5000);
    }
}
