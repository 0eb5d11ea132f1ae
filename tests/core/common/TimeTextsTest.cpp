#include "core/common/TimeTexts.h"
#include "core/common/Language.h"
#include "support/TempPreferences.h"

#include <gtest/gtest.h>

TEST(DurationText, BoundariesAndRounding) {
    EXPECT_EQ(durationText(-3), QStringLiteral("0 s"));
    EXPECT_EQ(durationText(0.4), QStringLiteral("0 s"));
    EXPECT_EQ(durationText(0.5), QStringLiteral("1 s"));
    EXPECT_EQ(durationText(59.4), QStringLiteral("59 s"));
    EXPECT_EQ(durationText(59.5), QStringLiteral("1 min"));
    EXPECT_EQ(durationText(125), QStringLiteral("2 min 5 s"));
    EXPECT_EQ(durationText(3599), QStringLiteral("59 min 59 s"));
    EXPECT_EQ(durationText(3600), QStringLiteral("1 h 0 min"));
    EXPECT_EQ(durationText(7325), QStringLiteral("2 h 2 min"));
}

TEST(RelativeAgeText, UnitsTruncateInBothLanguages) {
    const QDateTime now = QDateTime::fromSecsSinceEpoch(1'700'000'000);
    auto ago = [&](qint64 seconds) { return std::optional(now.addSecs(-seconds)); };
    EXPECT_EQ(relativeAgeText(std::nullopt, now, false), QStringLiteral("just now"));
    EXPECT_EQ(relativeAgeText(ago(-120), now, false), QStringLiteral("just now"));
    EXPECT_EQ(relativeAgeText(ago(59), now, true), QStringLiteral("à l'instant"));
    EXPECT_EQ(relativeAgeText(ago(60), now, false), QStringLiteral("1 min ago"));
    EXPECT_EQ(relativeAgeText(ago(3599), now, true), QStringLiteral("il y a 59 min"));
    EXPECT_EQ(relativeAgeText(ago(3600), now, false), QStringLiteral("1 h ago"));
    EXPECT_EQ(relativeAgeText(ago(86399), now, true), QStringLiteral("il y a 23 h"));
    EXPECT_EQ(relativeAgeText(ago(86400), now, true), QStringLiteral("il y a 1 j"));
    EXPECT_EQ(relativeAgeText(ago(30LL * 86400 - 1), now, false), QStringLiteral("29 d ago"));
    EXPECT_EQ(relativeAgeText(ago(30LL * 86400), now, false), QStringLiteral("1 mo ago"));
    EXPECT_EQ(relativeAgeText(ago(400LL * 86400), now, true), QStringLiteral("il y a 13 mois"));
}

TEST(Language, PreferenceThenSystemLanguages) {
    TempPreferences prefs;
    const QStringList frCA{QStringLiteral("fr-CA"), QStringLiteral("en")};
    const QStringList enFR{QStringLiteral("en-FR")};
    EXPECT_TRUE(Language::isFrench(*prefs, frCA));
    EXPECT_FALSE(Language::isFrench(*prefs, enFR));
    EXPECT_FALSE(Language::isFrench(*prefs, {}));
    prefs->setString(QStringLiteral("appLanguage"), QStringLiteral("de"));
    EXPECT_TRUE(Language::isFrench(*prefs, frCA));
    prefs->setString(QStringLiteral("appLanguage"), QStringLiteral("fr"));
    EXPECT_TRUE(Language::isFrench(*prefs, enFR));
    prefs->setString(QStringLiteral("appLanguage"), QStringLiteral("en"));
    EXPECT_FALSE(Language::isFrench(*prefs, frCA));
    // The process-wide test reads the standard store at every call.
    EXPECT_EQ(Language::text("Live", "En ligne"), QStringLiteral("Live"));
    prefs->setString(QStringLiteral("appLanguage"), QStringLiteral("fr"));
    EXPECT_EQ(Language::text("Live", "En ligne"), QStringLiteral("En ligne"));
}
