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
    for (const Mode mode : {Mode::synced, Mode::localOnly}) {
        if (std::optional<QString> token = readCopy(mode))
            return StoredToken{std::move(*token), mode};
    }
    return std::nullopt;
}

void KeychainStore::deleteToken() {
    backend_.deleteItems(Mode::synced);
    backend_.deleteItems(Mode::localOnly);
}

std::optional<QString> KeychainStore::readCopy(Mode mode) {
    const SecretBackend::Match match = backend_.copyMatching(mode);
    if (match.status != 0)
        return std::nullopt;
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString token = decoder.decode(match.data);
    if (decoder.hasError() || token.isEmpty())
        return std::nullopt; // a damaged copy is no copy
    return token;
}
