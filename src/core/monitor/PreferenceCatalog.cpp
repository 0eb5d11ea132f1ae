#include "core/monitor/PreferenceCatalog.h"

#include "core/common/HexColor.h"
#include "core/common/Language.h"
#include "core/common/Preferences.h"
#include "core/monitor/PreferenceKeys.h"
#include "core/monitor/ProjectMute.h"

namespace {

using PreferenceCatalog::Entry;
using PreferenceCatalog::Kind;

constexpr qint64 shortestInterval = 10; // what the polling loop waits at least anyway
constexpr qint64 longestInterval = 3600;

const QString automaticChecksKey = QStringLiteral("SUEnableAutomaticChecks");

bool defaultBoolean(const QString& key) {
    return key == PreferenceKeys::notifyOnFailure || key == PreferenceKeys::heroMonochrome ||
           key == PreferenceKeys::liveActivity || key == automaticChecksKey;
}

QString defaultColor(const QString& key) {
    if (key == QLatin1String("colorSuccess"))
        return PaletteDefaults::success();
    if (key == QLatin1String("colorQueued"))
        return PaletteDefaults::queued();
    return PaletteDefaults::error();
}

QString listText(const Preferences& preferences, const QString& key) {
    if (key != PreferenceKeys::mutedProjects) {
        QStringList ids = preferences.stringList(key).value_or(QStringList());
        ids.sort();
        return ids.join(QLatin1Char('\n'));
    }
    QStringList lines;
    const ProjectMutes mutes = MuteStore::read(preferences);
    for (auto it = mutes.begin(); it != mutes.end(); ++it)
        lines << it.key() + QLatin1Char(' ') + it->name;
    lines.sort();
    return lines.join(QLatin1Char('\n'));
}

} // namespace

namespace PreferenceCatalog {

const QList<Entry>& entries() {
    static const QList<Entry> list{
        {PreferenceKeys::refreshInterval, Kind::interval},
        {PreferenceKeys::appLanguage, Kind::language},
        {PreferenceKeys::heroMonochrome, Kind::boolean},
        {PreferenceKeys::liveActivity, Kind::boolean},
        {PreferenceKeys::notifyOnFailure, Kind::boolean},
        {PreferenceKeys::notifyProductionOnly, Kind::boolean},
        {PreferenceKeys::notifyOnlyMine, Kind::boolean},
        {PreferenceKeys::ignoreBotBranches, Kind::boolean},
        {PreferenceKeys::notifyWhenFixed, Kind::boolean},
        {PreferenceKeys::slowBuildWarning, Kind::boolean},
        {PreferenceKeys::countProductionOnly, Kind::boolean},
        {QStringLiteral("colorSuccess"), Kind::color},
        {QStringLiteral("colorQueued"), Kind::color},
        {QStringLiteral("colorError"), Kind::color},
        {automaticChecksKey, Kind::boolean},
        {PreferenceKeys::monitoredProjectIDs, Kind::list},
        {PreferenceKeys::mutedProjects, Kind::list},
    };
    return list;
}

const Entry* find(const QString& key) {
    const QList<Entry>& list = entries();
    const auto found =
        std::find_if(list.begin(), list.end(), [&](const Entry& e) { return e.key == key; });
    return found == list.end() ? nullptr : &*found;
}

QString valueText(const Preferences& preferences, const Entry& entry) {
    switch (entry.kind) {
    case Kind::boolean:
        return preferences.boolean(entry.key).value_or(defaultBoolean(entry.key))
                   ? QStringLiteral("true")
                   : QStringLiteral("false");
    case Kind::interval:
        return QString::number(preferences.integer(entry.key).value_or(30));
    case Kind::language:
        return preferences.string(entry.key).value_or(QStringLiteral("auto"));
    case Kind::color: {
        const std::optional<QString> stored = preferences.string(entry.key);
        return stored && rgbFromHex(*stored) ? *stored : defaultColor(entry.key);
    }
    case Kind::list:
        return listText(preferences, entry.key);
    }
    return {};
}

std::optional<QString> set(Preferences& preferences, const Entry& entry, const QString& text) {
    const QString value = text.trimmed();
    switch (entry.kind) {
    case Kind::boolean:
        if (value != QLatin1String("true") && value != QLatin1String("false"))
            return Language::text("%1 takes true or false.", "%1 prend true ou false.")
                .arg(entry.key);
        preferences.setBoolean(entry.key, value == QLatin1String("true"));
        return std::nullopt;
    case Kind::interval: {
        bool ok = false;
        const qint64 seconds = value.toLongLong(&ok);
        if (!ok || seconds < shortestInterval || seconds > longestInterval)
            return Language::text("%1 takes whole seconds from %2 to %3.",
                                  "%1 prend un nombre entier de secondes de %2 à %3.")
                .arg(entry.key)
                .arg(shortestInterval)
                .arg(longestInterval);
        preferences.setInteger(entry.key, seconds);
        return std::nullopt;
    }
    case Kind::language:
        if (value != QLatin1String("auto") && value != QLatin1String("en") &&
            value != QLatin1String("fr"))
            return Language::text("%1 takes auto, en or fr.", "%1 prend auto, en ou fr.")
                .arg(entry.key);
        preferences.setString(entry.key, value);
        return std::nullopt;
    case Kind::color: {
        const std::optional<quint32> rgb = rgbFromHex(value);
        if (!rgb)
            return Language::text("%1 takes a colour written #RRGGBB.",
                                  "%1 prend une couleur écrite #RRGGBB.")
                .arg(entry.key);
        preferences.setString(entry.key,
                              QStringLiteral("#%1").arg(*rgb, 6, 16, QLatin1Char('0')).toUpper());
        return std::nullopt;
    }
    case Kind::list:
        if (entry.key == PreferenceKeys::mutedProjects)
            return Language::text("Use 'quillon-cli mute' and 'quillon-cli unmute' for %1.",
                                  "Utilisez 'quillon-cli mute' et 'quillon-cli unmute' pour %1.")
                .arg(entry.key);
        return Language::text("%1 is chosen in Settings › Vercel.",
                              "%1 se choisit dans Réglages › Vercel.")
            .arg(entry.key);
    }
    return {};
}

} // namespace PreferenceCatalog
