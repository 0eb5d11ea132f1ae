#pragma once

#include "core/vercel/VercelRecords.h"

#include <QString>
#include <optional>

// Where a git repository lives, written the same way whatever the address looked like:
// `git@github.com:Acme/Shop.git` and `https://github.com/acme/shop` are both github.com and
// "acme/shop". Never holds a user name or a password, so it can be printed.
struct RepositoryAddress {
    QString host; // lower case; empty when a project link does not say (a self-hosted server)
    QString path; // lower case, without slashes at either end nor ".git"

    // "github.com/acme/shop".
    QString text() const;
};

// The repository of a remote URL as git accepts it: scp-like `user@host:path`, or ssh://,
// https://, http:// and git:// addresses. Local paths and file:// have none.
std::optional<RepositoryAddress> remoteRepository(const QString& url);
// The repository a Vercel project deploys from; none when its link names no repository.
std::optional<RepositoryAddress> linkedRepository(const VercelGitLink& link);
// Same path, and same host unless the link's host is unknown.
bool isSameRepository(const RepositoryAddress& remote, const RepositoryAddress& linked);
