#pragma once

#include "core/vercel/ProjectSnapshot.h"

#include <QDateTime>
#include <QString>
#include <optional>

// The texts of a Live Activity row as pure functions of a snapshot and the row clock, so the
// table of cases can be checked without a window.
namespace LiveActivityRowTexts {

// "Live in 1 min 23 s", "Failed after 40 s", else the commit title or the status title.
QString subtitle(const ProjectSnapshot& snapshot, bool french);
// "Live", "Failed", the status title while waiting, else the running time at `now`.
QString trailing(const ProjectSnapshot& snapshot, const QDateTime& now, bool french);
// The estimated share built at `now`; absent means the indeterminate form.
std::optional<double> progress(const ProjectSnapshot& snapshot, const QDateTime& now);
// Queued, initializing and building rows carry a progress line.
bool showsProgressLine(const ProjectSnapshot& snapshot);

} // namespace LiveActivityRowTexts
