#pragma once

#include "core/vercel/ProjectRef.h"

#include <optional>

class AppState;

// The one project the token can see by that name or id, over every scope; absent after saying
// on standard error why not (none, or several by that name), prefixed with `command`.
std::optional<ProjectRef> findProject(const AppState& state, const QString& wanted,
                                      const QString& command);
