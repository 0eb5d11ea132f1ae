#include "core/monitor/ProjectMute.h"

#include "core/common/Language.h"
#include "core/common/Preferences.h"
#include "core/monitor/PreferenceKeys.h"

namespace {

const QString nameKey = QStringLiteral("name");
const QString untilKey = QStringLiteral("until");

QDateTime startOfTomorrow(const QDateTime& now) {
    return now.toLocalTime().date().addDays(1).startOfDay();
}

} // namespace

std::optional<QDateTime> muteEnd(MuteLength length, const QDateTime& now) {
    switch (length) {
    case MuteLength::oneHour:
        return now.addSecs(3600);
    case MuteLength::untilTomorrow:
        return startOfTomorrow(now);
    case MuteLength::untilUnmuted:
        break;
    }
    return std::nullopt;
}

namespace MuteStore {

ProjectMutes read(const Preferences& preferences) {
    ProjectMutes mutes;
    const QVariantMap stored =
        preferences.map(PreferenceKeys::mutedProjects).value_or(QVariantMap());
    for (auto it = stored.begin(); it != stored.end(); ++it) {
        if (it.value().typeId() != QMetaType::QVariantMap)
            continue;
        const QVariantMap entry = it.value().toMap();
        const QVariant name = entry.value(nameKey);
        const QVariant until = entry.value(untilKey);
        if (name.typeId() != QMetaType::QString)
            continue;
        ProjectMute mute{name.toString(), std::nullopt};
        if (until.isValid()) {
            if (until.typeId() != QMetaType::LongLong)
                continue;
            mute.until = QDateTime::fromSecsSinceEpoch(until.toLongLong());
        }
        mutes.insert(it.key(), mute);
    }
    return mutes;
}

void write(Preferences& preferences, const ProjectMutes& mutes) {
    if (mutes.isEmpty()) {
        preferences.remove(PreferenceKeys::mutedProjects);
        return;
    }
    QVariantMap stored;
    for (auto it = mutes.begin(); it != mutes.end(); ++it) {
        QVariantMap entry{{nameKey, it->name}};
        if (it->until)
            entry.insert(untilKey, QVariant::fromValue(it->until->toSecsSinceEpoch()));
        stored.insert(it.key(), entry);
    }
    preferences.setMap(PreferenceKeys::mutedProjects, stored);
}

} // namespace MuteStore

QString mutedText(const ProjectMute& mute, const QDateTime& now) {
    if (!mute.until)
        return Language::text("Muted", "En sourdine");
    const QDateTime end = mute.until->toLocalTime();
    const QDate today = now.toLocalTime().date();
    QString when;
    if (end == startOfTomorrow(now))
        return Language::text("Muted until tomorrow", "En sourdine jusqu'à demain");
    if (end.date() == today)
        when = end.time().toString(QStringLiteral("HH:mm"));
    else
        when = end.toString(QStringLiteral("yyyy-MM-dd HH:mm"));
    return Language::text("Muted until ", "En sourdine jusqu'à ") + when;
}
