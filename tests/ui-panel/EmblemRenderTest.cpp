#include "support/TempPreferences.h"
#include "ui-panel/PanelScene.h"
#include "ui/panel/LetterBleed.h"
#include "ui/panel/MiniPrism.h"
#include "ui/panel/PrismHero.h"
#include "ui/panel/ProgressLine.h"
#include "ui/status/StatusPalette.h"

#include <QDir>
#include <QPainter>
#include <gtest/gtest.h>

namespace {

using PanelScene::panelBackground;

// Set QUILLON_SHOTS_DIR to keep every rendering as a PNG for a person to look at.
void keep(const QImage& image, const QString& name) {
    const QString dir = qEnvironmentVariable("QUILLON_SHOTS_DIR");
    if (dir.isEmpty())
        return;
    QDir().mkpath(dir);
    image.save(QDir(dir).filePath(name + QStringLiteral(".png")));
}

bool near(QColor a, QColor b, int tolerance = 12) {
    return std::abs(a.red() - b.red()) <= tolerance &&
           std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

class EmblemRender : public ::testing::Test {
protected:
    TempPreferences prefs;
    StatusPalette palette{*prefs, QStringLiteral("#FF0074")};
};

const DeployStatus allStatuses[] = {
    DeployStatus::queued, DeployStatus::initializing, DeployStatus::building, DeployStatus::ready,
    DeployStatus::error,  DeployStatus::canceled,     DeployStatus::unknown};

} // namespace

TEST_F(EmblemRender, MiniPrismGlowsOnlyWhileRunningOrFailed) {
    for (const DeployStatus status : allStatuses) {
        MiniPrism prism;
        prism.setStatusPalette(&palette);
        prism.setStatus(status);
        QImage image(prism.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        prism.render(&image, {}, {}, QWidget::DrawChildren);
        keep(image, QStringLiteral("miniprism-") + rawValue(status).toLower());
        const bool glows = isInProgress(status) || status == DeployStatus::error;
        EXPECT_EQ(prism.hasGlow(), glows) << rawValue(status).toStdString();
        // Just under the base, outside the emblem's own frame.
        EXPECT_EQ(image.pixelColor(14, 23).alpha() > 0, glows) << rawValue(status).toStdString();
        // The solid right half of the prism carries the status colour.
        EXPECT_TRUE(near(image.pixelColor(18, 17), palette.statusColor(status)))
            << rawValue(status).toStdString();
    }
}

TEST_F(EmblemRender, MiniPrismSheetAndProgressFill) {
    // Every status, then the latest row's accent and a half-built prism, four times enlarged.
    const int cell = 28 * 4;
    QImage sheet(cell * 9, cell, QImage::Format_ARGB32_Premultiplied);
    sheet.fill(panelBackground);
    QPainter painter(&sheet);
    int column = 0;
    auto draw = [&](DeployStatus status, bool accent, std::optional<double> progress) {
        MiniPrism prism;
        prism.setStatusPalette(&palette);
        prism.setStatus(status);
        prism.setAccent(accent);
        prism.setProgress(progress);
        prism.paintEmblem(painter, QRectF(column++ * cell + 20, 24, 72, 64));
    };
    for (const DeployStatus status : allStatuses)
        draw(status, false, std::nullopt);
    draw(DeployStatus::ready, true, std::nullopt);
    draw(DeployStatus::building, false, 0.5);
    painter.end();
    keep(sheet, QStringLiteral("miniprism-sheet"));

    // Half built: the base is solid, the tip faint.
    const int x = 8 * cell + 20 + 36 + 12;
    const QColor base = sheet.pixelColor(x, 24 + 56);
    const QColor tip = sheet.pixelColor(8 * cell + 20 + 36, 24 + 16);
    EXPECT_TRUE(near(base, palette.statusColor(DeployStatus::building)));
    EXPECT_LT(tip.green(), base.green() - 60);
}

TEST_F(EmblemRender, HeroColoursFollowTheTone) {
    PrismHero hero(nullptr, [](double low, double high) { return (low + high) / 2; });
    hero.setStatusPalette(&palette);
    hero.setTone(Tone::building);
    EXPECT_EQ(hero.toneColor(), palette.success());
    hero.setTone(Tone::queued);
    EXPECT_EQ(hero.toneColor(), palette.queued());
    hero.setTone(Tone::error);
    EXPECT_EQ(hero.toneColor(), palette.error());
    EXPECT_EQ(hero.fill({0, 0, 10, 10}).color(), palette.error());
    hero.setTone(Tone::success);
    EXPECT_EQ(hero.fill({0, 0, 10, 10}).style(), Qt::LinearGradientPattern);
    hero.setMonochrome(true);
    EXPECT_EQ(hero.fill({0, 0, 10, 10}).color(), QColor(Qt::white));
    hero.setTone(Tone::disconnected);
    EXPECT_NEAR(hero.toneColor().alphaF(), 0.35, 0.01);

    palette.setError(QColor(0x11, 0x22, 0x33));
    hero.setTone(Tone::error);
    EXPECT_EQ(hero.toneColor(), QColor(0x11, 0x22, 0x33));
}

TEST_F(EmblemRender, HeroCountDimsWhenDisconnectedAndBreathesOnError) {
    PrismHero hero;
    hero.setCount(12);
    hero.setTone(Tone::disconnected);
    EXPECT_EQ(hero.countText(), QStringLiteral("–"));
    EXPECT_DOUBLE_EQ(hero.countOpacity(), 0.3);
    hero.setTone(Tone::error);
    EXPECT_EQ(hero.countText(), QStringLiteral("12"));
    double low = 1, high = 0;
    for (int i = 0; i < 2 * 78; ++i) { // one full breath: 1.3 s in, 1.3 s out
        hero.tick();
        low = std::min(low, hero.countOpacity());
        high = std::max(high, hero.countOpacity());
    }
    EXPECT_NEAR(low, 0.6, 0.01);
    EXPECT_NEAR(high, 1.0, 0.01);
    hero.setTone(Tone::idle);
    EXPECT_DOUBLE_EQ(hero.countOpacity(), 1);
}

TEST_F(EmblemRender, HeroTimerRunsOnlyWhileShownAndRestartsTheMotion) {
    PrismHero hero;
    EXPECT_FALSE(hero.isAnimating());
    hero.show();
    EXPECT_TRUE(hero.isAnimating());
    for (int i = 0; i < 30; ++i)
        hero.tick();
    hero.hide();
    EXPECT_FALSE(hero.isAnimating());
    hero.show();
    EXPECT_EQ(hero.motion().clock(), 0);
}

TEST_F(EmblemRender, HeroInEveryTone) {
    const Tone tones[] = {Tone::disconnected, Tone::idle,   Tone::success,
                          Tone::building,     Tone::queued, Tone::error};
    const char* names[] = {"disconnected", "idle", "success", "building", "queued", "error"};
    QImage sheet(296 * 6, 196 * 2, QImage::Format_ARGB32_Premultiplied);
    QPainter sheetPainter(&sheet);
    for (int monochrome = 0; monochrome < 2; ++monochrome) {
        for (std::size_t i = 0; i < std::size(tones); ++i) {
            PrismHero hero(nullptr, [n = 0](double low, double high) mutable {
                return low + (high - low) * ((n++ * 37) % 100) / 100.0;
            });
            hero.setStatusPalette(&palette);
            hero.setTone(tones[i]);
            hero.setCount(7);
            hero.setMonochrome(monochrome);
            // Led gently to the left for a second, so the prism sheds a few puffs.
            for (int t = 0; t < 60; ++t) {
                hero.motion().setPointer(QPointF(190 - t * 1.2, 110 - t * 0.3));
                hero.tick();
            }
            QImage image(hero.size(), QImage::Format_ARGB32_Premultiplied);
            image.fill(panelBackground);
            QPainter painter(&image);
            hero.paintHero(painter);
            painter.end();
            keep(image, QStringLiteral("hero-%1%2").arg(names[i], monochrome ? "-mono" : ""));
            sheetPainter.drawImage(int(i) * 296, monochrome * 196, image);
            if (tones[i] == Tone::building || tones[i] == Tone::queued || tones[i] == Tone::error) {
                // Somewhere on the canvas the tone colour is drawn at (nearly) full strength.
                bool found = false;
                for (int y = 0; y < image.height() && !found; y += 2)
                    for (int x = 0; x < image.width() && !found; x += 2)
                        found = near(image.pixelColor(x, y), hero.toneColor(), 40);
                EXPECT_TRUE(found) << names[i];
            }
        }
    }
    sheetPainter.end();
    keep(sheet, QStringLiteral("hero-sheet"));
}

// The emblem keeps its oval as a picture: after a change of tone, colour or black and white it
// must look exactly like an emblem that never showed anything else.
TEST_F(EmblemRender, HeroRedrawnAfterEveryChangeMatchesAFreshOne) {
    const auto paint = [](PrismHero& hero) {
        QImage image(hero.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(panelBackground);
        QPainter painter(&image);
        hero.paintHero(painter);
        return image;
    };
    PrismHero shown;
    shown.setStatusPalette(&palette);
    shown.setTone(Tone::building);
    paint(shown);
    const auto sameAsFresh = [&](Tone tone, bool monochrome) {
        shown.setTone(tone);
        shown.setMonochrome(monochrome);
        PrismHero fresh;
        fresh.setStatusPalette(&palette);
        fresh.setTone(tone);
        fresh.setMonochrome(monochrome);
        return paint(shown) == paint(fresh);
    };
    EXPECT_TRUE(sameAsFresh(Tone::error, false));
    EXPECT_TRUE(sameAsFresh(Tone::idle, false));
    EXPECT_TRUE(sameAsFresh(Tone::idle, true));
    palette.setError(QColor(0x11, 0x22, 0x33));
    EXPECT_TRUE(sameAsFresh(Tone::error, false));
}

TEST_F(EmblemRender, ProgressAndBleedShots) {
    QImage sheet(240, 60, QImage::Format_ARGB32_Premultiplied);
    sheet.fill(panelBackground);
    QPainter painter(&sheet);
    const std::optional<double> values[] = {0.0, 0.6, std::nullopt};
    for (int i = 0; i < 3; ++i) {
        ProgressLine line;
        line.resize(200, ProgressLine::thickness);
        line.setColor(palette.success());
        line.setProgress(values[i]);
        line.tick(1 + 0.3 * i);
        line.render(&painter, QPoint(20, 10 + i * 8), {}, QWidget::DrawChildren);
    }
    LetterBleed bleed;
    bleed.resize(200, 24);
    bleed.setText(QStringLiteral("quillon-web"));
    bleed.setFontSize(13);
    bleed.setTracking(1.2);
    bleed.setFocus({60, 12});
    bleed.setActive(true);
    for (int i = 0; i < 30; ++i)
        bleed.tick();
    painter.setFont(bleed.letterFont());
    painter.setPen(QColor(255, 255, 255, 200));
    painter.drawText(QRect(20, 34, 200, 24), Qt::AlignLeft | Qt::AlignVCenter, bleed.shownText());
    bleed.render(&painter, QPoint(20, 34), {}, QWidget::DrawChildren);
    painter.end();
    keep(sheet.scaled(sheet.size() * 3, Qt::KeepAspectRatio, Qt::SmoothTransformation),
         QStringLiteral("progress-and-bleed"));
    // Alone, the bleed shows around the spotlight and nowhere past its 72-point rim, although
    // a long name fills the whole width.
    bleed.setText(QStringLiteral("quillon-web-dashboard-staging-preview"));
    QImage alone(bleed.size(), QImage::Format_ARGB32_Premultiplied);
    alone.fill(Qt::transparent);
    bleed.render(&alone, {}, {}, QWidget::DrawChildren);
    auto columnAlpha = [&](int x) {
        int most = 0;
        for (int y = 0; y < alone.height(); ++y)
            most = std::max(most, qAlpha(alone.pixel(x, y)));
        return most;
    };
    EXPECT_GT(columnAlpha(int(bleed.x())), 100);
    EXPECT_EQ(columnAlpha(int(bleed.x()) + 80), 0);
}
