#pragma once

#include "core/monitor/PlatformServices.h"

// "Open at login" as an XDG autostart entry (~/.config/autostart/com.fernhollow.quillon.desktop),
// which every freedesktop session starts at login.
class XdgAutostart final : public LoginItemService {
public:
    // `executable` is what the entry starts; `directory` defaults to $XDG_CONFIG_HOME/autostart.
    explicit XdgAutostart(QString executable, QString directory = {});

    bool isEnabled() const override;
    std::optional<QString> setEnabled(bool enabled) override;

    QString entryPath() const;

private:
    QString executable_;
    QString directory_;
};
