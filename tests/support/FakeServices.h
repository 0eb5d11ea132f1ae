#pragma once

#include "core/monitor/PlatformServices.h"

#include <QList>

// Platform services that record what the engine asked of them.

class FakeLoginItem final : public LoginItemService {
public:
    bool enabled = false;
    std::optional<QString> refusal; // when set, every change is refused with this message
    bool isEnabled() const override { return enabled; }
    std::optional<QString> setEnabled(bool on) override {
        if (refusal)
            return refusal;
        enabled = on;
        return std::nullopt;
    }
};

class RecordingNotifications final : public NotificationService {
public:
    int authorizationRequests = 0;
    QList<FailureNotification> posted;
    std::function<void(const QString&)> reportHandler;
    std::function<void(const QString&)> redeployHandler;
    void requestAuthorization() override { ++authorizationRequests; }
    void post(const FailureNotification& notification) override { posted.append(notification); }
    void setReportHandler(std::function<void(const QString&)> handler) override {
        reportHandler = std::move(handler);
    }
    void setRedeployHandler(std::function<void(const QString&)> handler) override {
        redeployHandler = std::move(handler);
    }
};

class RecordingClipboard final : public ClipboardService {
public:
    QList<QString> texts;
    void setText(const QString& text) override { texts.append(text); }
};
