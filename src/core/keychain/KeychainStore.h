#pragma once

#include "core/common/Expected.h"
#include "core/keychain/KeychainError.h"
#include "core/keychain/KeychainMode.h"
#include "core/keychain/SecretBackend.h"

#include <QByteArray>
#include <QString>
#include <optional>

class Preferences;

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

    // `marks` (optional) remembers across starts that the persistent copy is outdated: replaced
    // or removed while the login keyring was locked, so it is never read again.
    explicit KeychainStore(SecretBackend& backend, Preferences* marks = nullptr)
        : backend_(backend), marks_(marks) {}

    // Replaces the item of `mode` with one holding `data`; answers the status of the add.
    int addToken(const QByteArray& data, Mode mode);
    // Writes both copies of the trimmed, non-empty `token`; answers the copy that holds it.
    Expected<Mode, KeychainError> storeToken(const QString& token);
    // The persistent copy first, then the session copy; damaged copies count as absent.
    std::optional<StoredToken> loadToken();
    // The same, but when no copy could be read because the keyring failed (locked, out of
    // reach) rather than held none, that failure: the persistent copy's when both failed.
    Expected<std::optional<StoredToken>, KeychainError> readToken();
    // Deletes both copies; deleting a token that is not there is silent. Answers why the
    // persistent copy stays (a keyring that stayed locked); it is then outdated and never read.
    std::optional<KeychainError> deleteToken();

    // The preference that marks the persistent copy outdated.
    static const QString outdatedKey; // "keyringCopyOutdated"
    static const QString label;

private:
    static std::optional<QString> decodedToken(const QByteArray& data);
    bool persistentOutdated() const;
    void markPersistentOutdated(bool outdated);
    // Removes an outdated persistent copy that can be reached without a prompt.
    void dropOutdatedCopy();

    SecretBackend& backend_;
    Preferences* marks_;
};
