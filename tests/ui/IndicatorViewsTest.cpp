#include "BlackLEDActivityView.h"
#include "LoadedBlueRectangleView.h"
#include "ViewProbe.h"

#include <gtest/gtest.h>

namespace tambrel {
namespace {

TEST(BlackLEDActivity, KeepsItsBarsAndGapsWithinLimits) {
    const struct {
        QSizeF size;
        double x, width, restingHeight, tallest;
    } rows[] = {{{60, 104}, 17 * (1 + 43 / 18.0), 43 / 18.0, 18, 100},
                {{300, 28}, 17 * (3 + 249 / 18.0), 249 / 18.0, 4.32, 24},
                {{20, 6}, 17 * 2.5, 1.5, 4, 4}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.size.width());
        const QRectF resting = BlackLEDBar::row(row.size, std::nullopt)[17].rect;
        EXPECT_NEAR(resting.x(), row.x, 0.001);
        EXPECT_NEAR(resting.width(), row.width, 0.001);
        EXPECT_NEAR(resting.height(), row.restingHeight, 0.001);
        EXPECT_NEAR(BlackLEDBar::row(row.size, 0)[2].rect.height(), row.tallest, 0.001);
    }
}

TEST(BlackLEDActivity, MovesItsPatternByABarAStep) {
    const QSizeF size(120, 84);
    const auto first = BlackLEDBar::row(size, 0);
    const std::pair<double, double> wanted[] = {{20, 0.35}, {50, 0.625}, {80, 1}}; // Height, strength.
    for (std::size_t i = 0; i < std::size(wanted); ++i)
        EXPECT_EQ(std::pair(first[i].rect.height(), first[i].alpha), wanted[i]) << i;
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
    // A timer that started anew at each call would never get to its first step.
    EXPECT_TRUE(QTest::qWaitFor([&] {
        view.setAnimating(true);
        return picture(view) != firstPhase;
    }));
    shown.paints();
    for (const int paints : {1, 0}) {
        view.setAnimating(false);
        EXPECT_EQ(shown.paints(), paints);
    }
    EXPECT_EQ(picture(view), resting);
    view.setAnimating(true);
    EXPECT_EQ(picture(view), firstPhase);
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
    for (const int paints : {1, 0}) {
        view.setLoaded(true);
        EXPECT_EQ(shown.paints(), paints);
    }
    const QImage loaded = picture(view);
    for (const auto& [x, color] : {std::pair(0, QColor(Qt::red)),
                                   {1, RetroTheme::darkBlueFill()},
                                   {18, RetroTheme::darkBlueFill()},
                                   {19, Qt::red}})
        EXPECT_TRUE(looksLike(loaded.pixel(x, 5), color)) << x;
    view.setLoaded(false);
    EXPECT_EQ(shown.paints(), 1);
}

} // namespace
} // namespace tambrel
