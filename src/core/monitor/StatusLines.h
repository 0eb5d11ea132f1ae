#pragma once

#include "core/monitor/ConnectionState.h"
#include "core/vercel/ProjectSnapshot.h"

class AppState;

// Plain-text views of the engine for terminals and scripts.
QString toneName(Tone tone);

// "building · 1 building · today 12"
QString passLine(const AppState& state);
// "  Building  api  main  4f2a9c1  Handle checkout webhook  just now"; absent parts are "-".
QString snapshotLine(const ProjectSnapshot& snapshot, const QDateTime& now);
