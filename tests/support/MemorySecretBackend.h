#pragma once

#include "core/keychain/SecretBackend.h"

#include <QHash>

// A keyring in memory whose writes can be told to fail.
class MemorySecretBackend final : public SecretBackend {
public:
    QHash<KeychainMode, QByteArray> items;
    QHash<KeychainMode, int> addFailures; // copy → status its adds answer

    void failAdds(int status) {
        addFailures.insert(KeychainMode::synced, status);
        addFailures.insert(KeychainMode::localOnly, status);
    }

    int addItem(KeychainMode copy, const QByteArray& data, const QString&) override {
        if (addFailures.contains(copy))
            return addFailures.value(copy);
        items.insert(copy, data);
        return 0;
    }
    int deleteItems(KeychainMode copy) override { return items.remove(copy) ? 0 : -1; }
    Match copyMatching(KeychainMode copy) override {
        if (!items.contains(copy))
            return {-1, {}};
        return {0, items.value(copy)};
    }
    std::optional<QString> errorMessage(int status) const override {
        if (status == -2)
            return QStringLiteral("The collection is locked");
        return std::nullopt;
    }
};
