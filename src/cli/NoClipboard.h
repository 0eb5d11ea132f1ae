#pragma once

#include "core/monitor/PlatformServices.h"

// A terminal has no clipboard of its own: `quillon-cli report` prints the report instead.
class NoClipboard final : public ClipboardService {
public:
    void setText(const QString&) override {}
};
