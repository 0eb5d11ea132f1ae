#pragma once

#include "core/monitor/NetworkWatch.h"

// The desktop's network state through QNetworkInformation (NetworkManager where it runs). Where
// no backend answers, it never reports anything and the back-off alone brings Vercel back.
class NetworkReachability final : public NetworkWatch {
public:
    void watch() override;

private:
    bool watching_ = false;
};
