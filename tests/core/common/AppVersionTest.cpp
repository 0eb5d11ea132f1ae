#include "core/common/AppVersion.h"

#include <gtest/gtest.h>

TEST(AppVersion, MissingPartsReadAsZero) {
    EXPECT_EQ(AppVersion::text("1.4", "27"), "1.4 (27)");
    EXPECT_EQ(AppVersion::text("1.4", ""), "1.4 (0)");
    EXPECT_EQ(AppVersion::text("", ""), "0 (0)");
    EXPECT_EQ(AppVersion::text(),
              AppVersion::shortVersion() + " (" + AppVersion::buildNumber() + ")");
}
