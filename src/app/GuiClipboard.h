#pragma once

#include "core/monitor/PlatformServices.h"

#include <QClipboard>
#include <QGuiApplication>

// The desktop's clipboard, as the engine's plain-text clipboard.
class GuiClipboard final : public ClipboardService {
public:
    void setText(const QString& text) override { QGuiApplication::clipboard()->setText(text); }
};
