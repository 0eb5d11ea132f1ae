#pragma once

#include "core/vercel/VercelAPI.h"
#include "core/wait/ProjectChoice.h"

// The projects of every scope the hints want, with their repositories: the personal account and
// each team, every page. A team Vercel keeps closed to the token (it wants a SAML sign-in, say)
// is passed over and named in `closed`; any other failure fails the whole.
struct AccountProjects {
    QList<LinkedProject> projects;
    QStringList closed; // the slugs of the teams passed over
};

QCoro::Task<RequestResult<AccountProjects>> listAccountProjects(VercelAPI api, ProjectHints hints);
