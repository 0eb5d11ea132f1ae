#include "services/ServiceTable.h"

#include "services/LibsecretBackend.h"
#include "services/QtHttpTransport.h"
#include "services/ReachabilityFollow.h"

const ServiceTable& linkedServiceTable() {
    static const ServiceTable table{
        []() -> HttpTransport& {
            static QtHttpTransport transport;
            return transport;
        },
        []() -> std::unique_ptr<SecretBackend> { return std::make_unique<LibsecretBackend>(); },
        &followReachability,
    };
    return table;
}
