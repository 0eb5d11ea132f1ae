#pragma once

#include "demo/DemoHotKeys.h"

#include <memory>

class AppState;

// The demo's hot keys for `state`: each registered digit plays its scene of the demo director.
// Call it once the demo has started; outside demo mode it registers nothing and answers null.
// The keys stay registered while the answer lives.
std::unique_ptr<DemoHotKeys> bindDemoHotKeys(AppState& state);
