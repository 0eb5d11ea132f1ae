#pragma once

#include "core/vercel/VercelAPI.h"

#include <QStringList>

// A deployment's build log: the text of each build event with terminal colour and cursor
// sequences removed; events without text and lines left empty are dropped.
QCoro::Task<RequestResult<QStringList>> buildLog(const VercelAPI& api, QString deploymentID,
                                                 std::optional<QString> teamId);

// The cleaning step alone, for a decoded list of events.
QStringList cleanBuildLog(const BuildEventList& events);

// Whether any line mentions an error marker ("error", "failed", "exit code", …).
bool mentionsError(const QStringList& lines);

// The part of a log most likely to show the cause: from 15 lines before the first line that
// mentions an error marker, at most 80 lines; without such a line, the last 60 lines.
QStringList relevantLogExcerpt(const QStringList& lines);
