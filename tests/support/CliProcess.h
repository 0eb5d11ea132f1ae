#pragma once

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

// quillon-cli run as a child process while the test's event loop keeps serving its loopback
// servers. Whatever it prints is checked not to hold `secret`.
struct CliRun {
    int exitCode = -1;
    QString out;
    QString err;
};

// A child environment cut off from the user's desktop: the given token and API address, English,
// preferences under `home`, and no session bus, keyring, notification server or display.
QProcessEnvironment isolatedCliEnvironment(const QString& token, const QString& apiBase,
                                           const QString& home);

CliRun runCli(const QStringList& args, const QProcessEnvironment& env, const QString& secret);
