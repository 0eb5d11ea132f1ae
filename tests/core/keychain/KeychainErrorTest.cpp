#include "core/keychain/KeychainError.h"
#include "core/common/Language.h"

#include "support/TempPreferences.h"

#include <gtest/gtest.h>

namespace {

class KeychainErrorTest : public ::testing::Test {
protected:
    ~KeychainErrorTest() override { Language::overrideSystemLanguages({QStringLiteral("en-US")}); }

    void useFrench() { Language::overrideSystemLanguages({QStringLiteral("fr-FR")}); }

    TempPreferences preferences; // no `appLanguage`: the system's language decides
};

TEST_F(KeychainErrorTest, EnglishUsesThePlatformTextOrTheStatus) {
    const KeychainError withText{-34018, QStringLiteral("A required entitlement is missing.")};
    const KeychainError withoutText{-34018, std::nullopt};
    const KeychainError withEmptyText{-5, QString()};

    EXPECT_EQ(withText.errorDescription(), "Keyring error: A required entitlement is missing.");
    EXPECT_EQ(withoutText.errorDescription(), "Keyring error: Secret Service error -34018");
    EXPECT_EQ(withEmptyText.errorDescription(), "Keyring error: Secret Service error -5");
}

TEST_F(KeychainErrorTest, FrenchIsChosenWhenTheDescriptionIsAsked) {
    const KeychainError withText{-34018, QStringLiteral("Le trousseau est verrouillé.")};
    const KeychainError withoutText{-34018, std::nullopt};

    useFrench();

    EXPECT_EQ(withText.errorDescription(), "Erreur du trousseau : Le trousseau est verrouillé.");
    EXPECT_EQ(withoutText.errorDescription(), "Erreur du trousseau : Erreur Secret Service -34018");
}

} // namespace
