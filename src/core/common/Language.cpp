#include "core/common/Language.h"

#include "core/common/Preferences.h"

#include <QLocale>
#include <optional>

namespace {
std::optional<QStringList> g_override;
}

namespace Language {

QStringList systemLanguages() {
    if (g_override)
        return *g_override;
    return QLocale::system().uiLanguages();
}

void overrideSystemLanguages(const QStringList& languages) {
    g_override = languages;
}

void clearSystemLanguagesOverride() {
    g_override.reset();
}

bool isFrench(const Preferences& preferences, const QStringList& languages) {
    const QString chosen =
        preferences.string(QStringLiteral("appLanguage")).value_or(QStringLiteral("auto"));
    if (chosen == QLatin1String("fr"))
        return true;
    if (chosen == QLatin1String("en"))
        return false;
    const QString first = languages.isEmpty() ? QStringLiteral("en") : languages.first();
    return first.toLower().startsWith(QLatin1String("fr"));
}

bool isFrench() {
    return isFrench(Preferences::standard(), systemLanguages());
}

QString text(const char* english, const char* french) {
    return QString::fromUtf8(isFrench() ? french : english);
}

} // namespace Language
