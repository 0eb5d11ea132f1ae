#pragma once

#include "core/vercel/VercelAPI.h"
#include "core/wait/CommitHash.h"
#include "core/wait/ProjectChoice.h"

// The meta key under which Vercel's git integration records the project's commit hashes
// ("githubCommitSha", …), by the provider of its repository; absent when it has none.
std::optional<QString> commitShaKey(const std::optional<VercelGitLink>& link);

// The newest deployment of `commit` in `project`, newest first as Vercel lists them. A whole
// hash of a project whose provider is known is handed to Vercel as a filter
// (meta-githubCommitSha=…), so one page answers. Otherwise a hash can only be matched: the
// project's deployments are read page by page, `pages` at most, until one of the commit turns up.
QCoro::Task<RequestResult<std::optional<VercelDeployment>>>
findCommitDeployment(VercelAPI api, LinkedProject project, CommitHash commit, int pages);
