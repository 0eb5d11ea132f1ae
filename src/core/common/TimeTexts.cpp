#include "core/common/TimeTexts.h"

#include "core/common/Language.h"

#include <QLocale>
#include <algorithm>
#include <cmath>

QString durationText(double seconds) {
    // Durations come from time stamps in response bodies, which may hold any number: saturate
    // rather than overflow the integer conversion.
    constexpr double longest = 1e15;
    const double rounded = std::isfinite(seconds) ? std::round(seconds) : 0.0;
    const qint64 s = rounded > 0 ? static_cast<qint64>(std::min(rounded, longest)) : 0;
    if (s < 60)
        return QStringLiteral("%1 s").arg(s);
    if (s < 3600) {
        const qint64 minutes = s / 60;
        const qint64 rest = s % 60;
        if (rest == 0)
            return QStringLiteral("%1 min").arg(minutes);
        return QStringLiteral("%1 min %2 s").arg(minutes).arg(rest);
    }
    return QStringLiteral("%1 h %2 min").arg(s / 3600).arg((s % 3600) / 60);
}

QString relativeAgeText(const std::optional<QDateTime>& since, const QDateTime& now) {
    return relativeAgeText(since, now, Language::isFrench());
}

QString relativeAgeText(const std::optional<QDateTime>& since, const QDateTime& now, bool french) {
    const qint64 elapsedMs = (since && since->isValid()) ? since->msecsTo(now) : -1;
    if (elapsedMs < 60'000)
        return french ? QStringLiteral("à l'instant") : QStringLiteral("just now");
    const qint64 minutes = elapsedMs / 60'000;
    struct Unit {
        qint64 below;
        qint64 size;
        const char* english;
        const char* french;
    };
    static constexpr Unit units[] = {
        {60, 1, " min ago", " min"},
        {1440, 60, " h ago", " h"},
        {43200, 1440, " d ago", " j"},
        {std::numeric_limits<qint64>::max(), 43200, " mo ago", " mois"},
    };
    for (const Unit& unit : units) {
        if (minutes < unit.below) {
            const QString count = QString::number(minutes / unit.size);
            if (french)
                return QStringLiteral("il y a ") + count + QString::fromUtf8(unit.french);
            return count + QString::fromUtf8(unit.english);
        }
    }
    return {};
}

QString clockTimeText(const QDateTime& at) {
    const QLocale locale(Language::isFrench() ? QLocale::French : QLocale::English);
    return locale.toString(at.toLocalTime().time(), QLocale::ShortFormat);
}
