#pragma once

#include "core/wait/CommitHash.h"
#include "core/wait/ProjectChoice.h"

#include <QByteArray>

// One line of `wait --json`: the deployment's state as Vercel writes it ("BUILDING"), `id`,
// `url` (https://…), `project`, `projectId`, `scope`, `commit` (whole when Vercel has it) and
// the times `createdAt`, `buildingAt` and `readyAt` in ms since the epoch. Absent values are
// null; the line ends without a line feed.
QByteArray deploymentJsonLine(const VercelDeployment& deployment, const LinkedProject& project,
                              const CommitHash& commit);
