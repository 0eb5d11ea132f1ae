#pragma once

#include "core/common/Language.h"

// Plays a French desktop for as long as it lives; the tests otherwise run in English.
struct FrenchDesktop {
    FrenchDesktop() { Language::overrideSystemLanguages({QStringLiteral("fr-FR")}); }
    ~FrenchDesktop() { Language::overrideSystemLanguages({QStringLiteral("en-US")}); }
    FrenchDesktop(const FrenchDesktop&) = delete;
    FrenchDesktop& operator=(const FrenchDesktop&) = delete;
};
