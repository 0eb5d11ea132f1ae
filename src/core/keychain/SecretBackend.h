#pragma once

#include "core/keychain/KeychainMode.h"

#include <QByteArray>
#include <QString>
#include <optional>

// The secret store under KeychainStore, reduced to the four calls it makes. Each item is one copy
// of the token, told apart by its KeychainMode; the backend owns the item's other identifying
// attributes. Statuses are the backend's own codes, 0 meaning success.
class SecretBackend {
public:
    struct Match {
        int status = 0;
        QByteArray data; // meaningful only when status is 0
    };

    virtual ~SecretBackend() = default;

    // Adds the item of `copy` holding `data`; answers the status of the add.
    virtual int addItem(KeychainMode copy, const QByteArray& data, const QString& label) = 0;
    // Deletes every item of `copy`; answers a status that callers are free to ignore.
    virtual int deleteItems(KeychainMode copy) = 0;
    // Reads the data of the item of `copy`.
    virtual Match copyMatching(KeychainMode copy) = 0;
    // The store's own text for a status, when it has one.
    virtual std::optional<QString> errorMessage(int status) const = 0;
    // Whether a failed read only means that there is no such item (rather than a store that is
    // locked or out of reach).
    virtual bool isNoItem(int status) const = 0;
};
