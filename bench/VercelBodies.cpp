#include "VercelBodies.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

const double baseMs = 1'732'351'200'000.0;
const char* const states[] = {"READY", "READY", "READY", "ERROR", "BUILDING", "QUEUED", "CANCELED"};

QString id(const char* prefix, int n) {
    return QString::fromLatin1(prefix) + QStringLiteral("%1Hk2vQbN3cXyZ9aP%2").arg(n).arg(n * 7);
}

QJsonObject creator(int n) {
    return {{"uid", id("u_", n % 5)},
            {"email", QStringLiteral("dev%1@acme.dev").arg(n % 5)},
            {"username", QStringLiteral("dev%1").arg(n % 5)},
            {"githubLogin", QStringLiteral("dev%1").arg(n % 5)}};
}

QJsonObject gitMeta(int n) {
    const QString sha = QStringLiteral("%1").arg(0x4f9c2a7bu + static_cast<unsigned>(n) * 977, 8,
                                                 16, QLatin1Char('0')) +
                        QStringLiteral("e0d1e6f3a2b4c5d6e7f8091a2b3c4d5e");
    return {{"githubCommitAuthorName", "Ana Lima"},
            {"githubCommitAuthorLogin", "ana"},
            {"githubCommitMessage",
             QStringLiteral("Fix checkout rounding for order %1\n\nThe total was off by one cent "
                            "when a discount applied to a bundle.\r\nCloses #%1")
                 .arg(400 + n)},
            {"githubCommitOrg", "acme"},
            {"githubCommitRef",
             n % 3 == 0 ? QStringLiteral("main") : QStringLiteral("feat/cart-%1").arg(n)},
            {"githubCommitRepo", "storefront"},
            {"githubCommitRepoId", "583920117"},
            {"githubCommitSha", sha},
            {"githubDeployment", "1"},
            {"githubOrg", "acme"},
            {"githubRepo", "storefront"},
            {"githubRepoId", 583920117},
            {"githubRepoOwnerType", "Organization"},
            {"githubPrId", n % 3 == 0 ? QJsonValue() : QJsonValue(100 + n)},
            {"branchAlias", QStringLiteral("storefront-git-feat-cart-%1-acme.vercel.app").arg(n)}};
}

QJsonObject deployment(int n) {
    const double created = baseMs - n * 3'600'000.0;
    const char* state = states[n % 7];
    const bool production = n % 4 == 0;
    QJsonObject d{
        {"uid", id("dpl_", n)},
        {"name", "storefront"},
        {"projectId", id("prj_", n % 12)},
        {"url", QStringLiteral("storefront-%1-acme.vercel.app").arg(n)},
        {"created", created},
        {"createdAt", created},
        {"buildingAt", created + 1250.5},
        {"ready", created + 90'000},
        {"source", "git"},
        {"state", state},
        {"readyState", state},
        {"readySubstate", production ? QJsonValue("PROMOTED") : QJsonValue()},
        {"type", "LAMBDAS"},
        {"creator", creator(n)},
        {"inspectorUrl", QStringLiteral("https://vercel.com/acme/storefront/%1").arg(id("", n))},
        {"meta", gitMeta(n)},
        {"target", production ? QJsonValue("production") : QJsonValue()},
        {"aliasError", QJsonValue()},
        {"aliasAssigned", created + 91'000},
        {"isRollbackCandidate", production},
        {"connectBuildsEnabled", false},
        {"checksState", "completed"},
        {"checksConclusion", "succeeded"},
        {"projectSettings", QJsonObject{{"framework", "nextjs"},
                                        {"commandForIgnoringBuildStep", QJsonValue()},
                                        {"installCommand", QJsonValue()},
                                        {"buildCommand", "next build"}}},
        {"defaultRoute", "/"},
    };
    return d;
}

// The smaller deployment record that /v9/projects nests.
QJsonObject latestDeployment(int project, int n) {
    const double created = baseMs - (project * 10 + n) * 600'000.0;
    return {{"id", id("dpl_", project * 10 + n)},
            {"createdAt", created},
            {"createdIn", "iad1"},
            {"creator", creator(n)},
            {"deploymentHostname", QStringLiteral("site-%1-%2-acme").arg(project).arg(n)},
            {"name", QStringLiteral("site-%1").arg(project)},
            {"plan", "pro"},
            {"private", true},
            {"readyState", states[(project + n) % 7]},
            {"readySubstate", "PROMOTED"},
            {"type", "LAMBDAS"},
            {"url", QStringLiteral("site-%1-%2-acme.vercel.app").arg(project).arg(n)},
            {"userId", id("u_", n)},
            {"buildingAt", created + 900},
            {"readyAt", created + 45'000},
            {"target", n == 0 ? QJsonValue("production") : QJsonValue()},
            {"alias", QJsonArray{QStringLiteral("site-%1.acme.dev").arg(project)}},
            {"aliasAssigned", true},
            {"aliasError", QJsonValue()},
            {"meta", gitMeta(project + n)}};
}

QJsonObject project(int n) {
    QJsonArray latest;
    for (int i = 0; i < 3; ++i)
        latest.append(latestDeployment(n, i));
    return {
        {"accountId", "team_acme"},
        {"id", id("prj_", n)},
        {"name", QStringLiteral("site-%1").arg(n)},
        {"framework", n % 2 ? QJsonValue("nextjs") : QJsonValue()},
        {"nodeVersion", "20.x"},
        {"createdAt", baseMs - n * 86'400'000.0},
        {"updatedAt", baseMs - n * 3'600'000.0},
        {"devCommand", QJsonValue()},
        {"buildCommand", QJsonValue()},
        {"installCommand", QJsonValue()},
        {"outputDirectory", QJsonValue()},
        {"rootDirectory", QJsonValue()},
        {"directoryListing", false},
        {"autoExposeSystemEnvs", true},
        {"serverlessFunctionRegion", "iad1"},
        {"live", false},
        {"crons", QJsonObject{{"enabledAt", baseMs},
                              {"disabledAt", QJsonValue()},
                              {"updatedAt", baseMs},
                              {"deploymentId", id("dpl_", n)},
                              {"definitions", QJsonArray()}}},
        {"link", QJsonObject{{"type", "github"},
                             {"repo", QStringLiteral("site-%1").arg(n)},
                             {"repoId", 583920117 + n},
                             {"org", "acme"},
                             {"productionBranch", "main"},
                             {"deployHooks", QJsonArray()},
                             {"gitCredentialId", ""},
                             {"sourceless", true}}},
        {"latestDeployments", latest},
        {"targets", QJsonObject{{"production", latestDeployment(n, 0)}}},
        {"resourceConfig", QJsonObject{{"functionDefaultRegions", QJsonArray{"iad1"}}}},
        {"deploymentExpiration", QJsonObject{{"expirationDays", 180}}},
        {"ssoProtection", QJsonObject{{"deploymentType", "preview"}}},
    };
}

QByteArray compact(const QJsonObject& body) {
    return QJsonDocument(body).toJson(QJsonDocument::Compact);
}

} // namespace

QByteArray deploymentsPage(int count) {
    QJsonArray deployments;
    for (int n = 0; n < count; ++n)
        deployments.append(deployment(n));
    return compact({{"deployments", deployments},
                    {"pagination", QJsonObject{{"count", count},
                                               {"next", baseMs - count * 3'600'000.0},
                                               {"prev", QJsonValue()}}}});
}

QByteArray projectsPage(int count) {
    QJsonArray projects;
    for (int n = 0; n < count; ++n)
        projects.append(project(n));
    return compact(
        {{"projects", projects},
         {"pagination",
          QJsonObject{{"count", count}, {"next", QJsonValue()}, {"prev", QJsonValue()}}}});
}
