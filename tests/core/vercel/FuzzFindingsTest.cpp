// Inputs found by the fuzz targets (fuzz/): time stamps far outside any real date overflowed
// integer conversions.
#include "core/common/TimeTexts.h"
#include "core/monitor/StatusLines.h"
#include "core/vercel/FailureReport.h"
#include "core/vercel/VercelDecoding.h"
#include "core/vercel/VercelTime.h"
#include "support/TempPreferences.h"

#include <gtest/gtest.h>
#include <limits>

TEST(FuzzFindings, HugeBuildDurationSaturatesInTheReport) {
    const auto decoded = decodeResponse<DeploymentsResponse>(
        R"({"deployments":[{"uid":"dpl_a","readyState":"ERROR","createdAt":1.7e12,"ready":1.6e52}]})");
    ASSERT_TRUE(decoded);
    const ProjectSnapshot snapshot{"prj", "site", "acme", std::nullopt, decoded->deployments[0],
                                   {}};
    EXPECT_TRUE(failureReportText(snapshot, {}).contains("Failed after: 277777777777 h 46 min\n"));
    EXPECT_EQ(durationText(1e300), durationText(1e15));
    EXPECT_EQ(durationText(-1e300), "0 s");
}

TEST(FuzzFindings, TimeStampsBeyondAnyDateAreBounded) {
    const double huge = 1e300;
    EXPECT_EQ(boundedMilliseconds(huge), 8'640'000'000'000'000);
    EXPECT_EQ(boundedMilliseconds(-huge), -8'640'000'000'000'000);
    EXPECT_EQ(boundedMilliseconds(std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(boundedMilliseconds(1'732'351'200'000.9), 1'732'351'200'000);
    EXPECT_TRUE(dateFromMilliseconds(huge).isValid());
    EXPECT_GT(dateFromMilliseconds(huge).date().year(), 200'000);

    // The terminal line of a deployment created "before any date" is very old, not "just now".
    TempPreferences prefs;
    prefs->setString("appLanguage", "en");
    VercelDeployment ancient;
    ancient.createdAt = -huge;
    const ProjectSnapshot snapshot{"prj", "site", "acme", std::nullopt, ancient, {}};
    const QDateTime now = QDateTime::fromMSecsSinceEpoch(1'750'000'000'000, Qt::UTC);
    EXPECT_TRUE(snapshotLine(snapshot, now).endsWith(" mo ago"))
        << snapshotLine(snapshot, now).toStdString();
}
