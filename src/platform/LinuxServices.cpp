#include "platform/LinuxServices.h"

#include "core/common/Preferences.h"

LinuxServices::LinuxServices(const QString& executable, ClipboardService& clipboard,
                             FreedesktopNotifier::UrlOpener openUrl)
    : loginItem(executable), notifications(QDBusConnection::sessionBus(), std::move(openUrl)),
      clipboard_(clipboard) {}

AppState::Services LinuxServices::services(const QUrl& apiBase) {
    AppState::Services wired{
        Preferences::standard(), keychain, loginItem, notifications, clipboard_, clock, apiBase};
    wired.network = &network;
    return wired;
}
