#pragma once

#include <QObject>
#include <functional>

// Calls `cameOnline` (while `context` lives) each time the desktop reports that the network is up,
// through QNetworkInformation (NetworkManager where it runs). Where no backend answers, it never
// calls.
void followReachability(QObject* context, std::function<void()> cameOnline);
