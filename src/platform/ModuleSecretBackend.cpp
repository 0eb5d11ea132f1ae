#include "platform/ModuleSecretBackend.h"

#include "platform/ServiceModule.h"

SecretBackend* ModuleSecretBackend::backend() {
    if (backend_ == nullptr && unavailableReason_.isEmpty()) {
        const Expected<const ServiceTable*, QString> services = ServiceModule::table();
        if (services)
            backend_ = services.value()->secretBackend();
        else
            unavailableReason_ = services.error();
    }
    return backend_.get();
}

int ModuleSecretBackend::addItem(KeychainMode copy, const QByteArray& data, const QString& label) {
    SecretBackend* real = backend();
    return real != nullptr ? real->addItem(copy, data, label) : unavailable;
}

int ModuleSecretBackend::deleteItems(KeychainMode copy) {
    SecretBackend* real = backend();
    return real != nullptr ? real->deleteItems(copy) : unavailable;
}

SecretBackend::Match ModuleSecretBackend::copyMatching(KeychainMode copy) {
    SecretBackend* real = backend();
    return real != nullptr ? real->copyMatching(copy) : Match{unavailable, {}};
}

std::optional<QString> ModuleSecretBackend::errorMessage(int status) const {
    if (status == unavailable)
        return unavailableReason_;
    return backend_ != nullptr ? backend_->errorMessage(status) : std::nullopt;
}

bool ModuleSecretBackend::isNoItem(int status) const {
    return backend_ != nullptr && backend_->isNoItem(status);
}
