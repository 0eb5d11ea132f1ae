#include "core/vercel/FailureReport.h"
#include "core/vercel/BuildLog.h"

#include <gtest/gtest.h>

namespace {

QStringList numbered(int count, int markerAt = -1,
                     const QString& marker = "ERROR in ./src/app.ts") {
    QStringList lines;
    for (int i = 0; i < count; ++i)
        lines << (i == markerAt ? marker : QString("line %1").arg(i));
    return lines;
}

VercelBuildEvent event(std::optional<QString> text, std::optional<QString> payloadText = {}) {
    VercelBuildEvent e;
    e.text = std::move(text);
    if (payloadText)
        e.payload = VercelBuildEvent::Payload{payloadText};
    return e;
}

ProjectSnapshot failedSnapshot() {
    VercelDeployment d;
    d.id = "dpl_9xKq2";
    d.readyState = "ERROR";
    d.target = "production";
    d.buildingAt = 1'700'000'000'000.0;
    d.ready = 1'700'000'125'000.0;
    d.meta = QMap<QString, JSONScalar>{{"githubCommitRef", {QString("main")}},
                                       {"githubCommitSha", {QString("abc1234def")}},
                                       {"githubCommitMessage", {QString("Fix build\nmore")}}};
    return {"prj_1", "web", "acme", std::nullopt, d, 30.0};
}

} // namespace

TEST(RelevantLogExcerpt, WindowAroundTheFirstMarkerOrTheTail) {
    const QStringList around = relevantLogExcerpt(numbered(200, 100));
    ASSERT_EQ(around.size(), 80);
    EXPECT_EQ(around.first(), "line 85");
    EXPECT_EQ(around[15], "ERROR in ./src/app.ts");
    EXPECT_EQ(around.last(), "line 164");

    const QStringList early = relevantLogExcerpt(numbered(200, 3, "npm ERR! missing script"));
    EXPECT_EQ(early.first(), "line 0");
    EXPECT_EQ(early.size(), 80);
    EXPECT_EQ(relevantLogExcerpt(numbered(30, 3, "Build Failed")).size(), 30);

    const QStringList tail = relevantLogExcerpt(numbered(61));
    ASSERT_EQ(tail.size(), 60);
    EXPECT_EQ(tail.first(), "line 1");
    EXPECT_EQ(relevantLogExcerpt(numbered(60)).size(), 60);
    // "errors" and "Exit Code" count; markers are plain lower-case substrings.
    EXPECT_EQ(relevantLogExcerpt(numbered(100, 40, "2 errors")).first(), "line 25");
    EXPECT_EQ(relevantLogExcerpt(numbered(100, 50, "Process Exit Code 2")).first(), "line 35");
}

TEST(CleanBuildLog, TakesTextOrPayloadAndStripsTerminalSequences) {
    const QStringList lines = cleanBuildLog({
        event(std::nullopt, QString("Cloning")),
        event(QString("\x1b[32m")),                            // only a colour: dropped
        event(QString("\x1b[1;31mError:\x1b[0m boom\x1b[2K")), // colours and a cursor code
        event(std::nullopt),                                   // no text at all
        event(QString("   ")),                                 // blanks stay
        event(QString("two\nlines")),                          // one event, one line
        event(QString("\x1b]0;title\x07kept")),                // not a CSI sequence: kept as is
    });
    EXPECT_EQ(lines,
              QStringList({"Cloning", "Error: boom", "   ", "two\nlines", "\x1b]0;title\x07kept"}));
}

TEST(FailureReport, FullReportByteForByte) {
    const QString report = failureReportText(failedSnapshot(), {"a", "Error: x"});
    EXPECT_EQ(report, "# Vercel deployment failed: web\n"
                      "Branch: main (abc1234)\n"
                      "Commit: Fix build\n"
                      "Target: production\n"
                      "Failed after: 2 min 5 s\n"
                      "Dashboard: https://vercel.com/acme/web/9xKq2\n"
                      "\n## Build log (relevant part)\n```\n"
                      "a\nError: x"
                      "\n```\n\nPlease find the cause of this failed build and propose the fix.\n");
}

TEST(FailureReport, MissingPiecesLeaveTheirLinesOut) {
    ProjectSnapshot snapshot = failedSnapshot();
    snapshot.scopeSlug = "demo"; // no dashboard link
    snapshot.latest->meta = QMap<QString, JSONScalar>{{"githubCommitSha", {QString("abc1234")}}};
    snapshot.latest->ready.reset();
    snapshot.latest->target = "preview";
    const QString report = failureReportText(snapshot, {});
    EXPECT_EQ(report, "# Vercel deployment failed: web\n"
                      "Target: preview\n"
                      "\n## Build log (relevant part)\n```\n"
                      "(log unavailable)"
                      "\n```\n\nPlease find the cause of this failed build and propose the fix.\n");
}
