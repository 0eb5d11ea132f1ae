#include "core/update/UpdateAnnouncer.h"

#include "core/common/Language.h"
#include "core/common/Preferences.h"
#include "core/monitor/PlatformServices.h"
#include "core/update/UpdateService.h"

const QString UpdateAnnouncer::announcedKey = QStringLiteral("announcedUpdateVersion");

UpdateAnnouncer::UpdateAnnouncer(UpdateService& updater, NotificationService& notifications,
                                 Preferences& preferences, QObject* parent)
    : QObject(parent), updater_(updater), notifications_(notifications), preferences_(preferences) {
    connect(&updater, &UpdateService::resultChanged, this, &UpdateAnnouncer::announce);
}

void UpdateAnnouncer::announce() {
    const std::optional<QString> version = updater_.newerVersion();
    const std::optional<QUrl> page = updater_.downloadPage();
    if (updater_.isChecking() || !version || !page || preferences_.string(announcedKey) == version)
        return;
    preferences_.setString(announcedKey, *version);
    notifications_.post(
        {QStringLiteral("update-") + *version,
         Language::text("Quillon %1 is available", "Quillon %1 est disponible").arg(*version),
         Language::text("Click to open the download page.",
                        "Cliquez pour ouvrir la page de téléchargement."),
         page, false, false});
}
