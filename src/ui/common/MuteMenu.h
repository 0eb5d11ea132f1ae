#pragma once

#include <QString>

class AppState;
class QMenu;

// The mute choices for one project, used by its panel row and by the Settings project list: mute
// for an hour, until tomorrow or until unmuted; while muted, how long for and "Unmute" first.
// Each action calls the state's operation.
void addMuteActions(QMenu& menu, AppState& state, const QString& projectId, const QString& name);
