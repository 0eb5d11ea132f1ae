#pragma once

#include <QCoro/QCoroTask>
#include <QString>
#include <optional>

// What git says about a folder. Each part is absent when git cannot tell (no git installed, not
// a repository, no commit yet, no remote named origin).
struct GitCheckout {
    std::optional<QString> head;      // the commit checked out, whole
    std::optional<QString> topLevel;  // the repository's root folder
    std::optional<QString> originUrl; // the address of the remote named origin
};

// Asks `git` in `folder`, without waiting on the main thread.
QCoro::Task<GitCheckout> readGitCheckout(QString folder);
