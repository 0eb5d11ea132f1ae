#pragma once

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

// A child process (quillon-cli, unless told otherwise) run to its end while the test's event loop
// keeps serving its loopback servers and buses.
struct CliRun {
    int exitCode = -1;
    bool crashed = false;
    QString out;
    QString err;
    QByteArray cmdline; // as /proc showed it after the start and again before any stop signal
    qint64 elapsedMs = 0;
};

// A child environment cut off from the user's desktop: the given token and API address, English,
// preferences under `home`, and no session bus, keyring, notification server or display.
QProcessEnvironment isolatedCliEnvironment(const QString& token, const QString& apiBase,
                                           const QString& home);

// Feeds `input` on standard input; `stopSignal`, when given, ends the child once it has printed
// something. Whatever it prints is checked not to hold `secret`. The child runs in
// `workingDirectory` when given, else in the test's.
CliRun runCli(const QStringList& args, const QProcessEnvironment& env, const QString& secret,
              const QByteArray& input = {}, int stopSignal = 0,
              const QString& program = QStringLiteral(QUILLON_CLI_PATH),
              const QString& workingDirectory = {});
