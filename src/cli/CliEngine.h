#pragma once

#include "cli/NoClipboard.h"
#include "core/monitor/AppState.h"
#include "platform/LinuxServices.h"

#include <QCoreApplication>
#include <memory>

// The engine as the terminal commands run it: the Linux services (a terminal has no clipboard
// and opens no links) and the one AppState.
struct CliEngine {
    explicit CliEngine(const QUrl& apiBase)
        : platform(QCoreApplication::applicationFilePath(), clipboard, nullptr),
          state(platform.services(apiBase)) {}

    // The engine for the API that QUILLON_API_BASE names; when unusable, says why on standard
    // error and answers none.
    static std::unique_ptr<CliEngine> fromEnvironment();

    NoClipboard clipboard;
    LinuxServices platform;
    AppState state;
};
