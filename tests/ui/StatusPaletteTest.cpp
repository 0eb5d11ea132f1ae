#include "ui/status/StatusPalette.h"
#include "support/QtPrinters.h"
#include "support/TempPreferences.h"

#include <QSignalSpy>
#include <gtest/gtest.h>

namespace {

QString hex(const std::optional<QColor>& color) {
    return color ? StatusPalette::hexString(*color) : QStringLiteral("none");
}

} // namespace

TEST(StatusPalette, ParsesSixHexDigitsAfterAnOptionalHashInEitherCase) {
    for (const char* text : {"#0cf1e8", "0CF1E8", " \t#0CF1E8\t ", "#0Cf1E8"})
        EXPECT_EQ(hex(StatusPalette::colorFromHex(QString::fromLatin1(text))), "#0CF1E8") << text;
    for (const char* text :
         {"#0CF1E", "#0CF1E8FF", "#GGGGGG", "", "#", "##0CF1E8", "+0CF1E8", "0x0CF1", "\n#0CF1E8"})
        EXPECT_FALSE(StatusPalette::colorFromHex(QString::fromLatin1(text))) << text;
}

TEST(StatusPalette, PrintsRoundedUpperCaseHex) {
    for (const QString& text : {StatusPalette::defaultSuccessHex, StatusPalette::defaultQueuedHex,
                                QStringLiteral("#FF0074"), QStringLiteral("#000000")})
        EXPECT_EQ(hex(StatusPalette::colorFromHex(text)), text);
    EXPECT_EQ(StatusPalette::hexString(QColor::fromRgbF(0.5F, 0.2F, 1.0F)), "#8033FF");
    EXPECT_EQ(StatusPalette::hexString(QColor::fromHsv(0, 255, 255)), "#FF0000");
}

TEST(StatusPalette, OneAssignmentWritesAllThreeKeysAndIsReadBack) {
    TempPreferences prefs;
    StatusPalette palette(*prefs, QStringLiteral("#FF0074"));
    EXPECT_TRUE(palette.isDefault());
    EXPECT_EQ(palette.signature(), "#0CF1E8#C05BEC#FF0074");
    EXPECT_FALSE(prefs->contains(QStringLiteral("colorSuccess")));

    QSignalSpy changed(&palette, &StatusPalette::changed);
    palette.setQueued(QColor(0x12, 0x34, 0x56));
    EXPECT_EQ(changed.size(), 1);
    EXPECT_EQ(prefs->string(QStringLiteral("colorSuccess")), "#0CF1E8");
    EXPECT_EQ(prefs->string(QStringLiteral("colorQueued")), "#123456");
    EXPECT_EQ(prefs->string(QStringLiteral("colorError")), "#FF0074");
    EXPECT_FALSE(palette.isDefault());

    StatusPalette reloaded(*prefs, QStringLiteral("#FF0074"));
    EXPECT_EQ(reloaded.signature(), "#0CF1E8#123456#FF0074");
    reloaded.reset();
    EXPECT_TRUE(reloaded.isDefault());
    EXPECT_EQ(prefs->string(QStringLiteral("colorQueued")), "#C05BEC");
}

TEST(StatusPalette, AStoredColourThatDoesNotParseIsIgnoredUntilTheNextSave) {
    TempPreferences prefs;
    prefs->setString(QStringLiteral("colorError"), QStringLiteral("crimson"));
    prefs->setInteger(QStringLiteral("colorSuccess"), 0x0CF1E8);
    prefs->setString(QStringLiteral("colorQueued"), QStringLiteral("#00ff00"));
    StatusPalette palette(*prefs, QStringLiteral("#FF0074"));
    EXPECT_EQ(palette.signature(), "#0CF1E8#00FF00#FF0074");
    EXPECT_EQ(prefs->string(QStringLiteral("colorError")), "crimson"); // loading writes nothing

    palette.setSuccess(palette.success());
    EXPECT_EQ(prefs->string(QStringLiteral("colorError")), "#FF0074");
    EXPECT_EQ(prefs->string(QStringLiteral("colorSuccess")), "#0CF1E8");
}

TEST(StatusPalette, TheEnvironmentReplacesTheDefaultErrorColour) {
    EXPECT_EQ(StatusPalette::defaultErrorHexFrom(std::nullopt), "#FF0074");
    EXPECT_EQ(StatusPalette::defaultErrorHexFrom(QStringLiteral("not a colour")), "#FF0074");
    EXPECT_EQ(StatusPalette::defaultErrorHexFrom(QStringLiteral(" 00ff00")), " 00ff00");

    TempPreferences prefs;
    StatusPalette green(*prefs, StatusPalette::defaultErrorHexFrom(QStringLiteral("#00FF00")));
    EXPECT_EQ(hex(green.error()), "#00FF00");
    EXPECT_TRUE(green.isDefault());
    green.setError(Qt::red);
    green.reset();
    EXPECT_EQ(hex(green.error()), "#00FF00");
    EXPECT_TRUE(green.isDefault());

    // Written otherwise than the formatter would, the default never compares equal.
    StatusPalette lower(*prefs, StatusPalette::defaultErrorHexFrom(QStringLiteral("00ff00")));
    EXPECT_EQ(hex(lower.error()), "#00FF00");
    EXPECT_FALSE(lower.isDefault());
}

TEST(StatusPalette, NeutralTonesHaveNoColourAndWaitingStatusesShareOne) {
    TempPreferences prefs;
    StatusPalette palette(*prefs, QStringLiteral("#FF0074"));
    EXPECT_FALSE(palette.toneColor(Tone::idle));
    EXPECT_FALSE(palette.toneColor(Tone::disconnected));
    EXPECT_EQ(hex(palette.toneColor(Tone::building)), "#0CF1E8");
    EXPECT_EQ(hex(palette.toneColor(Tone::error)), "#FF0074");
    EXPECT_EQ(palette.statusColor(DeployStatus::initializing), palette.queued());
    EXPECT_EQ(palette.statusColor(DeployStatus::ready), palette.success());
    EXPECT_EQ(palette.statusColor(DeployStatus::canceled), StatusPalette::secondaryTextColor());
}
