#pragma once

#include "core/common/Expected.h"
#include "services/ServiceTable.h"

#include <QString>
#include <QStringList>

// The services module (HTTP, the keyring, the network state), loaded the first time the
// program needs one of them, so that a tray that needs none never maps their libraries.
namespace ServiceModule {

// Where the tray looks for it: beside the executable (the build tree), then in the installed
// prefix's library folder.
QStringList defaultDirectories();
// From now on the module is taken from the first of `directories` that holds it, on first use.
// HTTP requests go through it.
void loadFrom(const QStringList& directories);
// Uses the code linked into the program instead (the CLI and the tests).
void useLinked(const ServiceTable& table);
// The module's table, loading it now if need be; or why it could not be loaded, in the user's
// language. A failed load is not tried again.
Expected<const ServiceTable*, QString> table();

} // namespace ServiceModule
