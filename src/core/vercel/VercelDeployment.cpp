#include "core/vercel/VercelRecords.h"

#include <QChar>
#include <QLatin1StringView>
#include <algorithm>
#include <initializer_list>

namespace {

// The first key whose value has a text; keys holding null, arrays or objects are passed over.
std::optional<QString> metaText(const VercelDeployment& deployment,
                                std::initializer_list<QLatin1StringView> keys) {
    if (!deployment.meta)
        return std::nullopt;
    for (QLatin1StringView key : keys) {
        const auto found = deployment.meta->constFind(QString(key));
        if (found != deployment.meta->constEnd() && found->string)
            return found->string;
    }
    return std::nullopt;
}

bool isHorizontalSpace(QChar c) {
    return c == u'\t' || c.category() == QChar::Separator_Space;
}

QString trimmedHorizontally(const QString& text) {
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isHorizontalSpace(text[begin]))
        ++begin;
    while (end > begin && isHorizontalSpace(text[end - 1]))
        --end;
    return text.sliced(begin, end - begin);
}

// The first non-empty line. A line feed right after a carriage return belongs to a CRLF pair,
// which counts as one character that is not a line feed, so CRLF text stays whole.
QString firstLine(const QString& message) {
    const qsizetype size = message.size();
    auto isBreak = [&](qsizetype i) {
        return message[i] == u'\n' && (i == 0 || message[i - 1] != u'\r');
    };
    qsizetype begin = 0;
    while (begin < size && isBreak(begin))
        ++begin;
    if (begin == size)
        return message;
    qsizetype end = begin;
    while (end < size && !isBreak(end))
        ++end;
    return message.sliced(begin, end - begin);
}

} // namespace

DeployStatus VercelDeployment::status() const {
    const QString raw = readyState.value_or(state.value_or(QString()));
    return deployStatusFromRaw(raw.toUpper()).value_or(DeployStatus::unknown);
}

QString VercelDeployment::statusTitle(bool french) const {
    const DeployStatus known = status();
    if (known != DeployStatus::unknown)
        return title(known, french);
    const QString raw = readyState.value_or(state.value_or(QString())).trimmed().toUpper();
    if (raw.isEmpty())
        return french ? QStringLiteral("État inconnu") : QStringLiteral("State unknown");
    return (french ? QStringLiteral("État ") : QStringLiteral("State ")) + raw;
}

QString VercelDeployment::deploymentID() const {
    return id.value_or(uid.value_or(QString()));
}

std::optional<QString> VercelDeployment::branch() const {
    return metaText(*this,
                    {QLatin1StringView("githubCommitRef"), QLatin1StringView("gitlabCommitRef"),
                     QLatin1StringView("bitbucketCommitRef")});
}

std::optional<QString> VercelDeployment::shortSHA() const {
    const std::optional<QString> sha = commitSHA();
    if (!sha)
        return std::nullopt;
    return sha->left(7);
}

std::optional<QString> VercelDeployment::commitSHA() const {
    return metaText(*this,
                    {QLatin1StringView("githubCommitSha"), QLatin1StringView("gitlabCommitSha"),
                     QLatin1StringView("bitbucketCommitSha")});
}

std::optional<QString> VercelDeployment::commitTitle() const {
    const std::optional<QString> message = metaText(
        *this, {QLatin1StringView("githubCommitMessage"), QLatin1StringView("gitlabCommitMessage"),
                QLatin1StringView("bitbucketCommitMessage")});
    if (!message)
        return std::nullopt;
    return trimmedHorizontally(firstLine(*message));
}

std::optional<double> VercelDeployment::startedAt() const {
    if (buildingAt)
        return buildingAt;
    if (createdAt)
        return createdAt;
    return created;
}

std::optional<double> VercelDeployment::buildDuration() const {
    const std::optional<double> start = startedAt();
    if (!ready || !start)
        return std::nullopt;
    return std::max(0.0, (*ready - *start) / 1000.0);
}

bool VercelDeployment::isProduction() const {
    return target == QLatin1StringView("production");
}
