#pragma once

#include "core/vercel/VercelRecords.h"

#include <QString>

// Sets up what the derived texts read (an empty preference store, an English desktop).
void prepareDeploymentProbe();

// Reads every derived value of a deployment, as the panel, the terminal lines and the failure
// report do, and checks the promises each one makes.
void probeDeployment(const VercelDeployment& deployment, const QString& projectName);
