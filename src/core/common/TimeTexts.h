#pragma once

#include <QDateTime>
#include <QString>
#include <optional>

// Texts for spans of time shared by the report, the notifications, the rows and the capsule.

// "45 s", "2 min", "2 min 5 s", "1 h 0 min": seconds rounded half away from zero, negative as 0.
// The same text serves both languages.
QString durationText(double seconds);

// "just now", "5 min ago", "3 h ago", "2 d ago", "4 mo ago" (or their French forms), in whole
// units truncated towards zero. A missing date, or one less than a minute ago, is "just now".
QString relativeAgeText(const std::optional<QDateTime>& since, const QDateTime& now);
QString relativeAgeText(const std::optional<QDateTime>& since, const QDateTime& now, bool french);

// "15:04" in French, "3:04 PM" in English: the local time of day of `at`.
QString clockTimeText(const QDateTime& at);
