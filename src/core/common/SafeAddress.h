#pragma once

#include <QString>
#include <QUrl>

// Addresses Quillon may be pointed at from the environment: https:// anywhere, plain http://
// only when the request never leaves the machine (a test server, a local proxy).
bool isLoopbackHost(const QString& host);
bool usesSafeTransport(const QUrl& url);
