#include "services/ReachabilityFollow.h"

#include <QNetworkInformation>

void followReachability(QObject* context, std::function<void()> cameOnline) {
    if (!QNetworkInformation::loadBackendByFeatures(QNetworkInformation::Feature::Reachability))
        return;
    QObject::connect(QNetworkInformation::instance(), &QNetworkInformation::reachabilityChanged,
                     context,
                     [cameOnline = std::move(cameOnline)](QNetworkInformation::Reachability now) {
                         if (now == QNetworkInformation::Reachability::Online)
                             cameOnline();
                     });
}
