#include "core/keychain/KeychainStore.h"

#include "core/common/Preferences.h"

#include <QStringDecoder>

const QString KeychainStore::label = QStringLiteral("Quillon Vercel token");
const QString KeychainStore::outdatedKey = QStringLiteral("keyringCopyOutdated");

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
    // A persistent copy that could not be replaced holds an older token: it must not win at the
    // next start.
    markPersistentOutdated(syncedStatus != 0);
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
    dropOutdatedCopy();
    for (const Mode mode : {Mode::synced, Mode::localOnly}) {
        if (mode == Mode::synced && persistentOutdated())
            continue;
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

std::optional<KeychainError> KeychainStore::deleteToken() {
    const int syncedStatus = backend_.deleteItems(Mode::synced);
    backend_.deleteItems(Mode::localOnly);
    const bool stays = syncedStatus != 0 && !backend_.isNoItem(syncedStatus);
    markPersistentOutdated(stays);
    if (!stays)
        return std::nullopt;
    return KeychainError{syncedStatus, backend_.errorMessage(syncedStatus)};
}

bool KeychainStore::persistentOutdated() const {
    return marks_ && marks_->boolean(outdatedKey).value_or(false);
}

void KeychainStore::markPersistentOutdated(bool outdated) {
    if (!marks_ || outdated == persistentOutdated())
        return;
    if (outdated)
        marks_->setBoolean(outdatedKey, true);
    else
        marks_->remove(outdatedKey);
}

void KeychainStore::dropOutdatedCopy() {
    if (!persistentOutdated())
        return;
    // Only a copy that reads without a prompt (an unlocked keyring) is deleted here: a start
    // never waits on a password.
    const int status = backend_.copyMatching(Mode::synced).status;
    if (status != 0 && !backend_.isNoItem(status))
        return;
    const int deleted = status == 0 ? backend_.deleteItems(Mode::synced) : 0;
    if (deleted == 0 || backend_.isNoItem(deleted))
        markPersistentOutdated(false);
}

std::optional<QString> KeychainStore::decodedToken(const QByteArray& data) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString token = decoder.decode(data);
    if (decoder.hasError() || token.isEmpty())
        return std::nullopt; // a damaged copy is no copy
    return token;
}
