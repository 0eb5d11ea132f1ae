#pragma once

#include "core/monitor/Clock.h"
#include "core/vercel/VercelAPI.h"

#include <QStringList>

// The build log a failure report quotes. Vercel writes the last lines of a failed build's log
// after it reports the failure (its own CLI follows the log until the error line), so the log of
// a failure less than a minute old is read again every second until it stops growing with an
// error in it, for a few seconds at most. An unreadable log gives no lines, and the report says
// it is unavailable.
QCoro::Task<QStringList> settledBuildLog(VercelAPI api, VercelDeployment deployment,
                                         std::optional<QString> teamId, Clock& clock,
                                         std::shared_ptr<Cancellation> cancel);
