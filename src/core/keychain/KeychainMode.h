#pragma once

#include <QString>
#include <QStringView>
#include <optional>

// Where the token lives: `synced` when the persistent copy (the login keyring) holds it,
// `localOnly` when only the copy kept for this session does.
enum class KeychainMode { synced, localOnly };

QString rawValue(KeychainMode mode);
std::optional<KeychainMode> keychainModeFromRawValue(QStringView raw);

// One sentence for the user about where the token is kept, in the chosen language.
QString storageDescription(KeychainMode mode);
