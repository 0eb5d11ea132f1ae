#include "core/vercel/BuildLog.h"

#include <QVarLengthArray>
#include <algorithm>
#include <string_view>

namespace {

constexpr qsizetype kLinesBefore = 15;
constexpr qsizetype kExcerptLength = 80;
constexpr qsizetype kTailLength = 60;

constexpr std::string_view kMarkers[] = {"error",   "failed",    "cannot",    "unexpected",
                                         "missing", "not found", "exception", "exit code"};

bool hasErrorMarker(const QString& line) {
    // Build logs are nearly all ASCII: such a line is lowered into a buffer on the stack rather
    // than into a new string. Any other line takes Unicode's lowering.
    QVarLengthArray<char, 256> lowered(line.size());
    for (qsizetype i = 0; i < line.size(); ++i) {
        const char16_t c = line.at(i).unicode();
        if (c >= 0x80) {
            const QString lower = line.toLower();
            return std::any_of(std::begin(kMarkers), std::end(kMarkers), [&](auto marker) {
                return lower.contains(QLatin1StringView(marker.data(), marker.size()));
            });
        }
        lowered[i] = char(c >= u'A' && c <= u'Z' ? c - u'A' + u'a' : c);
    }
    const std::string_view lower(lowered.data(), lowered.size());
    return std::any_of(std::begin(kMarkers), std::end(kMarkers),
                       [&](auto marker) { return lower.find(marker) != lower.npos; });
}

bool isAsciiLetter(QChar c) {
    return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z');
}

// The length of the terminal control sequence (ESC '[', digits and ';', one letter) at `at`,
// or 0 when none starts there.
qsizetype sequenceLength(QStringView text, qsizetype at) {
    if (text[at] != QChar(0x1b) || at + 1 >= text.size() || text[at + 1] != u'[')
        return 0;
    qsizetype end = at + 2;
    while (end < text.size() && ((text[end] >= u'0' && text[end] <= u'9') || text[end] == u';'))
        ++end;
    return end < text.size() && isAsciiLetter(text[end]) ? end + 1 - at : 0;
}

QString withoutTerminalSequences(const QString& text) {
    qsizetype at = text.indexOf(QChar(0x1b));
    if (at < 0)
        return text; // most lines carry none
    QString cleaned;
    cleaned.reserve(text.size());
    qsizetype kept = 0; // start of the text not yet copied
    for (; at < text.size(); ++at) {
        if (const qsizetype length = sequenceLength(text, at)) {
            cleaned.append(QStringView(text).sliced(kept, at - kept));
            kept = at + length;
            at = kept - 1;
        }
    }
    cleaned.append(QStringView(text).sliced(kept));
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

bool mentionsError(const QStringList& lines) {
    return std::any_of(lines.begin(), lines.end(), hasErrorMarker);
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
