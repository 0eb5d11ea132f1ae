#include "ui/common/MuteMenu.h"

#include "core/common/Language.h"
#include "core/monitor/AppState.h"

#include <QMenu>

void addMuteActions(QMenu& menu, AppState& state, const QString& projectId, const QString& name) {
    if (const std::optional<ProjectMute> mute = state.activeMute(projectId)) {
        menu.addAction(mutedText(*mute, state.clock().now()))->setEnabled(false);
        QObject::connect(menu.addAction(Language::text("Unmute", "Réactiver les notifications")),
                         &QAction::triggered, &state,
                         [&state, projectId] { state.unmuteProject(projectId); });
        menu.addSeparator();
    }
    const std::pair<const char*, const char*> labels[] = {
        {"Mute for 1 hour", "Mettre en sourdine pendant 1 heure"},
        {"Mute until tomorrow", "Mettre en sourdine jusqu'à demain"},
        {"Mute until unmuted", "Mettre en sourdine jusqu'à réactivation"},
    };
    const MuteLength lengths[] = {MuteLength::oneHour, MuteLength::untilTomorrow,
                                  MuteLength::untilUnmuted};
    for (int i = 0; i < 3; ++i) {
        const MuteLength length = lengths[i];
        QObject::connect(menu.addAction(Language::text(labels[i].first, labels[i].second)),
                         &QAction::triggered, &state, [&state, projectId, name, length] {
                             state.muteProject(projectId, name, length);
                         });
    }
}
