#include "ui/panel/LetterBleed.h"

#include <QImage>
#include <gtest/gtest.h>

namespace {

struct ShownBleed {
    LetterBleed bleed;
    ShownBleed() {
        bleed.resize(240, 24);
        bleed.setText("quillon-web");
        bleed.show();
    }
};

} // namespace

TEST(LetterBleed, StartsUnderThePointerThenGlidesAfterIt) {
    ShownBleed shown;
    shown.bleed.setFocus({100, 12});
    shown.bleed.setActive(true);
    shown.bleed.tick();
    EXPECT_DOUBLE_EQ(shown.bleed.x(), 100);
    shown.bleed.setFocus({160, 12});
    shown.bleed.tick();
    EXPECT_GT(shown.bleed.x(), 100);
    EXPECT_LT(shown.bleed.x(), 110); // glides, does not jump
    for (int i = 0; i < 600; ++i)
        shown.bleed.tick();
    EXPECT_NEAR(shown.bleed.x(), 160, 0.01);
}

TEST(LetterBleed, SpotlightEasesInAndOutInAThirdOfASecond) {
    ShownBleed shown;
    shown.bleed.setActive(true);
    for (int i = 0; i < 9; ++i)
        shown.bleed.tick();
    EXPECT_GT(shown.bleed.spotlight(), 0.6); // ease-out: past the linear share half way through
    for (int i = 0; i < 9; ++i)
        shown.bleed.tick();
    EXPECT_DOUBLE_EQ(shown.bleed.spotlight(), 1);
    shown.bleed.setActive(false);
    for (int i = 0; i < 17; ++i)
        shown.bleed.tick();
    EXPECT_TRUE(shown.bleed.isAnimating()); // still fading out
    shown.bleed.tick();
    EXPECT_FALSE(shown.bleed.isAnimating());
}

TEST(LetterBleed, ShowsTheCapitalisedNameAroundTheSpotlightOnly) {
    ShownBleed shown;
    EXPECT_EQ(shown.bleed.shownText(), "QUILLON-WEB");
    shown.bleed.setText("quillon-web-dashboard-staging-preview-and-more");
    shown.bleed.setFocus({60, 12});
    shown.bleed.setActive(true);
    for (int i = 0; i < 30; ++i)
        shown.bleed.tick();
    QImage image(shown.bleed.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    shown.bleed.render(&image, {}, {}, QWidget::DrawChildren);
    auto columnAlpha = [&](int x) {
        int most = 0;
        for (int y = 0; y < image.height(); ++y)
            most = std::max(most, qAlpha(image.pixel(x, y)));
        return most;
    };
    // A long name fills the whole width, yet nothing shows past the spotlight's rim.
    EXPECT_GT(columnAlpha(60), 50);
    EXPECT_EQ(columnAlpha(60 + 80), 0);
}
