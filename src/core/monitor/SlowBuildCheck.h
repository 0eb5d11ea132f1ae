#pragma once

#include "core/monitor/PlatformServices.h"
#include "core/vercel/ProjectSnapshot.h"

#include <QDateTime>
#include <optional>

// A build is slow once it has run for more than twice its project's median build time, and at
// least two minutes. Answers the elapsed seconds of a slow build; absent otherwise (not
// building, no median, no start time, or not slow yet).
std::optional<double> slowBuildElapsed(const ProjectSnapshot& snapshot, const QDateTime& now);

// "api: build is taking longer than usual", body the elapsed time.
FailureNotification slowBuildNotification(const ProjectSnapshot& snapshot, double elapsedSeconds);
