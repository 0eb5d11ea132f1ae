#pragma once

#include "core/vercel/ProjectSnapshot.h"

#include <QStringList>

// The Markdown report of a failed deployment, written to be pasted into an AI assistant. Always
// in English. `snapshot.latest` must be present.
QString failureReportText(const ProjectSnapshot& snapshot, const QStringList& excerpt);
