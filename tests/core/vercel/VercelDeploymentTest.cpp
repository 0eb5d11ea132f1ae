#include "core/vercel/VercelDecoding.h"

#include <gtest/gtest.h>

namespace {

// One deployment decoded the way the API client decodes a page of them.
VercelDeployment deployment(const QByteArray& json) {
    const auto page = decodeResponse<DeploymentsResponse>(R"({"deployments": [)" + json + "]}");
    EXPECT_TRUE(page) << json.constData();
    if (!page || page->deployments.isEmpty())
        return {};
    return page->deployments.front();
}

VercelDeployment withMessage(const QString& message) {
    VercelDeployment d;
    d.meta = QMap<QString, JSONScalar>{{"githubCommitMessage", JSONScalar{message}}};
    return d;
}

} // namespace

TEST(VercelDeployment, StatusPrefersReadyStateThenStateAndIgnoresCase) {
    EXPECT_EQ(deployStatusFromRaw(u"INITIALIZING"), DeployStatus::initializing);
    EXPECT_EQ(deployStatusFromRaw(rawValue(DeployStatus::canceled)), DeployStatus::canceled);
    for (const char16_t* raw : {u"ready", u"READY ", u"CANCELLED", u""})
        EXPECT_FALSE(deployStatusFromRaw(raw));
    EXPECT_EQ(deployment(R"({"state": "READY"})").status(), DeployStatus::ready);
    EXPECT_EQ(deployment(R"({"readyState": "ready"})").status(), DeployStatus::ready);
    EXPECT_EQ(deployment(R"({"readyState": "Building"})").status(), DeployStatus::building);
    EXPECT_EQ(deployment(R"({"readyState": "ERROR", "state": "READY"})").status(),
              DeployStatus::error);
    // Present but empty still wins over `state`, and matches nothing.
    EXPECT_EQ(deployment(R"({"readyState": "", "state": "READY"})").status(),
              DeployStatus::unknown);
    // Null counts as missing.
    EXPECT_EQ(deployment(R"({"readyState": null, "state": "queued"})").status(),
              DeployStatus::queued);
    EXPECT_EQ(deployment(R"({"readyState": " READY"})").status(), DeployStatus::unknown);
    EXPECT_EQ(deployment("{}").status(), DeployStatus::unknown);
    // The id falls back to `uid`.
    EXPECT_EQ(deployment(R"({"uid": "dpl_abc"})").deploymentID(), "dpl_abc");
    EXPECT_EQ(deployment(R"({"id": "dpl_new", "uid": "dpl_old"})").deploymentID(), "dpl_new");
    EXPECT_EQ(deployment(R"({"id": null, "uid": "dpl_old"})").deploymentID(), "dpl_old");
    EXPECT_EQ(deployment("{}").deploymentID(), "");
    EXPECT_TRUE(deployment(R"({"target": "production"})").isProduction());
    EXPECT_FALSE(deployment(R"({"target": "Production"})").isProduction());
    EXPECT_FALSE(deployment(R"({"target": null})").isProduction());
}

TEST(VercelDeployment, MetaLookupSkipsValuesWithoutText) {
    const VercelDeployment gitlab = deployment(R"({"meta": {
        "githubCommitRef": null, "gitlabCommitRef": "main", "bitbucketCommitRef": "other",
        "githubCommitSha": ["4f9c2a7"], "gitlabCommitSha": {"full": "x"},
        "bitbucketCommitSha": 1234567890123,
        "githubCommitMessage": null, "bitbucketCommitMessage": "Bump deps"}})");
    EXPECT_EQ(gitlab.branch(), "main");
    EXPECT_EQ(gitlab.shortSHA(), "1234567");
    EXPECT_EQ(gitlab.commitTitle(), "Bump deps");

    const VercelDeployment github = deployment(R"({"meta": {
        "githubCommitRef": true, "gitlabCommitRef": "main",
        "githubCommitSha": "4f9c2a7be0d1e6f3", "githubCommitMessage": ""}})");
    EXPECT_EQ(github.branch(), "true");
    EXPECT_EQ(github.shortSHA(), "4f9c2a7");
    EXPECT_EQ(github.commitTitle(), "");

    const VercelDeployment shortHash = deployment(R"({"meta": {"gitlabCommitSha": "a1b2"}})");
    EXPECT_EQ(shortHash.shortSHA(), "a1b2");
    EXPECT_FALSE(shortHash.branch());
    EXPECT_FALSE(shortHash.commitTitle());

    EXPECT_FALSE(deployment(R"({"meta": null})").shortSHA());
}

TEST(VercelDeployment, CommitTitleIsTheFirstNonEmptyLineTrimmedHorizontally) {
    EXPECT_EQ(withMessage("\n\nFix login\nDetails").commitTitle(), "Fix login");
    EXPECT_EQ(withMessage("  Fix login  \nmore").commitTitle(), "Fix login");
    EXPECT_EQ(withMessage("\t\u00a0Fix login\u3000\u2009\n").commitTitle(), "Fix login");
    // CRLF is not a line feed: such text stays whole, and line breaks are not trimmed.
    EXPECT_EQ(withMessage("Fix login\r\nDetails").commitTitle(), "Fix login\r\nDetails");
    EXPECT_EQ(withMessage("  Fix\r\n").commitTitle(), "Fix\r\n");
    EXPECT_EQ(withMessage("A\r\n\nB").commitTitle(), "A\r\n");
    EXPECT_EQ(withMessage("\n\r\nB\nC").commitTitle(), "\r\nB");
    // Nothing but line feeds: the whole message.
    EXPECT_EQ(withMessage("\n\n").commitTitle(), "\n\n");
    EXPECT_EQ(withMessage("   ").commitTitle(), "");
}

TEST(VercelDeployment, StartAndDuration) {
    const VercelDeployment built =
        deployment(R"({"created": 1000, "createdAt": 2000, "buildingAt": 4000, "ready": 94500})");
    EXPECT_EQ(built.startedAt(), 4000.0);
    EXPECT_EQ(built.buildDuration(), 90.5);

    EXPECT_EQ(deployment(R"({"created": 1000, "createdAt": 2000})").startedAt(), 2000.0);
    EXPECT_EQ(deployment(R"({"created": 1000, "ready": 61000})").buildDuration(), 60.0);
    // Clocks disagree now and then: a ready time before the start is no time at all.
    EXPECT_EQ(deployment(R"({"buildingAt": 5000, "ready": 4000})").buildDuration(), 0.0);
    EXPECT_FALSE(deployment(R"({"buildingAt": 5000})").buildDuration());
    EXPECT_FALSE(deployment(R"({"ready": 5000})").buildDuration());
    EXPECT_FALSE(deployment("{}").startedAt());
}
