#include "core/wait/WaitTimeout.h"

#include <QRegularExpression>

std::optional<std::chrono::seconds> waitTimeoutFromText(const QString& text) {
    static const QRegularExpression form(QStringLiteral("^([0-9]{1,6})([smh]?)$"));
    const QRegularExpressionMatch match = form.match(text.trimmed());
    if (!match.hasMatch())
        return std::nullopt;
    const qint64 count = match.captured(1).toLongLong();
    const QString unit = match.captured(2);
    const qint64 seconds = count * (unit == u"h" ? 3600 : unit == u"m" ? 60 : 1);
    if (seconds < 1 || seconds > 24 * 3600)
        return std::nullopt;
    return std::chrono::seconds(seconds);
}
