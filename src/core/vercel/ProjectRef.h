#pragma once

#include <QHashFunctions>
#include <QString>
#include <optional>

// A project that the user can monitor, found in one of the account's scopes.
struct ProjectRef {
    QString id;
    QString name;
    std::optional<QString> teamId; // absent for the personal account
    QString scopeSlug;             // team slug, or the user name for the personal account

    friend bool operator==(const ProjectRef&, const ProjectRef&) = default;
};

// Combines id, name, a presence marker and value of teamId, then scopeSlug.
size_t qHash(const ProjectRef& ref, size_t seed = 0);
