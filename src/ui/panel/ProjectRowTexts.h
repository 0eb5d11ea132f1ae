#pragma once

#include "core/vercel/ProjectSnapshot.h"

#include <QDateTime>
#include <QString>

// The texts and flags of a project row, as pure functions of a snapshot and the time, so the
// table of cases can be checked without a widget.
namespace ProjectRowTexts {

// Older than this, a finished deployment dims its row.
inline constexpr double freshSeconds = 604800;

// In progress, failed, or finished less than 7 days ago; never without a deployment.
bool isFresh(const ProjectSnapshot& snap, const QDateTime& now);
// Running time while in progress (counting up, never negative), else the relative age.
QString ageText(const ProjectSnapshot& snap, const QDateTime& now, bool french);
// One line about the latest deployment: its state and commit title or branch.
QString description(const ProjectSnapshot& snap, bool french);
// "PREVIEW" for every deployment not aimed at production (a missing target included).
bool showsPreviewBadge(const ProjectSnapshot& snap);

} // namespace ProjectRowTexts
