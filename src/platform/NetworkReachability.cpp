#include "platform/NetworkReachability.h"

#include "platform/ServiceModule.h"

void NetworkReachability::watch() {
    if (watching_)
        return;
    watching_ = true;
    const Expected<const ServiceTable*, QString> services = ServiceModule::table();
    if (services)
        services.value()->followReachability(this, [this] { Q_EMIT cameOnline(); });
}
