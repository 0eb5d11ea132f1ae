#include "core/common/Preferences.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

QString writeFile(const QTemporaryDir& dir, const QByteArray& body) {
    const QString path = dir.filePath(QStringLiteral("prefs.json"));
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(body);
    return path;
}

} // namespace

TEST(Preferences, ValuesKeepTheirKindAcrossProcesses) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("sub/prefs.json"));
    {
        Preferences writer(path);
        writer.setInteger(QStringLiteral("refreshInterval"), 120);
        writer.setBoolean(QStringLiteral("notifyOnFailure"), false);
        writer.setString(QStringLiteral("appLanguage"), QStringLiteral("fr"));
        writer.setStringList(QStringLiteral("monitoredProjectIDs"),
                             {QStringLiteral("prj_1"), QStringLiteral("prj_2")});
    }
    Preferences reader(path);
    EXPECT_EQ(reader.integer(QStringLiteral("refreshInterval")), 120);
    EXPECT_EQ(reader.boolean(QStringLiteral("notifyOnFailure")), false);
    EXPECT_EQ(reader.string(QStringLiteral("appLanguage")), QStringLiteral("fr"));
    EXPECT_EQ(reader.stringList(QStringLiteral("monitoredProjectIDs")),
              QStringList({QStringLiteral("prj_1"), QStringLiteral("prj_2")}));
    // A value read as another kind is absent, not converted.
    EXPECT_FALSE(reader.boolean(QStringLiteral("refreshInterval")));
    EXPECT_FALSE(reader.integer(QStringLiteral("notifyOnFailure")));
    EXPECT_FALSE(reader.string(QStringLiteral("refreshInterval")));
}

TEST(Preferences, HandWrittenFileWithWrongKindsReadsAsAbsent) {
    QTemporaryDir dir;
    const QString path = writeFile(dir, R"({"refreshInterval": "60", "liveActivity": 1,
        "heroMonochrome": null, "monitoredProjectIDs": ["a", 2], "interval2": 7.5})");
    Preferences store(path);
    EXPECT_FALSE(store.integer(QStringLiteral("refreshInterval")));
    EXPECT_FALSE(store.boolean(QStringLiteral("liveActivity")));
    EXPECT_FALSE(store.boolean(QStringLiteral("heroMonochrome")));
    EXPECT_FALSE(store.stringList(QStringLiteral("monitoredProjectIDs")));
    EXPECT_FALSE(store.integer(QStringLiteral("interval2")));
}

TEST(Preferences, DamagedFileCountsAsEmptyAndIsRepairedByTheNextWrite) {
    QTemporaryDir dir;
    const QString path = writeFile(dir, "{not json");
    Preferences store(path);
    EXPECT_FALSE(store.contains(QStringLiteral("refreshInterval")));
    store.setInteger(QStringLiteral("refreshInterval"), 15);
    Preferences again(path);
    EXPECT_EQ(again.integer(QStringLiteral("refreshInterval")), 15);
}
