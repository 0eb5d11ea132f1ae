#pragma once

#include "cli/NoClipboard.h"
#include "core/monitor/AppState.h"
#include "platform/LinuxServices.h"

#include <QCoreApplication>

// The engine as the terminal commands run it: the Linux services (a terminal has no clipboard
// and opens no links) and the one AppState.
struct CliEngine {
    explicit CliEngine(const QUrl& apiBase)
        : platform(QCoreApplication::applicationFilePath(), clipboard, nullptr),
          state(platform.services(apiBase)) {}

    NoClipboard clipboard;
    LinuxServices platform;
    AppState state;
};
