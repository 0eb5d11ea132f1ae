#include "core/keychain/KeychainError.h"

#include "core/common/Language.h"

QString KeychainError::errorDescription() const {
    const QString message =
        platformMessage && !platformMessage->isEmpty()
            ? *platformMessage
            : Language::text("Secret Service error ", "Erreur Secret Service ") +
                  QString::number(status);
    return Language::text("Keyring error: ", "Erreur du trousseau : ") + message;
}
