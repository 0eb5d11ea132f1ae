#include "core/vercel/BuildLog.h"

#include <QRegularExpression>

namespace {

constexpr qsizetype kLinesBefore = 15;
constexpr qsizetype kExcerptLength = 80;
constexpr qsizetype kTailLength = 60;

bool hasErrorMarker(const QString& line) {
    static const QLatin1String markers[] = {
        QLatin1String("error"),      QLatin1String("failed"),    QLatin1String("cannot"),
        QLatin1String("unexpected"), QLatin1String("missing"),   QLatin1String("not found"),
        QLatin1String("exception"),  QLatin1String("exit code"),
    };
    const QString lower = line.toLower();
    return std::any_of(std::begin(markers), std::end(markers),
                       [&](QLatin1String marker) { return lower.contains(marker); });
}

QString withoutTerminalSequences(const QString& text) {
    if (!text.contains(QChar(0x1b)))
        return text; // most lines carry none; skip the regular expression
    static const QRegularExpression sequence(QStringLiteral("\x1b\\[[0-9;]*[A-Za-z]"));
    QString cleaned = text;
    cleaned.remove(sequence);
    return cleaned;
}

} // namespace

QStringList cleanBuildLog(const BuildEventList& events) {
    QStringList lines;
    lines.reserve(events.size());
    for (const VercelBuildEvent& event : events) {
        std::optional<QString> text = event.text;
        if (!text && event.payload)
            text = event.payload->text;
        if (!text)
            continue;
        QString cleaned = withoutTerminalSequences(*text);
        if (!cleaned.isEmpty())
            lines.append(std::move(cleaned));
    }
    return lines;
}

QCoro::Task<RequestResult<QStringList>> buildLog(const VercelAPI& api, QString deploymentID,
                                                 std::optional<QString> teamId) {
    const VercelAPI client = api; // the caller's copy may be gone when the answer arrives
    const VercelAPI::Query query =
        VercelAPI::withTeam(teamId, {{QStringLiteral("builds"), QStringLiteral("1")},
                                     {QStringLiteral("limit"), QStringLiteral("-1")}});
    const RequestResult<BuildEventList> events = co_await client.get<BuildEventList>(
        QStringLiteral("/v3/deployments/") + deploymentID + QStringLiteral("/events"), query);
    if (!events)
        co_return events.error();
    co_return cleanBuildLog(events.value());
}

QStringList relevantLogExcerpt(const QStringList& lines) {
    const qsizetype n = lines.size();
    for (qsizetype i = 0; i < n; ++i) {
        if (!hasErrorMarker(lines.at(i)))
            continue;
        const qsizetype start = std::max<qsizetype>(0, i - kLinesBefore);
        const qsizetype end = std::min(n, start + kExcerptLength);
        return lines.mid(start, end - start);
    }
    if (n > kTailLength)
        return lines.mid(n - kTailLength);
    return lines;
}
