#pragma once

#include <QString>
#include <QStringList>

class Preferences;

// Every user-visible text exists in English and French; the choice is made each time a text is
// built, from the preference `appLanguage` ("en", "fr", anything else follows the system).
namespace Language {

// The system's preferred languages, most preferred first.
QStringList systemLanguages();
// Replaces the system's list until cleared; tests use it to play a French or English desktop.
void overrideSystemLanguages(const QStringList& languages);
void clearSystemLanguagesOverride();

bool isFrench(const Preferences& preferences, const QStringList& systemLanguages);
// Uses the standard preference store and the system's languages.
bool isFrench();

// Picks one of the two literals, both written in UTF-8.
QString text(const char* english, const char* french);

} // namespace Language
