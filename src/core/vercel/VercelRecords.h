#pragma once

#include "core/vercel/DeployStatus.h"

#include <QList>
#include <QMap>
#include <QString>
#include <optional>

// Records as decoded from Vercel's REST API. Every optional field is absent when its key is
// missing or null; keys we do not know are ignored.

// One value of a deployment's free-form `meta` map, read as text whatever its JSON kind.
struct JSONScalar {
    std::optional<QString> string;
};

struct VercelDeployment {
    std::optional<QString> id;
    std::optional<QString> uid;
    std::optional<QString> name;
    std::optional<QString> projectId;
    std::optional<QString> url;
    std::optional<QString> inspectorUrl;
    std::optional<QString> readyState;
    std::optional<QString> state;
    std::optional<double> createdAt; // ms since the epoch
    std::optional<double> created;   // ms, older key
    std::optional<double> buildingAt;
    std::optional<double> ready;
    std::optional<QString> target;
    std::optional<QMap<QString, JSONScalar>> meta;
    std::optional<QString> readyStateReason; // why Vercel blocked it, in Vercel's words
    std::optional<QString> creatorUid;       // creator.uid: the Vercel user who started it
    // Why it ended as it did, in Vercel's words: a canceled build's `errorMessage` and
    // `errorLink` tell an Ignored Build Step apart. Read as text whatever their JSON kind.
    std::optional<QString> errorMessage = std::nullopt;
    std::optional<QString> errorLink = std::nullopt;

    // Derived values.
    DeployStatus status() const; // readyState, else state, upper-cased
    // The status's title, or for a state Quillon does not know, "State " and Vercel's word.
    QString statusTitle(bool french) const;
    QString deploymentID() const;                // id, else uid, else ""
    std::optional<QString> branch() const;       // github/gitlab/bitbucket CommitRef
    std::optional<QString> shortSHA() const;     // first 7 characters of the commit hash
    std::optional<QString> commitSHA() const;    // github/gitlab/bitbucket CommitSha, whole
    std::optional<QString> commitTitle() const;  // first non-empty line of the message
    std::optional<double> startedAt() const;     // ms: buildingAt, else createdAt, else created
    std::optional<double> buildDuration() const; // seconds from start to ready, at least 0
    bool isProduction() const;                   // target is exactly "production"
};

// The git repository a project deploys from (`link`), by provider: GitHub's `org` and `repo`,
// GitLab's `projectNamespace`, `projectName` and `projectUrl`, Bitbucket's `owner` and `slug`.
// Only `wait` reads it, so its members are read as text whatever their kind, and a link that is
// not an object counts as none: an odd link never costs the tray its project list.
struct VercelGitLink {
    std::optional<QString> type; // "github", "github-limited", "github-custom-host", "gitlab", …
    std::optional<QString> org;
    std::optional<QString> repo;
    std::optional<QString> projectNamespace;
    std::optional<QString> projectName;
    std::optional<QString> projectUrl;
    std::optional<QString> owner;
    std::optional<QString> slug;
};

struct VercelProject {
    QString id;
    QString name;
    std::optional<QList<VercelDeployment>> latestDeployments;
    std::optional<VercelGitLink> link = std::nullopt;
};

struct VercelTeam {
    QString id;
    QString slug;
    std::optional<QString> name;
    // A team the token may not read in full: `limitedBy` says why ("mfa", "scope"), and
    // `saml.enforced` whether its SAML sign-in is required.
    std::optional<bool> limited;
    std::optional<QStringList> limitedBy;
    std::optional<bool> samlEnforced;
};

struct VercelUser {
    std::optional<QString> id;
    QString username;
    std::optional<QString> email;
    std::optional<QString> name;
    std::optional<QString> defaultTeamId;
};

struct VercelTokenInfo {
    std::optional<QString> id;
    std::optional<QString> name;
    std::optional<double> expiresAt; // ms; absent: the token never expires
};

// Only the text is kept; `type` (text) and `created` (a number) are checked for their kind.
struct VercelBuildEvent {
    struct Payload {
        std::optional<QString> text;
    };
    std::optional<QString> text;
    std::optional<Payload> payload;
};

// Response envelopes. A list comes one page at a time; `next` (pagination.next) is the time stamp
// to pass back as "until" for the following page, absent on the last one.
struct DeploymentsResponse {
    QList<VercelDeployment> deployments;
    std::optional<double> next;
};
struct ProjectsResponse {
    QList<VercelProject> projects;
    std::optional<double> next;
};
struct TeamsResponse {
    QList<VercelTeam> teams;
    std::optional<double> next;
};
struct UserResponse {
    VercelUser user;
};
struct TokenInfoResponse {
    VercelTokenInfo token;
};
// The build events come as a bare array; its null elements, and a null body, hold no event.
using BuildEventList = QList<VercelBuildEvent>;
