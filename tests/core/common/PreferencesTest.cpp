#include "core/common/Preferences.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

TEST(Preferences, ValuesKeepTheirKindAcrossProcessesAndOtherKindsReadAsAbsent) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("sub/prefs.json"));
    {
        Preferences writer(path);
        writer.setInteger(QStringLiteral("refreshInterval"), 120);
        writer.setBoolean(QStringLiteral("notifyOnFailure"), false);
        writer.setString(QStringLiteral("appLanguage"), QStringLiteral("fr"));
        writer.setStringList(QStringLiteral("monitoredProjectIDs"), {"prj_1", "prj_2"});
    }
    Preferences reader(path);
    EXPECT_EQ(reader.integer(QStringLiteral("refreshInterval")), 120);
    EXPECT_EQ(reader.boolean(QStringLiteral("notifyOnFailure")), false);
    EXPECT_EQ(reader.string(QStringLiteral("appLanguage")), QStringLiteral("fr"));
    EXPECT_EQ(reader.stringList(QStringLiteral("monitoredProjectIDs")),
              QStringList({"prj_1", "prj_2"}));
    EXPECT_FALSE(reader.boolean(QStringLiteral("refreshInterval")));
    EXPECT_FALSE(reader.integer(QStringLiteral("notifyOnFailure")));
    EXPECT_FALSE(reader.string(QStringLiteral("refreshInterval")));

    // Written by hand: wrong kinds are absent, not converted.
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"({"refreshInterval": "60", "liveActivity": 1, "heroMonochrome": null,
        "monitoredProjectIDs": ["a", 2], "interval2": 7.5})");
    file.close();
    Preferences edited(path);
    EXPECT_FALSE(edited.integer(QStringLiteral("refreshInterval")));
    EXPECT_FALSE(edited.boolean(QStringLiteral("liveActivity")));
    EXPECT_FALSE(edited.boolean(QStringLiteral("heroMonochrome")));
    EXPECT_FALSE(edited.stringList(QStringLiteral("monitoredProjectIDs")));
    EXPECT_FALSE(edited.integer(QStringLiteral("interval2")));
}

TEST(Preferences, DamagedFileCountsAsEmptyAndIsRepairedByTheNextWrite) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("prefs.json"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("{not json");
    file.close();
    Preferences store(path);
    EXPECT_FALSE(store.contains(QStringLiteral("refreshInterval")));
    store.setInteger(QStringLiteral("refreshInterval"), 15);
    EXPECT_EQ(Preferences(path).integer(QStringLiteral("refreshInterval")), 15);
}
