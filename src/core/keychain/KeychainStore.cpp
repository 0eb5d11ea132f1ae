#include "core/keychain/KeychainStore.h"

#include <QStringDecoder>

const QString KeychainStore::label = QStringLiteral("Quillon Vercel token");

int KeychainStore::addToken(const QByteArray& data, Mode mode) {
    backend_.deleteItems(mode); // failing is the normal case for a first store
    return backend_.addItem(mode, data, label);
}

Expected<KeychainStore::Mode, KeychainError> KeychainStore::storeToken(const QString& token) {
    const QByteArray data = token.toUtf8();
    const int syncedStatus = addToken(data, Mode::synced);
    // The session copy is written whatever happened to the persistent one, so a token that could
    // not be kept across logins still works until logout.
    const int localStatus = addToken(data, Mode::localOnly);
    if (syncedStatus == 0)
        return Mode::synced;
    if (localStatus == 0)
        return Mode::localOnly;
    // The persistent write is the one the user cares about, so its status is the one reported.
    return KeychainError{syncedStatus, backend_.errorMessage(syncedStatus)};
}

std::optional<KeychainStore::StoredToken> KeychainStore::loadToken() {
    Expected<std::optional<StoredToken>, KeychainError> read = readToken();
    return read ? std::move(read).value() : std::nullopt;
}

Expected<std::optional<KeychainStore::StoredToken>, KeychainError> KeychainStore::readToken() {
    std::optional<KeychainError> failure;
    for (const Mode mode : {Mode::synced, Mode::localOnly}) {
        const SecretBackend::Match match = backend_.copyMatching(mode);
        if (match.status == 0) {
            if (std::optional<QString> token = decodedToken(match.data))
                return std::optional<StoredToken>(StoredToken{std::move(*token), mode});
        } else if (!failure && !backend_.isNoItem(match.status)) {
            failure = KeychainError{match.status, backend_.errorMessage(match.status)};
        }
    }
    if (failure)
        return *failure;
    return std::optional<StoredToken>();
}

void KeychainStore::deleteToken() {
    backend_.deleteItems(Mode::synced);
    backend_.deleteItems(Mode::localOnly);
}

std::optional<QString> KeychainStore::decodedToken(const QByteArray& data) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString token = decoder.decode(data);
    if (decoder.hasError() || token.isEmpty())
        return std::nullopt; // a damaged copy is no copy
    return token;
}
