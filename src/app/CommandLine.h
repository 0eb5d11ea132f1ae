#pragma once

#include <QString>
#include <QStringList>
#include <chrono>
#include <optional>

// The options of `quillon`. The access token is never one of them: it lives in the keyring.
struct CommandLine {
    enum class Action { run, help, version, fail };
    Action action = Action::run;
    QString problem; // for `fail`
    std::optional<QString> screenshot;
    std::chrono::milliseconds screenshotDelay{5000};

    // `arguments` without the program name.
    static CommandLine parse(const QStringList& arguments);
    // help or version when asked anywhere among `arguments`, else run: read before Qt starts
    // (and takes its own options), so both answer without a display.
    static Action earlyAction(const QStringList& arguments);
    static QString helpText();
};
