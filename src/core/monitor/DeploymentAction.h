#pragma once

// What the user can ask of a project's latest deployment: build a failed or canceled one again,
// or stop one that is queued or building.
enum class DeploymentAction { redeploy, cancel };
