#include "ui/status/StatusPalette.h"
#include "support/QtPrinters.h"
#include "support/TempPreferences.h"

#include <QSignalSpy>
#include <gtest/gtest.h>

namespace {

QString hex(const std::optional<QColor>& color) {
    return color ? StatusPalette::hexString(*color) : "none";
}

} // namespace

TEST(StatusPalette, ParsesSixHexDigitsAfterAnOptionalHashAndPrintsThemRounded) {
    for (const char* text : {"#0cf1e8", "0CF1E8", " \t#0CF1E8\t ", "#0Cf1E8"})
        EXPECT_EQ(hex(StatusPalette::colorFromHex(QString::fromLatin1(text))), "#0CF1E8") << text;
    for (const char* text :
         {"#0CF1E", "#0CF1E8FF", "#GGGGGG", "", "#", "##0CF1E8", "+0CF1E8", "0x0CF1", "\n#0CF1E8"})
        EXPECT_FALSE(StatusPalette::colorFromHex(QString::fromLatin1(text))) << text;
    EXPECT_EQ(StatusPalette::hexString(QColor::fromRgbF(0.5F, 0.2F, 1.0F)), "#8033FF");
}

TEST(StatusPalette, OneAssignmentWritesAllThreeKeysAndIsReadBack) {
    TempPreferences prefs;
    StatusPalette palette(*prefs, "#FF0074");
    EXPECT_TRUE(palette.isDefault());
    EXPECT_EQ(palette.signature(), "#0CF1E8#C05BEC#FF0074");
    EXPECT_FALSE(prefs->contains("colorSuccess"));

    QSignalSpy changed(&palette, &StatusPalette::changed);
    palette.setQueued(QColor(0x12, 0x34, 0x56));
    EXPECT_EQ(changed.size(), 1);
    EXPECT_EQ(prefs->string("colorSuccess"), "#0CF1E8");
    EXPECT_EQ(prefs->string("colorQueued"), "#123456");
    EXPECT_EQ(prefs->string("colorError"), "#FF0074");
    EXPECT_FALSE(palette.isDefault());

    StatusPalette reloaded(*prefs, "#FF0074");
    EXPECT_EQ(reloaded.signature(), "#0CF1E8#123456#FF0074");
    reloaded.reset();
    EXPECT_TRUE(reloaded.isDefault());
    EXPECT_EQ(prefs->string("colorQueued"), "#C05BEC");
}

TEST(StatusPalette, AStoredColourThatDoesNotParseIsIgnoredUntilTheNextSave) {
    TempPreferences prefs;
    prefs->setString("colorError", "crimson");
    prefs->setInteger("colorSuccess", 0x0CF1E8);
    prefs->setString("colorQueued", "#00ff00");
    StatusPalette palette(*prefs, "#FF0074");
    EXPECT_EQ(palette.signature(), "#0CF1E8#00FF00#FF0074");
    EXPECT_EQ(prefs->string("colorError"), "crimson"); // loading writes nothing

    palette.setSuccess(palette.success());
    EXPECT_EQ(prefs->string("colorError"), "#FF0074");
    EXPECT_EQ(prefs->string("colorSuccess"), "#0CF1E8");
}

TEST(StatusPalette, TheEnvironmentReplacesTheDefaultErrorColour) {
    EXPECT_EQ(StatusPalette::defaultErrorHexFrom("not a colour"), "#FF0074");
    EXPECT_EQ(StatusPalette::defaultErrorHexFrom(" 00ff00"), " 00ff00");

    TempPreferences prefs;
    StatusPalette green(*prefs, StatusPalette::defaultErrorHexFrom("#00FF00"));
    EXPECT_EQ(hex(green.error()), "#00FF00");
    EXPECT_TRUE(green.isDefault());
    green.setError(Qt::red);
    green.reset();
    EXPECT_EQ(hex(green.error()), "#00FF00");
    EXPECT_TRUE(green.isDefault());

    // Written otherwise than the formatter would, the default never compares equal.
    StatusPalette lower(*prefs, StatusPalette::defaultErrorHexFrom("00ff00"));
    EXPECT_EQ(hex(lower.error()), "#00FF00");
    EXPECT_FALSE(lower.isDefault());
}

TEST(StatusPalette, WaitingStatusesShareTheQueuedColourAndCanceledOnesAreGrey) {
    TempPreferences prefs;
    StatusPalette palette(*prefs, "#FF0074");
    EXPECT_EQ(palette.statusColor(DeployStatus::initializing), palette.queued());
    EXPECT_EQ(palette.statusColor(DeployStatus::ready), palette.success());
    EXPECT_EQ(palette.statusColor(DeployStatus::canceled), StatusPalette::secondaryTextColor());
}
