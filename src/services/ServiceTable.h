#pragma once

#include "core/common/HttpTransport.h"
#include "core/keychain/SecretBackend.h"

#include <QObject>
#include <QString>
#include <functional>
#include <memory>

// What the services module provides: the code that needs QtNetwork or libsecret, which a tray
// that makes no request and never reads the keyring (demo mode) does not map at all.
struct ServiceTable {
    HttpTransport& (*transport)();
    std::unique_ptr<SecretBackend> (*secretBackend)();
    void (*followReachability)(QObject* context, std::function<void()> cameOnline);
};

// What the module borrows from the program that loads it rather than carrying a second copy:
// its texts follow the program's language preference.
struct ServiceHost {
    QString (*text)(const char* english, const char* french);
};

// The table of the code linked into this program (the CLI and the tests link it directly).
const ServiceTable& linkedServiceTable();

// The module's one exported function.
inline constexpr char serviceTableSymbol[] = "quillonServiceTable";
using ServiceTableEntry = const ServiceTable* (*)(const ServiceHost* host);
