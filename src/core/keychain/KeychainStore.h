#pragma once

#include "core/common/Expected.h"
#include "core/keychain/KeychainError.h"
#include "core/keychain/KeychainMode.h"
#include "core/keychain/SecretBackend.h"

#include <QByteArray>
#include <QString>
#include <optional>

// The Vercel access token in the keyring, in up to two copies: the persistent one (`synced`) and
// the one kept for this session (`localOnly`). The store holds no state of its own; the backend
// is the state. All calls are synchronous and made from the main thread.
class KeychainStore {
public:
    using Mode = KeychainMode;

    struct StoredToken {
        QString token;
        Mode mode;
    };

    explicit KeychainStore(SecretBackend& backend) : backend_(backend) {}

    // Replaces the item of `mode` with one holding `data`; answers the status of the add.
    int addToken(const QByteArray& data, Mode mode);
    // Writes both copies of the trimmed, non-empty `token`; answers the copy that holds it.
    Expected<Mode, KeychainError> storeToken(const QString& token);
    // The persistent copy first, then the session copy; damaged copies count as absent.
    std::optional<StoredToken> loadToken();
    // The same, but when no copy could be read because the keyring failed (locked, out of
    // reach) rather than held none, that failure: the persistent copy's when both failed.
    Expected<std::optional<StoredToken>, KeychainError> readToken();
    // Deletes both copies; deleting a token that is not there is silent.
    void deleteToken();

    static const QString label;

private:
    static std::optional<QString> decodedToken(const QByteArray& data);

    SecretBackend& backend_;
};
