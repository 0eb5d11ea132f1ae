#pragma once

#include "core/wait/CommitHash.h"
#include "core/wait/ProjectChoice.h"

#include <QDateTime>
#include <chrono>

// What `wait` tells the user, in the user's language.

// "Waiting for the deployment of 4f2a9c1 in web…"
QString waitingLine(const CommitHash& commit, const LinkedProject& project);
// "[15:04:05] web 4f2a9c1: Building"
QString stateLine(const VercelDeployment& deployment, const LinkedProject& project,
                  const CommitHash& commit, const QDateTime& at);

QString canceledSentence(const CommitHash& commit, const LinkedProject& project);
QString skippedSentence(const CommitHash& commit, const LinkedProject& project);
// With Vercel's reason when it gave one.
QString blockedSentence(const CommitHash& commit, const LinkedProject& project,
                        const VercelDeployment& deployment);
// What was still missing when time ran out: the project, the deployment, or its end.
QString timedOutSentence(const CommitHash& commit, const std::optional<LinkedProject>& project,
                         const std::optional<VercelDeployment>& deployment,
                         std::chrono::milliseconds timeout);

// A failed request that will be tried again, until the deadline.
QString retryNote(const QString& why, const QDateTime& deadline);
// Vercel asked to slow down; the next look comes at `next`.
QString slowDownNote(const QDateTime& next);
