#pragma once

#include "core/monitor/Clock.h"
#include "core/vercel/VercelAPI.h"
#include "core/wait/CommitHash.h"
#include "core/wait/ProjectChoice.h"

#include <chrono>
#include <functional>

// How a wait for the deployment of a commit ended.
enum class WaitEnd {
    ready,     // live: `message` is its address
    failed,    // the build failed (`message` is the failure report) or Vercel blocked it
    canceled,  // canceled by someone
    skipped,   // canceled by the project's Ignored Build Step: nothing to build
    timedOut,  // nothing ended in time
    refused,   // Vercel refused the token, the team or the request
    noProject, // no project, or several, answer to the hints
};

struct WaitOutcome {
    WaitEnd end;
    QString message; // what the user reads, in the user's language (the report in English)
    std::optional<LinkedProject> project;
    std::optional<VercelDeployment> deployment;
};

struct WaitRequest {
    CommitHash commit;
    ProjectHints hints;
    std::chrono::milliseconds timeout{std::chrono::minutes(15)};
    // Between two looks at Vercel, unless Vercel asks for longer.
    std::chrono::milliseconds interval{std::chrono::seconds(5)};
};

// Told as the wait goes; every member may be left empty.
struct WaitObserver {
    std::function<void(const LinkedProject&)> started;    // the project is known
    std::function<void(const VercelDeployment&)> changed; // first seen, then each new state
    std::function<void(const QString& sentence)> note;    // a failure that is tried again
};

// Finds the project the hints name, then the deployment of the commit, and follows it until it
// ends or `timeout` has passed. Polls every `interval`, or later when Vercel's rate limit asks
// to (a 429's Retry-After, the requests left in the window). No network, a timeout or a server
// error is noted and tried again; a rejected token or team ends the wait at once.
QCoro::Task<WaitOutcome> waitForDeployment(VercelAPI api, Clock& clock, WaitRequest request,
                                           WaitObserver observer = {});

// Whether Vercel canceled the build because the project's Ignored Build Step found nothing to
// build (its errorLink points at the setting's documentation, its errorMessage names it).
bool isIgnoredBuild(const VercelDeployment& deployment);
// The deployment's address with its scheme: Vercel sends the host alone.
QString deploymentAddress(const VercelDeployment& deployment);
