#include "core/monitor/StatusLines.h"

#include "core/common/Language.h"
#include "core/common/TimeTexts.h"
#include "core/monitor/AppState.h"
#include "core/vercel/VercelTime.h"

QString toneName(Tone tone) {
    switch (tone) {
    case Tone::disconnected:
        return QStringLiteral("disconnected");
    case Tone::idle:
        return QStringLiteral("idle");
    case Tone::success:
        return QStringLiteral("success");
    case Tone::building:
        return QStringLiteral("building");
    case Tone::queued:
        return QStringLiteral("queued");
    case Tone::error:
        return QStringLiteral("error");
    }
    return {};
}

QString passLine(const AppState& state) {
    QString line = toneName(state.overallTone()) + QStringLiteral(" · ") + state.statusSummary() +
                   QStringLiteral(" · ") + Language::text("today ", "aujourd'hui ") +
                   QString::number(state.todayCount());
    if (state.lastError())
        line += QStringLiteral(" · ") + *state.lastError();
    return line;
}

QString snapshotLine(const ProjectSnapshot& snapshot, const QDateTime& now) {
    const std::optional<VercelDeployment>& d = snapshot.latest;
    auto orDash = [](const std::optional<QString>& text) {
        return text && !text->isEmpty() ? *text : QStringLiteral("-");
    };
    std::optional<QDateTime> created;
    if (d && (d->createdAt || d->created))
        created = dateFromMilliseconds(d->createdAt.value_or(d->created.value_or(0)));
    const QStringList parts{
        snapshot.statusTitle(Language::isFrench()),
        snapshot.name,
        orDash(d ? d->branch() : std::nullopt),
        orDash(d ? d->shortSHA() : std::nullopt),
        orDash(d ? d->commitTitle() : std::nullopt),
        d ? relativeAgeText(created, now) : QStringLiteral("-"),
    };
    return QStringLiteral("  ") + parts.join(QStringLiteral("  "));
}
