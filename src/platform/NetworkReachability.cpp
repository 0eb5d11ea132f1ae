#include "platform/NetworkReachability.h"

#include <QNetworkInformation>

void NetworkReachability::watch() {
    if (watching_)
        return;
    watching_ = true;
    if (!QNetworkInformation::loadBackendByFeatures(QNetworkInformation::Feature::Reachability))
        return;
    QObject::connect(QNetworkInformation::instance(), &QNetworkInformation::reachabilityChanged,
                     this, [this](QNetworkInformation::Reachability reachability) {
                         if (reachability == QNetworkInformation::Reachability::Online)
                             Q_EMIT cameOnline();
                     });
}
