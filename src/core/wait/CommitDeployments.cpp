#include "core/wait/CommitDeployments.h"

#include "core/vercel/VercelPages.h"

namespace {

constexpr int kPageSize = 100;

double createdOf(const VercelDeployment& deployment) {
    return deployment.createdAt.value_or(deployment.created.value_or(0));
}

// Of the deployments of `commit`, the one created last (a redeploy comes after the first).
std::optional<VercelDeployment> newestOf(const QList<VercelDeployment>& deployments,
                                         const CommitHash& commit) {
    std::optional<VercelDeployment> newest;
    for (const VercelDeployment& deployment : deployments) {
        const std::optional<QString> sha = deployment.commitSHA();
        if (sha && commit.matches(*sha) && (!newest || createdOf(deployment) > createdOf(*newest)))
            newest = deployment;
    }
    return newest;
}

} // namespace

std::optional<QString> commitShaKey(const std::optional<VercelGitLink>& link) {
    const QString type = link ? link->type.value_or(QString()) : QString();
    if (type.startsWith(QLatin1String("github")))
        return QStringLiteral("githubCommitSha");
    if (type == QLatin1String("gitlab"))
        return QStringLiteral("gitlabCommitSha");
    if (type == QLatin1String("bitbucket"))
        return QStringLiteral("bitbucketCommitSha");
    return std::nullopt;
}

QCoro::Task<RequestResult<std::optional<VercelDeployment>>>
findCommitDeployment(VercelAPI api, LinkedProject project, CommitHash commit, int pages) {
    VercelAPI::Query query{{QStringLiteral("limit"), QString::number(kPageSize)},
                           {QStringLiteral("projectId"), project.ref.id}};
    const std::optional<QString> key = commitShaKey(project.link);
    const bool filtered = key && commit.isWhole();
    if (filtered)
        query.append({QStringLiteral("meta-") + *key, commit.text()});
    const qsizetype enough = filtered ? 1 : qsizetype(pages) * kPageSize;
    const RequestResult<DeploymentsResponse> listed = co_await getPages<DeploymentsResponse>(
        std::move(api), QStringLiteral("/v6/deployments"),
        VercelAPI::withTeam(project.ref.teamId, std::move(query)),
        [&commit, enough](const DeploymentsResponse& soFar) {
            return soFar.deployments.size() < enough && !newestOf(soFar.deployments, commit);
        });
    if (!listed)
        co_return listed.error();
    co_return newestOf(listed->deployments, commit);
}
