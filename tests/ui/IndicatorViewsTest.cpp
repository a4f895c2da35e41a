#include "BlackLEDActivityView.h"
#include "LoadedBlueRectangleView.h"
#include "ViewProbe.h"

#include <gtest/gtest.h>

namespace tambrel {
namespace {

TEST(BlackLEDActivity, KeepsItsBarsAndGapsWithinLimits) {
    struct Row {
        const char* name;
        QSizeF size;
        double pitch, width, restingHeight, tallest;
    };
    const Row rows[] = {
        {"the narrowest gap", {60, 104}, 1 + 43 / 18.0, 43 / 18.0, 18, 100},
        {"a gap of a sixtieth", {120, 54}, 2 + 86 / 18.0, 86 / 18.0, 9, 50},
        {"the widest gap", {300, 28}, 3 + 249 / 18.0, 249 / 18.0, 4.32, 24},
        {"bars never thinner than 1.5", {20, 28}, 2.5, 1.5, 4.32, 24},
        {"bars never lower than 4", {60, 6}, 1 + 43 / 18.0, 43 / 18.0, 4, 4},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto resting = BlackLEDBar::row(row.size, std::nullopt);
        const auto dancing = BlackLEDBar::row(row.size, 0);
        EXPECT_NEAR(resting[17].rect.x(), 17 * row.pitch, 0.001);
        EXPECT_NEAR(resting[17].rect.width(), row.width, 0.001);
        EXPECT_NEAR(resting[17].rect.height(), row.restingHeight, 0.001);
        EXPECT_EQ(resting[17].rect.y(), 2);
        EXPECT_NEAR(dancing[2].rect.height(), row.tallest, 0.001);
        EXPECT_EQ(resting[17].alpha, 0.12);
    }
}

TEST(BlackLEDActivity, MovesItsPatternByABarAStep) {
    const QSizeF size(120, 84);
    const auto first = BlackLEDBar::row(size, 0);
    EXPECT_EQ(first[0].rect.height(), 20);
    EXPECT_EQ(first[0].alpha, 0.35); // A level of 0.25, brightened.
    EXPECT_EQ(first[1].rect.height(), 50);
    EXPECT_EQ(first[1].alpha, 0.625);
    EXPECT_EQ(first[2].rect.height(), 80);
    EXPECT_EQ(first[2].alpha, 1);
    for (int phase = 0; phase < BlackLEDBar::phaseCount; ++phase) {
        const auto now = BlackLEDBar::row(size, phase);
        const auto next = BlackLEDBar::row(size, (phase + 1) % BlackLEDBar::phaseCount);
        for (std::size_t i = 0; i + 1 < now.size(); ++i)
            EXPECT_EQ(now[i + 1].rect.height(), next[i].rect.height()) << phase << ", " << i;
    }
}

TEST(BlackLEDActivityView, DancesWhileAnimatingAndLiesLowAfterwards) {
    BlackLEDActivityView view;
    ShownView shown(view, {106, 22});
    const QImage resting = picture(view);
    EXPECT_TRUE(looksLike(resting.pixel(1, 18), RetroTheme::ink(0.12), RetroTheme::paper()));

    view.setAnimating(true);
    EXPECT_EQ(shown.paints(), 0) << "shows at the first step";
    const QImage firstPhase = picture(view);
    EXPECT_TRUE(looksLike(firstPhase.pixel(13, 10), RetroTheme::ink()));
    EXPECT_TRUE(QTest::qWaitFor([&] { return picture(view) != firstPhase; }));
    shown.paints();
    view.setAnimating(false);
    EXPECT_EQ(shown.paints(), 1);
    EXPECT_EQ(picture(view), resting);
    view.setAnimating(false);
    EXPECT_EQ(shown.paints(), 0);

    view.setAnimating(true);
    EXPECT_EQ(picture(view), firstPhase);
}

TEST(BlackLEDActivityView, KeepsStepWhenToldAgainToAnimate) {
    BlackLEDActivityView view;
    ShownView shown(view, {106, 22});
    view.setAnimating(true);
    const QImage firstPhase = picture(view);
    // A timer that started anew at each call would never get to its first step.
    EXPECT_TRUE(QTest::qWaitFor([&] {
        view.setAnimating(true);
        return picture(view) != firstPhase;
    }));
}

TEST(BlackLEDActivityView, HasBarsEquallyWideAtEveryScale) {
    for (const double scale : {1.0, 1.25, 1.5, 2.0}) {
        SCOPED_TRACE(scale);
        BlackLEDActivityView view;
        view.resize(120, 28);
        const QImage image = picture(view, scale);
        EXPECT_EQ(colors(image).size(), 2u) << "no half-tones";
        std::set<int> widths;
        int run = 0;
        for (int x = 0; x < image.width(); ++x) {
            const bool isBar = image.pixel(x, image.height() - 5) != image.pixel(0, 0);
            if (!isBar && run > 0)
                widths.insert(run);
            run = isBar ? run + 1 : 0;
        }
        EXPECT_EQ(widths.size(), 1u);
    }
}

TEST(LoadedBlueRectangleView, IsFilledWhileLoadedAndOtherwiseTransparent) {
    LoadedBlueRectangleView view;
    ShownView shown(view, {20, 10});
    EXPECT_EQ(colors(picture(view)), std::set{QColor(Qt::red).rgb()});
    view.setLoaded(true);
    EXPECT_EQ(shown.paints(), 1);
    const QImage loaded = picture(view);
    EXPECT_TRUE(looksLike(loaded.pixel(1, 1), RetroTheme::darkBlueFill()));
    EXPECT_TRUE(looksLike(loaded.pixel(18, 8), RetroTheme::darkBlueFill()));
    EXPECT_TRUE(looksLike(loaded.pixel(0, 5), Qt::red));
    EXPECT_TRUE(looksLike(loaded.pixel(19, 5), Qt::red));
    view.setLoaded(true);
    EXPECT_EQ(shown.paints(), 0);
    view.setLoaded(false);
    EXPECT_EQ(shown.paints(), 1);
}

} // namespace
} // namespace tambrel
