#include "core/vercel/VercelDecoding.h"

#include <gtest/gtest.h>

namespace {

// Shaped like a real /v6/deployments page: `uid` instead of `id`, preview targets sent as null,
// meta values of every kind, and plenty of keys we never read.
const QByteArray deploymentsBody = R"({
  "deployments": [
    {
      "uid": "dpl_7Hk2vQbN3cXyZ9aP", "name": "storefront", "projectId": "prj_Qx81mLrT0aa",
      "url": "storefront-3kd9s2-acme.vercel.app", "created": 1732351200000,
      "createdAt": 1732351200000, "buildingAt": 1732351201250.5, "ready": 1732351290000,
      "source": "git", "state": "READY", "readyState": "READY", "readySubstate": "PROMOTED",
      "creator": {"uid": "u_91", "email": "ana@acme.dev", "username": "ana"},
      "inspectorUrl": "https://vercel.com/acme/storefront/7Hk2vQbN3cXyZ9aP",
      "meta": {
        "githubCommitAuthorName": "Ana Lima", "githubCommitMessage": "Fix rounding\n\nCloses #412",
        "githubCommitRef": "main", "githubCommitSha": "4f9c2a7be0d1e6f3a2b4c5d6e7f8091a2b3c4d5e",
        "githubRepoId": 583920117, "githubPrId": null,
        "branchAlias": ["storefront-git-main-acme.vercel.app"]
      },
      "target": "production", "aliasError": null, "isRollbackCandidate": true,
      "projectSettings": {"framework": "nextjs", "commandForIgnoringBuildStep": null},
      "checksState": "completed"
    },
    {
      "uid": "dpl_2euZBFqxYdDMDG1j", "name": "storefront", "created": 1732350000000,
      "state": "BUILDING", "target": null, "inspectorUrl": null,
      "meta": {"gitlabCommitRef": "feat/cart", "gitlabCommitSha": "a1b2c3d"}, "oomReport": null
    }
  ],
  "pagination": {"count": 2, "next": 1732349999999, "prev": null}
})";

const QByteArray projectsBody = R"({
  "projects": [
    {
      "accountId": "team_acme", "id": "prj_Qx81mLrT0aa", "name": "storefront",
      "crons": {"enabledAt": 1730000000000, "definitions": []},
      "latestDeployments": [
        {"id": "dpl_7Hk2vQbN3cXyZ9aP", "createdAt": 1732351200000, "createdIn": "iad1",
         "creator": {"uid": "u_91"}, "private": true, "readyState": "READY",
         "alias": ["storefront.acme.dev"], "aliasAssigned": true, "meta": {"githubCommitRef": "main"}}
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

TEST(VercelDecoding, PagesKeepWhatWeReadAndIgnoreTheRest) {
    const auto decoded = decodeResponse<DeploymentsResponse>(" \r\n\t" + deploymentsBody + "\n");
    ASSERT_TRUE(decoded);
    ASSERT_EQ(decoded->deployments.size(), 2);
    const VercelDeployment& ready = decoded->deployments[0];
    EXPECT_FALSE(ready.id);
    EXPECT_EQ(ready.uid, "dpl_7Hk2vQbN3cXyZ9aP");
    EXPECT_EQ(ready.projectId, "prj_Qx81mLrT0aa");
    EXPECT_EQ(ready.buildingAt, 1732351201250.5);
    EXPECT_EQ(ready.ready, 1732351290000.0);
    EXPECT_EQ(ready.target, "production");
    EXPECT_EQ(ready.creatorUid, "u_91"); // whose deployment it is; the rest of `creator` unread
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
    EXPECT_EQ(decoded->next, 1732349999999.0); // passed back as "until" for the next page
    EXPECT_FALSE(building.creatorUid);

    const auto projects = decodeResponse<ProjectsResponse>(projectsBody);
    ASSERT_TRUE(projects);
    ASSERT_EQ(projects->projects.size(), 3);
    ASSERT_TRUE(projects->projects[0].latestDeployments);
    ASSERT_EQ(projects->projects[0].latestDeployments->size(), 1);
    EXPECT_EQ(projects->projects[0].latestDeployments->front().id, "dpl_7Hk2vQbN3cXyZ9aP");
    EXPECT_FALSE(projects->projects[1].latestDeployments); // null
    EXPECT_FALSE(projects->projects[2].latestDeployments); // missing
    EXPECT_FALSE(projects->next);                          // the last page
    // Keys we do not read may hold anything.
    EXPECT_TRUE(decodeResponse<DeploymentsResponse>(
        edited(deploymentsBody, R"("checksState": "completed")", R"("checksState": [1, {}])")));
}

// One wrong kind anywhere, a required member missing or null, or broken JSON fails the whole body.
TEST(VercelDecoding, AnyWrongKindMissingMemberOrBrokenJsonFailsTheBody) {
    const QList<QByteArray> deployments{
        edited(deploymentsBody, R"("created": 1732350000000)", R"("created": "1732350000000")"),
        edited(deploymentsBody, R"("target": null)", R"("target": ["preview"])"),
        edited(deploymentsBody, R"("meta": {"gitlab)", R"("meta": [], "x": {"gitlab)"),
        edited(deploymentsBody, R"("uid": "dpl_2eu)", R"("uid": 2, "x": "dpl_2eu)"),
        edited(deploymentsBody, R"("next": 1732349999999)", R"("next": "1732349999999")"),
        edited(deploymentsBody, R"("pagination": {)", R"("pagination": [], "x": {)"),
        edited(deploymentsBody, R"("oomReport": null)", R"("readyStateReason": ["no seat"])"),
        edited(deploymentsBody, R"({"uid": "u_91", )", R"({"uid": 91, )"),
        edited(deploymentsBody, R"("oomReport": null)", R"("creator": "u_91")"),
        R"({"deployments": [{}, null]})",
        R"({"deployments": {"uid": "dpl_1"}})",
        R"({"Deployments": []})",
        "",
        deploymentsBody.chopped(1),
        deploymentsBody + "{}",
        "<html>502 Bad Gateway</html>",
    };
    for (const QByteArray& body : deployments)
        EXPECT_FALSE(decodeResponse<DeploymentsResponse>(body)) << body.left(300).constData();
    const QList<QByteArray> projects{
        edited(projectsBody, R"("createdAt": 1732351200000)", R"("createdAt": "123")"),
        edited(projectsBody, R"("latestDeployments": null)", R"("latestDeployments": {})"),
        edited(projectsBody, R"("id": "prj_new")", R"("id": 7)"),
        edited(projectsBody, R"({"id": "prj_new", "name": "landing"})", R"({"id": "prj_new"})"),
        edited(projectsBody, R"("name": "landing")", R"("name": null)"),
        R"({"pagination": {}})",
        R"({"projects": null})",
    };
    for (const QByteArray& body : projects)
        EXPECT_FALSE(decodeResponse<ProjectsResponse>(body)) << body.left(300).constData();
    EXPECT_FALSE(decodeResponse<TeamsResponse>(R"({"teams": [{"id": "team_1", "name": "A"}]})"));
    for (const char* limited :
         {R"("limited": "yes")", R"("limitedBy": "mfa")", R"("limitedBy": [1])", R"("saml": true)",
          R"("saml": {"enforced": "true"})"})
        EXPECT_FALSE(decodeResponse<TeamsResponse>(
            QByteArray(R"({"teams": [{"id": "team_1", "slug": "a", )") + limited + "}]}"))
            << limited;
    EXPECT_FALSE(decodeResponse<UserResponse>(R"({"user": {"email": "ana@acme.dev"}})"));
    EXPECT_FALSE(decodeResponse<UserResponse>(R"({"user": null})"));
    EXPECT_FALSE(decodeResponse<TokenInfoResponse>(R"({"token": {"expiresAt": "never"}})"));
    EXPECT_FALSE(decodeResponse<BuildEventList>(R"({"events": []})"));
    EXPECT_FALSE(decodeResponse<BuildEventList>(R"("events")"));
    EXPECT_FALSE(decodeResponse<BuildEventList>(R"([{"type": "stdout", "payload": "text"}])"));
    // Kept or not, every member we know is checked for its kind.
    EXPECT_FALSE(decodeResponse<BuildEventList>(R"([{"type": 1, "text": "a"}])"));
    EXPECT_FALSE(decodeResponse<BuildEventList>(R"([{"created": "1732351201300", "text": "a"}])"));
}

// Strict JSON parsers refuse some bodies that Qt's parser reads; those decode as Qt reads them,
// and whatever Qt refuses still fails.
TEST(VercelDecoding, BodiesOnlyQtAcceptsDecodeAsQtReadsThem) {
    // One body each, so that no other oddity decides which parser reads it.
    const QList<std::pair<QByteArray, QString>> texts{
        {R"([{"text": "cut \ud83d"}])", "cut " + QString(QChar(0xd83d))}, // a log cut in an emoji
        {R"([{"text": "\udc00"}])", QString(QChar(0xdc00))},
        {R"([{"text": "\q"}])", "q"},
        {"[{\"text\": \"a\tb\x01\"}]", QStringLiteral("a\tb\x01")}, // raw control characters
        {R"([{"text": 1, "text": "last"}])", "last"}, // of duplicate keys the last counts
    };
    for (const auto& [body, text] : texts) {
        const auto events = decodeResponse<BuildEventList>(body);
        ASSERT_TRUE(events) << body.constData();
        EXPECT_EQ(events->value(0).text, text) << body.constData();
    }
    const QByteArray nested = QByteArray(1023, '[') + QByteArray(1023, ']');
    EXPECT_TRUE(decodeResponse<TeamsResponse>(R"({"teams": [], "x": )" + nested + "}"));
    for (const QByteArray& refused : {
             QByteArray(R"({"teams": [], "x": [)" + nested + "]}"), // nested deeper than Qt reads
             QByteArray(R"({"teams": [], "x": 1e-400})"),
             QByteArray(R"({"teams": [], "x": 1e400})"),
             QByteArray("{\"teams\": [], \"x\": \"\xff\"}"), // not UTF-8
             QByteArray("{\"teams\": [], \"x\": \"\xf0"),    // cut inside a character
             QByteArray("{\"teams\": []}\0", 14),
         })
        EXPECT_FALSE(decodeResponse<TeamsResponse>(refused)) << refused.right(40).constData();
}

// Teams, user and token expiry reach the engine from the fake account; here what it never sends.
TEST(VercelDecoding, TokenIdsAndBuildEventsMayBeMissingOrNull) {
    const auto expiring =
        decodeResponse<TokenInfoResponse>(R"({"token": {"expiresAt": 1735689600000.25}})");
    ASSERT_TRUE(expiring);
    EXPECT_EQ(expiring->token.expiresAt, 1735689600000.25);
    EXPECT_FALSE(expiring->token.id);
    const auto events = decodeResponse<BuildEventList>(R"([
      {"type": "command", "created": 1732351201300, "payload": {"text": "npm run build",
       "deploymentId": "dpl_7Hk2", "serial": "1"}},
      {"type": "stdout", "text": "\u001b[31mError:\u001b[39m no 'sharp'\r\n", "payload": null},
      {"type": "delimiter", "created": 1732351203000, "payload": {"text": null, "info": {}}}
    ])");
    ASSERT_TRUE(events);
    ASSERT_EQ(events->size(), 3);
    EXPECT_EQ((*events)[0].payload->text, "npm run build");
    EXPECT_FALSE((*events)[0].text);
    EXPECT_EQ((*events)[1].text, QStringLiteral("\x1b[31mError:\x1b[39m no 'sharp'\r\n"));
    EXPECT_FALSE((*events)[1].payload);
    ASSERT_TRUE((*events)[2].payload);
    EXPECT_FALSE((*events)[2].payload->text);
    EXPECT_TRUE(decodeResponse<BuildEventList>("[]"));
    // The documented type is an array of event or null: a null holds no event, nor does a null
    // body (a log Vercel has not started yet).
    const auto sparse = decodeResponse<BuildEventList>(R"([null, {"text": "a"}, null])");
    ASSERT_TRUE(sparse);
    ASSERT_EQ(sparse->size(), 1);
    EXPECT_EQ(sparse->front().text, "a");
    const auto none = decodeResponse<BuildEventList>(" null ");
    ASSERT_TRUE(none);
    EXPECT_TRUE(none->isEmpty());
}

// What a team the token may not fully read says about itself, and why a deployment was blocked.
TEST(VercelDecoding, LimitedTeamsAndBlockedDeploymentsSayWhy) {
    const auto teams = decodeResponse<TeamsResponse>(R"({"teams": [
      {"id": "team_saml", "slug": "acme", "name": "Acme Team", "limited": true,
       "limitedBy": ["scope"], "saml": {"enforced": true, "connection": {"type": "okta"}},
       "membership": {"role": "MEMBER", "confirmed": true}, "createdAt": 1700000000000},
      {"id": "team_open", "slug": "open", "name": null, "limited": false, "saml": null},
      {"id": "team_mfa", "slug": "secure", "limited": true, "limitedBy": ["mfa"]}
    ], "pagination": {"count": 3, "next": 1699999999999, "prev": null}})");
    ASSERT_TRUE(teams);
    ASSERT_EQ(teams->teams.size(), 3);
    const VercelTeam& saml = teams->teams[0];
    EXPECT_EQ(saml.limited, true);
    EXPECT_EQ(saml.limitedBy, QStringList{"scope"});
    EXPECT_EQ(saml.samlEnforced, true);
    EXPECT_EQ(teams->teams[1].limited, false);
    EXPECT_FALSE(teams->teams[1].samlEnforced);
    EXPECT_EQ(teams->teams[2].limitedBy, QStringList{"mfa"});
    EXPECT_FALSE(teams->teams[2].samlEnforced);
    EXPECT_EQ(teams->next, 1699999999999.0);

    const auto blocked = decodeResponse<DeploymentsResponse>(
        R"({"deployments": [{"uid": "dpl_b", "state": "BLOCKED", "readyStateReason": )"
        R"("Git author ana@acme.dev must have access to the team Acme Team on Vercel."}]})");
    ASSERT_TRUE(blocked);
    EXPECT_TRUE(blocked->deployments[0].readyStateReason->startsWith("Git author ana@"));
    EXPECT_EQ(blocked->deployments[0].status(), DeployStatus::blocked);
}

// What only `wait` reads, a project's git link and a cancel's reason, never costs a page: read
// as text whatever its kind. A single deployment comes bare, and is held to the usual rules.
TEST(VercelDecoding, LinksAndCancelReasonsAreReadWhateverTheirKind) {
    const auto projects = decodeResponse<ProjectsResponse>(R"({"projects": [
      {"id": "p_1", "name": "shop", "link": {"type": "github", "org": "acme", "repo": "shop",
       "repoId": 583920117, "repoOwnerId": 99, "gitCredentialId": "cred_1", "sourceless": true,
       "deployHooks": [], "productionBranch": "main", "createdAt": 1700000000000}},
      {"id": "p_2", "name": "lab", "link": {"type": "gitlab", "projectNamespace": "group/sub",
       "projectName": "Lab", "projectUrl": "https://gitlab.com/group/sub/lab", "projectId": "77",
       "projectOwnerId": 5}},
      {"id": "p_3", "name": "odd", "link": {"type": ["github"], "org": 42, "repo": null}},
      {"id": "p_4", "name": "flat", "link": "github.com/acme/flat"},
      {"id": "p_5", "name": "none", "link": null}
    ]})");
    ASSERT_TRUE(projects);
    const auto& listed = projects->projects;
    ASSERT_EQ(listed.size(), 5);
    EXPECT_EQ(listed[0].link->org, "acme");
    EXPECT_EQ(listed[0].link->repo, "shop");
    EXPECT_EQ(listed[1].link->projectUrl, "https://gitlab.com/group/sub/lab");
    EXPECT_EQ(listed[1].link->projectNamespace, "group/sub");
    ASSERT_TRUE(listed[2].link);
    EXPECT_FALSE(listed[2].link->type);
    EXPECT_EQ(listed[2].link->org, "42");
    EXPECT_FALSE(listed[2].link->repo);
    EXPECT_FALSE(listed[3].link);
    EXPECT_FALSE(listed[4].link);

    const auto canceled = decodeResponse<VercelDeployment>(R"({
      "id": "dpl_c", "readyState": "CANCELED", "createdAt": 1740495809875,
      "errorLink": "https://vercel.com/docs/platform/projects#ignored-build-step",
      "errorMessage": "The Deployment has been canceled as a result of running the command defined in the \"Ignored Build Step\" setting.",
      "errorCode": null, "gitSource": {"type": "github", "sha": "3ec275af"},
      "meta": {"githubCommitSha": "3ec275af1698ba3482f4b7e50161fecbe880002e"}})");
    ASSERT_TRUE(canceled);
    EXPECT_EQ(canceled->deploymentID(), "dpl_c");
    EXPECT_EQ(canceled->status(), DeployStatus::canceled);
    EXPECT_EQ(canceled->errorLink, "https://vercel.com/docs/platform/projects#ignored-build-step");
    EXPECT_TRUE(canceled->errorMessage.value_or("").contains("\"Ignored Build Step\""));
    EXPECT_EQ(canceled->commitSHA(), "3ec275af1698ba3482f4b7e50161fecbe880002e");
    EXPECT_EQ(canceled->shortSHA(), "3ec275a");
    const auto oddReason = decodeResponse<DeploymentsResponse>(
        R"({"deployments": [{"uid": "d", "errorMessage": {"text": "?"}, "errorLink": 7}]})");
    ASSERT_TRUE(oddReason);
    EXPECT_FALSE(oddReason->deployments[0].errorMessage);
    EXPECT_EQ(oddReason->deployments[0].errorLink, "7");
    EXPECT_FALSE(decodeResponse<VercelDeployment>(R"({"id": "d", "createdAt": "123"})"));
    EXPECT_FALSE(decodeResponse<VercelDeployment>(R"([{"id": "d"}])"));
}

// The text a meta value gives, read back through the commit-hash key.
TEST(JSONScalar, EveryJsonKindGivesTextOrNothing) {
    const QList<std::pair<const char*, std::optional<QString>>> cases{
        {R"("main")", "main"},  {R"("")", ""},    {"1234567890123", "1234567890123"},
        {"-42", "-42"},         {"-0", "0"},      {"9223372036854775807", "9223372036854775807"},
        {"1e20", "1e+20"},      {"true", "true"}, {"-9223372036854775808", "-9223372036854775808"},
        {"false", "false"},     {"1.5", "1.5"},   {"18446744073709551616", "18446744073709552000"},
        {"2.0", "2"},           {"1E3", "1000"},  {"1.5e15", "1500000000000000"},
        {"null", std::nullopt}, {R"(["a"])", {}}, {R"({"a": 1})", {}},
        {"0.1", "0.1"},         {"1.", "1"},      {"-0.25", "-0.25"},
    };
    for (const auto& [json, text] : cases) {
        const auto decoded = decodeResponse<DeploymentsResponse>(
            QByteArray(R"({"deployments": [{"meta": {"githubCommitSha": )") + json + "}}]}");
        ASSERT_TRUE(decoded) << json;
        const auto& meta = *decoded->deployments[0].meta;
        ASSERT_TRUE(meta.contains("githubCommitSha")) << json;
        EXPECT_EQ(meta.value("githubCommitSha").string, text) << json;
    }
}
