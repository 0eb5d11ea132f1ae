#pragma once

#include <QString>
#include <QtGlobal>
#include <optional>

// A failed keyring write, carrying the store's status and the store's own text for it.
struct KeychainError {
    qint32 status = 0;
    std::optional<QString> platformMessage;

    // "Keyring error: " + the store's text, or + "Secret Service error " + status without one;
    // in the language chosen when it is asked for.
    QString errorDescription() const;
};
