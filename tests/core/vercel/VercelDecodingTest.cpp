#include "core/vercel/VercelDecoding.h"

#include <gtest/gtest.h>

namespace {

// Shaped like a real /v6/deployments page: `uid` instead of `id`, preview targets sent as
// null, meta values of every kind, and plenty of keys we never read.
const QByteArray deploymentsBody = R"({
  "deployments": [
    {
      "uid": "dpl_7Hk2vQbN3cXyZ9aP",
      "name": "storefront",
      "projectId": "prj_Qx81mLrT0aa",
      "url": "storefront-3kd9s2-acme.vercel.app",
      "created": 1732351200000,
      "createdAt": 1732351200000,
      "buildingAt": 1732351201250.5,
      "ready": 1732351290000,
      "source": "git",
      "state": "READY",
      "readyState": "READY",
      "readySubstate": "PROMOTED",
      "type": "LAMBDAS",
      "creator": {"uid": "u_91", "email": "ana@acme.dev", "username": "ana", "githubLogin": "ana"},
      "inspectorUrl": "https://vercel.com/acme/storefront/7Hk2vQbN3cXyZ9aP",
      "meta": {
        "githubCommitAuthorName": "Ana Lima",
        "githubCommitMessage": "Fix checkout rounding\n\nCloses #412",
        "githubCommitRef": "main",
        "githubCommitSha": "4f9c2a7be0d1e6f3a2b4c5d6e7f8091a2b3c4d5e",
        "githubRepoId": 583920117,
        "githubDeployment": "1",
        "githubPrId": null,
        "branchAlias": ["storefront-git-main-acme.vercel.app"]
      },
      "target": "production",
      "aliasError": null,
      "aliasAssigned": 1732351291000,
      "isRollbackCandidate": true,
      "projectSettings": {"framework": "nextjs", "commandForIgnoringBuildStep": null},
      "checksState": "completed"
    },
    {
      "uid": "dpl_2euZBFqxYdDMDG1j",
      "name": "storefront",
      "url": "storefront-git-feat-acme.vercel.app",
      "created": 1732350000000,
      "state": "BUILDING",
      "type": "LAMBDAS",
      "target": null,
      "inspectorUrl": null,
      "meta": {"gitlabCommitRef": "feat/cart", "gitlabCommitSha": "a1b2c3d"},
      "oomReport": null
    }
  ],
  "pagination": {"count": 2, "next": 1732349999999, "prev": null}
})";

const QByteArray projectsBody = R"({
  "projects": [
    {
      "accountId": "team_acme",
      "id": "prj_Qx81mLrT0aa",
      "name": "storefront",
      "framework": "nextjs",
      "nodeVersion": "20.x",
      "crons": {"enabledAt": 1730000000000, "definitions": []},
      "latestDeployments": [
        {
          "id": "dpl_7Hk2vQbN3cXyZ9aP",
          "createdAt": 1732351200000,
          "createdIn": "iad1",
          "creator": {"email": "ana@acme.dev", "uid": "u_91", "username": "ana"},
          "deploymentHostname": "storefront-3kd9s2-acme",
          "name": "storefront",
          "plan": "pro",
          "private": true,
          "readyState": "READY",
          "type": "LAMBDAS",
          "url": "storefront-3kd9s2-acme.vercel.app",
          "userId": "u_91",
          "alias": ["storefront.acme.dev"],
          "aliasAssigned": true,
          "meta": {"githubCommitRef": "main"}
        }
      ]
    },
    {"id": "prj_empty", "name": "docs", "latestDeployments": null, "link": {"type": "github"}},
    {"id": "prj_new", "name": "landing"}
  ],
  "pagination": {"count": 3, "next": null, "prev": null}
})";

// Replaces the first occurrence of `from` in `body`, checking it was there.
QByteArray edited(QByteArray body, const QByteArray& from, const QByteArray& to) {
    const qsizetype at = body.indexOf(from);
    EXPECT_GE(at, 0) << from.constData();
    return body.replace(at, from.size(), to);
}

} // namespace

TEST(VercelDecoding, DeploymentsPageKeepsWhatWeReadAndIgnoresTheRest) {
    const auto decoded = decodeResponse<DeploymentsResponse>(deploymentsBody);
    ASSERT_TRUE(decoded);
    ASSERT_EQ(decoded->deployments.size(), 2);

    const VercelDeployment& ready = decoded->deployments[0];
    EXPECT_FALSE(ready.id);
    EXPECT_EQ(ready.uid, "dpl_7Hk2vQbN3cXyZ9aP");
    EXPECT_EQ(ready.projectId, "prj_Qx81mLrT0aa");
    EXPECT_EQ(ready.buildingAt, 1732351201250.5);
    EXPECT_EQ(ready.ready, 1732351290000.0);
    EXPECT_EQ(ready.target, "production");
    ASSERT_TRUE(ready.meta);
    // Only the git keys are kept; the others are never read.
    EXPECT_EQ(ready.meta->keys(),
              QStringList({"githubCommitMessage", "githubCommitRef", "githubCommitSha"}));

    const VercelDeployment& building = decoded->deployments[1];
    EXPECT_EQ(building.state, "BUILDING");
    EXPECT_FALSE(building.readyState);
    EXPECT_FALSE(building.target);
    EXPECT_FALSE(building.inspectorUrl);
    EXPECT_FALSE(building.createdAt);
    EXPECT_EQ(building.created, 1732350000000.0);
}

TEST(VercelDecoding, ProjectsWithAndWithoutLatestDeployments) {
    const auto decoded = decodeResponse<ProjectsResponse>(projectsBody);
    ASSERT_TRUE(decoded);
    ASSERT_EQ(decoded->projects.size(), 3);
    EXPECT_EQ(decoded->projects[0].name, "storefront");
    ASSERT_TRUE(decoded->projects[0].latestDeployments);
    ASSERT_EQ(decoded->projects[0].latestDeployments->size(), 1);
    EXPECT_EQ(decoded->projects[0].latestDeployments->front().id, "dpl_7Hk2vQbN3cXyZ9aP");
    EXPECT_FALSE(decoded->projects[1].latestDeployments); // null
    EXPECT_FALSE(decoded->projects[2].latestDeployments); // missing
    EXPECT_TRUE(decodeResponse<ProjectsResponse>(R"({"projects": []})"));
}

TEST(VercelDecoding, OneWrongKindAnywhereFailsTheWholeBody) {
    // Deep inside the second deployment, in an optional field.
    EXPECT_FALSE(decodeResponse<DeploymentsResponse>(
        edited(deploymentsBody, R"("created": 1732350000000)", R"("created": "1732350000000")")));
    // A time stamp sent as text inside a project's latest deployment.
    EXPECT_FALSE(decodeResponse<ProjectsResponse>(
        edited(projectsBody, R"("createdAt": 1732351200000)", R"("createdAt": "123")")));
    EXPECT_FALSE(decodeResponse<DeploymentsResponse>(
        edited(deploymentsBody, R"("target": null)", R"("target": ["preview"])")));
    EXPECT_FALSE(decodeResponse<DeploymentsResponse>(
        edited(deploymentsBody, R"("meta": {"gitlab)", R"("meta": [], "x": {"gitlab)")));
    EXPECT_FALSE(decodeResponse<ProjectsResponse>(
        edited(projectsBody, R"("latestDeployments": null)", R"("latestDeployments": {})")));
    EXPECT_FALSE(
        decodeResponse<ProjectsResponse>(edited(projectsBody, R"("id": "prj_new")", R"("id": 7)")));
    // A list element that is not a record.
    EXPECT_FALSE(decodeResponse<DeploymentsResponse>(R"({"deployments": [{}, null]})"));
    EXPECT_FALSE(decodeResponse<DeploymentsResponse>(R"({"deployments": {"uid": "dpl_1"}})"));
    // Keys we do not read may hold anything.
    EXPECT_TRUE(decodeResponse<DeploymentsResponse>(
        edited(deploymentsBody, R"("checksState": "completed")", R"("checksState": [1, {}])")));
}

TEST(VercelDecoding, RequiredFieldsMustBePresentAndNotNull) {
    EXPECT_FALSE(decodeResponse<ProjectsResponse>(
        edited(projectsBody, R"({"id": "prj_new", "name": "landing"})", R"({"id": "prj_new"})")));
    EXPECT_FALSE(decodeResponse<ProjectsResponse>(
        edited(projectsBody, R"("name": "landing")", R"("name": null)")));
    EXPECT_FALSE(decodeResponse<ProjectsResponse>(R"({"pagination": {}})"));
    EXPECT_FALSE(decodeResponse<ProjectsResponse>(R"({"projects": null})"));
    EXPECT_FALSE(decodeResponse<DeploymentsResponse>(R"({"Deployments": []})"));

    EXPECT_FALSE(decodeResponse<TeamsResponse>(R"({"teams": [{"id": "team_1", "name": "A"}]})"));
    const auto teams = decodeResponse<TeamsResponse>(
        R"({"teams": [{"id": "team_1", "slug": "acme", "name": null, "avatar": null,
                       "membership": {"role": "OWNER", "confirmed": true}}],
            "pagination": {"count": 1, "next": null, "prev": null}})");
    ASSERT_TRUE(teams);
    ASSERT_EQ(teams->teams.size(), 1);
    EXPECT_EQ(teams->teams[0].slug, "acme");
    EXPECT_FALSE(teams->teams[0].name);

    EXPECT_FALSE(decodeResponse<UserResponse>(R"({"user": {"email": "ana@acme.dev"}})"));
    EXPECT_FALSE(decodeResponse<UserResponse>(R"({"user": null})"));
    const auto user = decodeResponse<UserResponse>(
        R"({"user": {"id": "u_91", "username": "ana", "email": "ana@acme.dev", "name": null,
                     "defaultTeamId": "team_1", "softBlock": null, "billing": {"plan": "hobby"}}})");
    ASSERT_TRUE(user);
    EXPECT_EQ(user->user.username, "ana");
    EXPECT_EQ(user->user.defaultTeamId, "team_1");
    EXPECT_FALSE(user->user.name);
}

TEST(VercelDecoding, TokenExpiryIsOptional) {
    const auto lasting = decodeResponse<TokenInfoResponse>(
        R"({"token": {"id": "tok_1", "name": "quillon", "type": "oauth2-token",
                      "origin": "manual", "scopes": [{"type": "user"}], "expiresAt": null,
                      "activeAt": 1732000000000, "createdAt": 1731000000000}})");
    ASSERT_TRUE(lasting);
    EXPECT_EQ(lasting->token.name, "quillon");
    EXPECT_FALSE(lasting->token.expiresAt);

    const auto expiring =
        decodeResponse<TokenInfoResponse>(R"({"token": {"expiresAt": 1735689600000.25}})");
    ASSERT_TRUE(expiring);
    EXPECT_EQ(expiring->token.expiresAt, 1735689600000.25);
    EXPECT_FALSE(expiring->token.id);
    EXPECT_FALSE(decodeResponse<TokenInfoResponse>(R"({"token": {"expiresAt": "never"}})"));
}

TEST(VercelDecoding, BuildEventsAreABareArray) {
    const auto events = decodeResponse<BuildEventList>(R"([
      {"type": "command", "created": 1732351201300, "payload": {"text": "npm run build",
       "deploymentId": "dpl_7Hk2", "date": 1732351201300, "serial": "1"}},
      {"type": "stdout", "created": 1732351202000.5,
       "text": "\u001b[31mError:\u001b[39m Cannot find module 'sharp'\r\n", "payload": null},
      {"type": "delimiter", "created": 1732351203000, "payload": {"text": null, "info": {}}}
    ])");
    ASSERT_TRUE(events);
    ASSERT_EQ(events->size(), 3);
    EXPECT_EQ((*events)[0].payload->text, "npm run build");
    EXPECT_FALSE((*events)[0].text);
    EXPECT_EQ((*events)[1].text, QStringLiteral("\x1b[31mError:\x1b[39m Cannot find module "
                                                "'sharp'\r\n"));
    EXPECT_FALSE((*events)[1].payload);
    ASSERT_TRUE((*events)[2].payload);
    EXPECT_FALSE((*events)[2].payload->text);

    EXPECT_FALSE(decodeResponse<BuildEventList>(R"({"events": []})"));
    EXPECT_FALSE(decodeResponse<BuildEventList>(R"([{"type": "stdout", "payload": "text"}])"));
    // Kept or not, every member we know is checked for its kind.
    EXPECT_FALSE(decodeResponse<BuildEventList>(R"([{"type": 1, "text": "a"}])"));
    EXPECT_FALSE(decodeResponse<BuildEventList>(R"([{"created": "1732351201300", "text": "a"}])"));
    EXPECT_TRUE(decodeResponse<BuildEventList>("[]"));
}

TEST(VercelDecoding, BrokenJsonFails) {
    EXPECT_FALSE(decodeResponse<DeploymentsResponse>(""));
    EXPECT_FALSE(decodeResponse<DeploymentsResponse>(deploymentsBody.chopped(1)));
    EXPECT_FALSE(decodeResponse<DeploymentsResponse>(deploymentsBody + "{}"));
    EXPECT_FALSE(decodeResponse<DeploymentsResponse>("<html>502 Bad Gateway</html>"));
    EXPECT_TRUE(decodeResponse<DeploymentsResponse>(" \r\n\t" + deploymentsBody + "\n"));
}

namespace {

// The text a meta value gives, read back through the commit-hash key.
std::optional<QString> scalarText(const char* json) {
    const QByteArray body =
        QByteArray(R"({"deployments": [{"meta": {"githubCommitSha": )") + json + "}}]}";
    const auto decoded = decodeResponse<DeploymentsResponse>(body);
    EXPECT_TRUE(decoded) << json;
    if (!decoded)
        return std::nullopt;
    const auto& meta = *decoded->deployments[0].meta;
    EXPECT_TRUE(meta.contains("githubCommitSha")) << json;
    return meta.value("githubCommitSha").string;
}

} // namespace

TEST(JSONScalar, EveryJsonKindGivesTextOrNothing) {
    EXPECT_EQ(scalarText(R"("main")"), "main");
    EXPECT_EQ(scalarText(R"("")"), "");
    EXPECT_EQ(scalarText("1234567890123"), "1234567890123");
    EXPECT_EQ(scalarText("-42"), "-42");
    EXPECT_EQ(scalarText("-0"), "0");
    EXPECT_EQ(scalarText("9223372036854775807"), "9223372036854775807");
    EXPECT_EQ(scalarText("-9223372036854775808"), "-9223372036854775808");
    EXPECT_EQ(scalarText("1e20"), "1e+20");
    EXPECT_EQ(scalarText("true"), "true");
    EXPECT_EQ(scalarText("false"), "false");
    EXPECT_EQ(scalarText("1.5"), "1.5");
    EXPECT_EQ(scalarText("0.1"), "0.1");
    EXPECT_EQ(scalarText("2.0"), "2");
    EXPECT_EQ(scalarText("1E3"), "1000");
    EXPECT_EQ(scalarText("-0.25"), "-0.25");
    for (const char* json : {"null", R"(["a"])", R"({"a": 1})"})
        EXPECT_FALSE(scalarText(json)) << json;
}
