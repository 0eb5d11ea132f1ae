#pragma once

#include "core/monitor/NetworkWatch.h"

// The desktop's network state, followed by the services module (loaded by the first watch).
// Where the module or a network-state backend is missing, it never reports anything and the
// back-off alone brings Vercel back.
class NetworkReachability final : public NetworkWatch {
public:
    void watch() override;

private:
    bool watching_ = false;
};
