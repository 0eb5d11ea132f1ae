#include "ui/status/TrayIcon.h"
#include "core/demo/DemoDirector.h"
#include "ui/UiFixture.h"
#include "ui/status/StatusPalette.h"

#include <QApplication>
#include <QPalette>

using namespace std::chrono_literals;

namespace {

QColor baseColour(const QIcon& icon) {
    // The middle of the small triangle's base, on the 64-pixel image drawn with a count.
    return icon.pixmap(64).toImage().pixelColor(32, 29);
}

} // namespace

TEST_F(UiFixture, TrayIconFollowsTheStateAndThePalette) {
    StatusPalette palette(*prefs, QStringLiteral("#FF0074"));
    TrayIcon tray(state, palette);
    EXPECT_EQ(tray.systemTrayIcon().toolTip(), "Not connected");
    const int neutralDraws = tray.cache().drawCount();

    state.start(true); // demo: connected, 11 deployments today
    state.demo()->runScene(2);
    clock.advance(2s);
    EXPECT_EQ(tray.systemTrayIcon().toolTip(), "1 building");
    EXPECT_EQ(baseColour(tray.systemTrayIcon().icon()), palette.success());
    clock.advance(16s);
    EXPECT_EQ(tray.systemTrayIcon().toolTip(), "1 failed");
    EXPECT_EQ(baseColour(tray.systemTrayIcon().icon()), palette.error());
    EXPECT_GT(tray.cache().drawCount(), neutralDraws);

    // Announcements that change nothing shown draw nothing.
    const int draws = tray.cache().drawCount();
    Q_EMIT state.changed();
    state.setHeroMonochrome(false);
    EXPECT_EQ(tray.cache().drawCount(), draws);

    palette.setError(Qt::blue);
    EXPECT_EQ(baseColour(tray.systemTrayIcon().icon()), QColor(Qt::blue));
}

// A light application theme must not make the triangle dark: with no tray colours and no
// colour-scheme preference to go by, the panel is taken to be dark, as most are.
TEST_F(UiFixture, NeutralTrayIconIsLightWhenNothingTellsThePanelColour) {
    StatusPalette palette(*prefs, QStringLiteral("#FF0074"));
    QPalette lightTheme = QApplication::palette();
    lightTheme.setColor(QPalette::WindowText, Qt::black);
    QApplication::setPalette(lightTheme);
    TrayIcon tray(state, palette);
    const QImage image = tray.systemTrayIcon().icon().pixmap(64).toImage();
    EXPECT_GT(image.pixelColor(32, 51).lightness(), 200);
}
