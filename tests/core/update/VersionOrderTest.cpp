#include "core/update/VersionOrder.h"

#include <gtest/gtest.h>

using VersionOrder::compare;

TEST(VersionOrder, ComparesComponentsAsNumbers) {
    EXPECT_GT(compare(u"1.10", u"1.9"), 0);
    EXPECT_LT(compare(u"1.9", u"1.10"), 0);
    EXPECT_GT(compare(u"2", u"1.99.99"), 0);
    EXPECT_GT(compare(u"0.1.1", u"0.1"), 0);
    EXPECT_LT(compare(u"0.0.9", u"0.1.0"), 0);
    // Numbers longer than any integer type still order by value.
    EXPECT_GT(compare(u"1.100000000000000000001", u"1.99999999999999999999"), 0);
}

TEST(VersionOrder, MissingZeroAndDecoratedComponentsCompareEqual) {
    EXPECT_EQ(compare(u"1", u"1.0.0"), 0);
    EXPECT_EQ(compare(u"1.0", u"1"), 0);
    EXPECT_EQ(compare(u"01.002", u"1.2"), 0);
    EXPECT_EQ(compare(u" v1.2 ", u"1.2"), 0);
    EXPECT_EQ(compare(u"1.2b3", u"1.2"), 0);
    EXPECT_EQ(compare(u"", u"0"), 0);
    EXPECT_EQ(compare(u"beta", u"0.0"), 0);
    EXPECT_LT(compare(u"", u"0.0.1"), 0);
    EXPECT_TRUE(VersionOrder::isNewer(u"1.4.1", u"1.4"));
    EXPECT_FALSE(VersionOrder::isNewer(u"1.4.0", u"1.4"));
}
