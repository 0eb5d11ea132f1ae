#include "core/keychain/KeychainMode.h"

#include "core/common/Language.h"

QString rawValue(KeychainMode mode) {
    return mode == KeychainMode::synced ? QStringLiteral("synced") : QStringLiteral("localOnly");
}

std::optional<KeychainMode> keychainModeFromRawValue(QStringView raw) {
    if (raw == u"synced")
        return KeychainMode::synced;
    if (raw == u"localOnly")
        return KeychainMode::localOnly;
    return std::nullopt;
}

QString storageDescription(KeychainMode mode) {
    if (mode == KeychainMode::synced)
        return Language::text("Kept in your login keyring: it stays there after reinstalling "
                              "Quillon. A copy is also kept in memory for this session.",
                              "Conservé dans votre trousseau de connexion : il y reste même après "
                              "une réinstallation de Quillon. Une copie est aussi gardée en "
                              "mémoire pour cette session.");
    return Language::text("Kept in memory for this session only. Your login keyring was not "
                          "accessible.",
                          "Conservé en mémoire pour cette session seulement. Votre trousseau de "
                          "connexion n'était pas accessible.");
}
