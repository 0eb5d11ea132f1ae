#pragma once

#include "core/keychain/SecretBackend.h"

#include <memory>

// The keyring's backend from the services module, loaded by the first call. Without the module
// every call fails with `unavailable` and the reason as its text.
class ModuleSecretBackend final : public SecretBackend {
public:
    static constexpr int unavailable = -100;

    int addItem(KeychainMode copy, const QByteArray& data, const QString& label) override;
    int deleteItems(KeychainMode copy) override;
    Match copyMatching(KeychainMode copy) override;
    std::optional<QString> errorMessage(int status) const override;
    bool isNoItem(int status) const override;

private:
    // The module's backend, or null when the module could not be loaded.
    SecretBackend* backend();

    std::unique_ptr<SecretBackend> backend_;
    QString unavailableReason_;
};
