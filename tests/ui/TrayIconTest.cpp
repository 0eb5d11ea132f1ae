#include "ui/status/TrayIcon.h"
#include "core/demo/DemoDirector.h"
#include "support/QtPrinters.h"
#include "support/TempPreferences.h"
#include "ui/UiFixture.h"
#include "ui/status/DesktopBarColor.h"
#include "ui/status/SniClickPosition.h"
#include "ui/status/StatusPalette.h"
#include "ui/status/ToneIcon.h"
#include "ui/status/ToneIconCache.h"
#include "ui/status/X11StartupNotification.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QPalette>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

constexpr int size = 64;
// On the 64-pixel image: inside the full-size triangle (clear of the stroke), the middle of its
// base (on the stroke), and the same two points of the smaller triangle drawn over a count.
const QPoint inside(32, 37);
const QPoint onBase(32, 51);
const QPoint countedInside(32, 20);
const QPoint countedOnBase(32, 29);

const QColor panelText(0x20, 0x20, 0x20);

QImage imageOf(const QIcon& icon) {
    return icon.pixmap(size).toImage().convertToFormat(QImage::Format_ARGB32);
}

// Pixels of `color` in the columns [left, right) below the triangle.
int countInk(const QImage& image, const QColor& color, int left = 0, int right = size) {
    int ink = 0;
    for (int y = 34; y < size; ++y)
        for (int x = left; x < right; ++x)
            ink += QColor(image.pixel(x, y)) == color && qAlpha(image.pixel(x, y)) == 255;
    return ink;
}

class ToneIconTest : public ::testing::Test {
protected:
    TempPreferences prefs;
    StatusPalette palette{*prefs, "#FF0074"};
    ToneIconCache cache;

    QImage draw(Tone tone, int count) {
        return imageOf(cache.icon(tone, count, palette, panelText));
    }
};

} // namespace

TEST(ToneIconCount, ShowsNothingBelowOneAndCapsAtNinetyNinePlus) {
    const QStringList shown{ToneIcon::countText(0), ToneIcon::countText(1), ToneIcon::countText(99),
                            ToneIcon::countText(100)};
    EXPECT_EQ(shown, (QStringList{"", "1", "99", "99+"}));
}

TEST_F(ToneIconTest, FailureIsFilledOtherTonesAreOutlinesInTheirColour) {
    const QImage error = draw(Tone::error, 0);
    EXPECT_EQ(QColor(error.pixel(inside)), palette.error());
    EXPECT_EQ(QColor(error.pixel(onBase)), palette.error());

    const QImage building = draw(Tone::building, 0);
    EXPECT_EQ(qAlpha(building.pixel(inside)), 0);
    EXPECT_EQ(QColor(building.pixel(onBase)), palette.success());
    EXPECT_EQ(QColor(draw(Tone::success, 0).pixel(onBase)), palette.success());
    EXPECT_EQ(QColor(draw(Tone::queued, 0).pixel(onBase)), palette.queued());

    // Neutral tones take the panel's own text colour.
    const QImage idle = draw(Tone::idle, 0);
    EXPECT_EQ(qAlpha(idle.pixel(inside)), 0);
    EXPECT_EQ(QColor(idle.pixel(onBase)), panelText);
    EXPECT_EQ(QColor(draw(Tone::disconnected, 0).pixel(onBase)), panelText);
}

TEST_F(ToneIconTest, TodaysCountIsDrawnUnderASmallerTriangle) {
    EXPECT_EQ(countInk(draw(Tone::building, 0), panelText), 0);

    const QImage nine = draw(Tone::building, 9);
    EXPECT_EQ(qAlpha(nine.pixel(countedInside)), 0);
    EXPECT_EQ(QColor(nine.pixel(countedOnBase)), palette.success());
    EXPECT_GT(countInk(nine, panelText), 40);

    const QImage failed = draw(Tone::error, 9);
    EXPECT_EQ(QColor(failed.pixel(countedInside)), palette.error());

    // "99+" spreads over the whole width where "9" stays in the middle.
    const QImage many = draw(Tone::idle, 100);
    EXPECT_EQ(countInk(nine, panelText, 0, 16), 0);
    EXPECT_GT(countInk(many, panelText, 0, 16), 20);
    EXPECT_GT(countInk(many, panelText, 48, size), 20);
}

TEST_F(ToneIconTest, IconsAreDrawnOncePerToneAndCountUntilAColourChanges) {
    draw(Tone::error, 3);
    draw(Tone::error, 3);
    draw(Tone::error, 150);
    draw(Tone::error, 250); // the same text, "99+"
    EXPECT_EQ(cache.drawCount(), 2);
    EXPECT_EQ(cache.size(), 2);

    palette.setError(QColor(0x11, 0x22, 0xCC));
    const QImage recoloured = draw(Tone::error, 3);
    EXPECT_EQ(cache.size(), 1);
    EXPECT_EQ(cache.drawCount(), 3);
    EXPECT_EQ(QColor(recoloured.pixel(countedInside)), QColor(0x11, 0x22, 0xCC));

    // A change of the desktop's colours flushes too: neutral icons depend on them.
    cache.icon(Tone::error, 3, palette, Qt::white);
    EXPECT_EQ(cache.size(), 1);
    EXPECT_EQ(cache.drawCount(), 4);
}

// The neutral triangle follows the bar, not the application: a light application theme (black
// text) must not draw it dark when nothing tells the bar's colour, since most bars are dark.
TEST_F(UiFixture, TrayIconFollowsTheStateAndThePaletteButNotTheApplicationTheme) {
    StatusPalette palette(*prefs, "#FF0074");
    const QPalette original = QApplication::palette();
    QPalette lightTheme = original;
    lightTheme.setColor(QPalette::WindowText, Qt::black);
    QApplication::setPalette(lightTheme);
    TrayIcon tray(state, palette);
    const auto shownColour = [&] {
        return QColor(imageOf(tray.systemTrayIcon().icon()).pixel(countedOnBase));
    };
    EXPECT_EQ(tray.systemTrayIcon().toolTip(), "Not connected");
    EXPECT_GT(QColor(imageOf(tray.systemTrayIcon().icon()).pixel(onBase)).lightness(), 200);
    QApplication::setPalette(original);

    state.start(true); // demo: connected, 11 deployments today
    state.demo()->runScene(2);
    clock.advance(2s);
    EXPECT_EQ(tray.systemTrayIcon().toolTip(), "1 building");
    EXPECT_EQ(shownColour(), palette.success());
    clock.advance(16s);
    EXPECT_EQ(tray.systemTrayIcon().toolTip(), "1 failed");
    EXPECT_EQ(shownColour(), palette.error());

    // Announcements that change nothing shown draw nothing.
    const int draws = tray.cache().drawCount();
    Q_EMIT state.changed();
    state.setHeroMonochrome(false);
    EXPECT_EQ(tray.cache().drawCount(), draws);
    palette.setError(Qt::blue);
    EXPECT_EQ(shownColour(), QColor(Qt::blue));
}

// xapp-sn-watcher reports the icon's corner away from the panel, at its left (or top) end; the
// panel and the capsule must centre on the icon, half a panel's thickness further in.
TEST(SniClickPosition, AnXAppCornerStandsForTheIconsCentreOnEveryPanelSide) {
    const QRect whole(0, 0, 1440, 900);
    struct Case {
        QRect area;
        QPoint corner;
        QPoint centre;
    } const cases[] = {
        {QRect(0, 0, 1440, 860), {701, 860}, {721, 880}},   // bottom: the upper left corner
        {QRect(0, 40, 1440, 860), {701, 40}, {721, 20}},    // top: the lower left corner
        {QRect(40, 0, 1400, 900), {40, 500}, {20, 520}},    // left: the upper right corner
        {QRect(0, 0, 1400, 900), {1400, 500}, {1420, 520}}, // right: the upper left corner
    };
    for (const Case& c : cases)
        EXPECT_EQ(SniClickPosition::centreOfCorner(c.corner, whole, c.area), c.centre)
            << c.corner.x() << ", " << c.corner.y();
    EXPECT_TRUE(SniClickPosition::reportsCorner("xapp-sn-watcher"));
    EXPECT_FALSE(SniClickPosition::reportsCorner("plasmashell"));
}

// A click that hands over the keyboard starts a launch, and GNOME Shell shows the busy pointer
// until a "remove" message ends it: 20-byte pieces of one NUL-terminated text, quoted. A text
// that fills its last piece exactly needs one more piece for its NUL, or the message never ends.
TEST(StartupNotification, TheRemoveMessageIsQuotedAndEndsWithANul) {
    const auto joined = [](const QList<QByteArray>& pieces) {
        QByteArray all;
        for (const QByteArray& piece : pieces) {
            EXPECT_EQ(piece.size(), 20);
            all += piece;
        }
        return all;
    };
    const QList<QByteArray> short_ = startupRemovePieces("a");
    EXPECT_EQ(short_.size(), 1);
    EXPECT_EQ(joined(short_), QByteArray("remove: ID=\"a\"").leftJustified(20, '\0'));
    // `remove: ID="1234567"` is 20 bytes: its NUL opens a second piece.
    const QList<QByteArray> exact = startupRemovePieces("1234567");
    ASSERT_EQ(exact.size(), 2);
    EXPECT_EQ(exact[0], "remove: ID=\"1234567\"");
    EXPECT_EQ(exact[1], QByteArray(20, '\0'));
    const QByteArray quoted = joined(startupRemovePieces("gnome-shell/x\"y\\z-0_TIME7"));
    EXPECT_EQ(QByteArray(quoted.constData()), "remove: ID=\"gnome-shell/x\\\"y\\\\z-0_TIME7\"");
}

// The neutral icon must read on the bar around it, and on Plasma the bar's colour is the Plasma
// style's, which the application colour scheme (what the portal reports) does not tell: Breeze
// Twilight puts a dark panel beside light applications.
TEST(DesktopBarColor, PlasmaPanelsFollowTheirStyleOrElseTheColourSchemeAndGnomesBarIsBlack) {
    QTemporaryDir user, defaults, data;
    const auto write = [](const QString& path, const QByteArray& text) {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text);
    };
    const QStringList config{user.path(), defaults.path()};
    const QStringList dataDirs{data.path()};
    const QStringList kde{"KDE"};
    write(data.filePath("plasma/desktoptheme/breeze-dark/colors"),
          "[Colors:Button]\nBackgroundNormal=1,2,3\n[Colors:Window]\nBackgroundNormal=42,46,50\n");
    write(data.filePath("color-schemes/BreezeLight.colors"),
          "[Colors:Window]\nBackgroundNormal=239,240,241\n");
    write(data.filePath("color-schemes/BreezeDark.colors"),
          "[Colors:Window]\nBackgroundNormal=32,35,38\n");

    // Nothing set: Breeze, light.
    EXPECT_EQ(DesktopBarColor::of(kde, config, dataDirs), QColor(239, 240, 241));
    // Breeze Twilight: light applications, the breeze-dark Plasma style from the theme's defaults.
    write(defaults.filePath("kdeglobals"), "[General]\nColorScheme=BreezeLight\n");
    write(defaults.filePath("plasmarc"), "[Theme]\nname=breeze-dark\n");
    EXPECT_EQ(DesktopBarColor::of(kde, config, dataDirs), QColor(42, 46, 50));
    // The user's own choice wins over the theme's defaults: Breeze, following Breeze Dark.
    write(user.filePath("plasmarc"), "[Theme]\nname[$e]=default\n");
    write(user.filePath("kdeglobals"), "[General]\nColorScheme=BreezeDark\n");
    EXPECT_EQ(DesktopBarColor::of(kde, config, dataDirs), QColor(32, 35, 38));
    // Colours written out in kdeglobals come first.
    write(user.filePath("kdeglobals"), "[Colors:Window]\nBackgroundNormal=200,10,10\n");
    EXPECT_EQ(DesktopBarColor::of(kde, config, dataDirs), QColor(200, 10, 10));

    EXPECT_EQ(DesktopBarColor::of({"GNOME"}, config, dataDirs), QColor(Qt::black));
    EXPECT_EQ(DesktopBarColor::of({"ubuntu", "GNOME"}, config, dataDirs), QColor(Qt::black));
    EXPECT_EQ(DesktopBarColor::of({"GNOME-Classic", "GNOME"}, config, dataDirs), std::nullopt);
    EXPECT_EQ(DesktopBarColor::of({"XFCE"}, config, dataDirs), std::nullopt);
}
