#include "MIDITrackBarsView.h"

#include "ViewProbe.h"

#include <gmock/gmock.h>

namespace tambrel {
namespace {

using ::testing::ElementsAre;

constexpr QSize size(456, 138); // The song reaches from 28 to 448; the rows' bars stand on 124, 116, ...

std::vector<MIDITrackPhraseLane> lanes(int count) {
    std::vector<MIDITrackPhraseLane> result;
    for (int i = 0; i < count; ++i)
        result.push_back({std::to_string(i + 2), {{0.1, 0.3}, {0.5, 0.7}}});
    return result;
}

std::vector<double> bottoms(const MIDITrackBarsGeometry& geometry) {
    std::vector<double> result;
    for (const auto& row : geometry.rows)
        result.push_back(row.strip.y());
    return result;
}

TEST(MIDITrackBarsGeometry, ShowsTheRowsThatFit) {
    struct Row {
        const char* name;
        QSizeF size;
        int laneCount;
        std::int64_t trackCount;
        std::size_t rowCount;
        double lowest;
    };
    const Row rows[] = {
        {"sixteen rows fit exactly", {456, 138}, 20, 20, 16, 4},
        {"a view 50 high", {300, 50}, 9, 9, 5, 4},
        {"a view a little lower", {300, 49.9}, 9, 9, 4, 11.9},
        {"fewer lanes than tracks", {456, 138}, 2, 3, 2, 116},
        {"no lanes but tracks", {456, 138}, 0, 3, 3, 108},
        {"as many tracks as a header can declare", {456, 138}, 0, 65535, 16, 4},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto geometry = MIDITrackBarsGeometry::of(row.size, lanes(row.laneCount), row.trackCount);
        ASSERT_EQ(geometry.rows.size(), row.rowCount);
        EXPECT_DOUBLE_EQ(geometry.rows.back().strip.y(), row.lowest);
        EXPECT_EQ(geometry.rows.front().label, row.laneCount > 0 ? "2" : "1");
        EXPECT_EQ(geometry.rows.front().phrases.empty(), row.laneCount == 0);
    }
    EXPECT_THAT(bottoms(MIDITrackBarsGeometry::of({300, 50}, {}, 9)), ElementsAre(36, 28, 20, 12, 4));
    EXPECT_EQ(MIDITrackBarsGeometry::of({20, 20}, {}, 1).barArea.width(), 1) << "never narrower";
}

TEST(MIDITrackBarsGeometry, PlacesPhrasesWithinTheSong) {
    struct Row {
        const char* name;
        MIDIPhrase phrase;
        double x, width;
    };
    const Row rows[] = {
        {"a phrase", {0.25, 0.5}, 28 + 105, 105},
        {"the whole song", {0, 1}, 28, 420},
        {"past the end", {0.9, 1.2}, 28 + 378, 42},
        {"never narrower than 2", {0.999, 1.005}, 28 + 419.58, 2},
        {"a last note alone", {1, 1.005}, 448, 2},
        {"before the start", {-0.5, 0.5}, 28, 210},
        {"ends before it starts", {0.5, 0.2}, 28 + 210, 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto geometry = MIDITrackBarsGeometry::of(size, {{"7", {}}, {"8", {row.phrase}}}, 0);
        const QRectF phrase = geometry.rows[1].phrases.front();
        EXPECT_NEAR(phrase.x(), row.x, 1e-9);
        EXPECT_NEAR(phrase.width(), row.width, 1e-9);
        EXPECT_EQ(phrase.y(), 116);
        EXPECT_EQ(phrase.height(), 4);
    }
}

TEST(MIDITrackBarsGeometry, PaintsNoMorePhrasesThanCanBeToldApart) {
    constexpr int count = 100'000;
    MIDITrackPhraseLane dense{"1", {}};
    for (int i = 0; i < count; ++i)
        dense.phrases.push_back({1.0 * i / count, 1.0 * i / count + 0.005});
    const auto phrases = MIDITrackBarsGeometry::of(size, {dense}, 0).rows[0].phrases;
    EXPECT_LE(phrases.size(), 420u / 2 + 1);
    EXPECT_EQ(phrases.front().left(), 28);
    EXPECT_GE(phrases.back().right(), 448);
    for (std::size_t i = 1; i < phrases.size(); ++i)
        EXPECT_GE(phrases[i - 1].right(), phrases[i].left()) << "no gap";
}

class MIDITrackBarsViewTest : public ::testing::Test {
protected:
    MIDITrackBarsView view;
    ShownView shown{view, size};
};

TEST_F(MIDITrackBarsViewTest, HintsAtWhatToDoWhileNothingIsLoaded) {
    view.setProgress(0.5);
    const QImage empty = picture(view);
    EXPECT_TRUE(looksLike(empty.pixel(2, 70), RetroTheme::ink())) << "the border";
    EXPECT_TRUE(looksLike(empty.pixel(453, 135), RetroTheme::ink())) << "the border";
    EXPECT_TRUE(looksLike(empty.pixel(70, 10), RetroTheme::paper())) << "no grid";
    EXPECT_TRUE(looksLike(empty.pixel(238, 20), RetroTheme::paper())) << "no playhead";
    EXPECT_GT(colors(empty.copy(150, 60, 156, 18)).size(), 2u) << "the text in the middle";
    EXPECT_EQ(colors(empty.copy(4, 4, 448, 50)).size(), 1u);
}

TEST_F(MIDITrackBarsViewTest, ShowsEmptyTracksAsFaintStrips) {
    view.setTrackCount(3);
    view.setProgress(1.2);
    const QImage strips = picture(view);
    for (const int y : {12, 20, 28})
        EXPECT_TRUE(looksLike(strips.pixel(50, y), RetroTheme::ink(0.12), RetroTheme::paper())) << y;
    EXPECT_TRUE(looksLike(strips.pixel(50, 36), RetroTheme::paper())) << "no fourth row";
    EXPECT_TRUE(looksLike(strips.pixel(70, 70), RetroTheme::ink(0.16), RetroTheme::paper())) << "the grid";
    EXPECT_GT(colors(strips.copy(4, 5, 20, 10)).size(), 1u) << "the label";
    EXPECT_TRUE(looksLike(strips.pixel(447, 70), RetroTheme::ink())) << "the playhead at the right end";
    for (const int x : {445, 450})
        EXPECT_TRUE(looksLike(strips.pixel(x, 6), RetroTheme::ink())) << "its dot at " << x;
    view.setProgress(-0.5);
    EXPECT_TRUE(looksLike(picture(view).pixel(28, 40), RetroTheme::ink())) << "and at the left end";
}

TEST_F(MIDITrackBarsViewTest, AlternatesTheStrengthOfItsRows) {
    view.setLanes(lanes(3));
    const QImage bars = picture(view);
    EXPECT_TRUE(looksLike(bars.pixel(100, 12), RetroTheme::ink(0.82), RetroTheme::paper()));
    EXPECT_TRUE(looksLike(bars.pixel(100, 20), RetroTheme::ink(0.52), RetroTheme::paper()));
    EXPECT_TRUE(looksLike(bars.pixel(100, 28), RetroTheme::ink(0.82), RetroTheme::paper()));
    EXPECT_TRUE(looksLike(bars.pixel(200, 12), RetroTheme::paper())) << "between the phrases";
    EXPECT_FALSE(looksLike(bars.pixel(70, 10), RetroTheme::ink(0.82), RetroTheme::paper())) << "round ends";
}

TEST_F(MIDITrackBarsViewTest, RepaintsOnlyWhatThePlayheadLeftAndReached) {
    view.setLanes(lanes(16));
    EXPECT_FALSE(shown.due().isEmpty());
    view.setLanes(lanes(16));
    view.setTrackCount(0);
    view.setProgress(0);
    view.setProgress(0.4 / 420);
    EXPECT_TRUE(shown.due().isEmpty()) << "nothing that can be seen has changed";

    for (const double x : {1.0, 129.0, 200.0, 199.0, 420.0, 42.0}) {
        const double before = view.progress();
        view.setProgress(x / 420);
        const QRegion moved = shown.due();
        EXPECT_TRUE(moved.contains(QRect(static_cast<int>(28 + x) - 3, 2, 6, 134))) << x;
        EXPECT_TRUE(moved.contains(QRect(static_cast<int>(28 + before * 420) - 3, 2, 6, 134))) << x;
        int pixels = 0;
        for (const QRect& part : moved)
            pixels += part.width() * part.height();
        EXPECT_LE(pixels, 2 * 11 * size.height()) << x;
        EXPECT_EQ(onScreen(view), picture(view)) << x;
    }
}

TEST_F(MIDITrackBarsViewTest, FollowsItsSize) {
    view.setTrackCount(16);
    view.resize(300, 50);
    view.setProgress(1);
    EXPECT_FALSE(shown.due().isEmpty());
    EXPECT_EQ(onScreen(view), picture(view));
    EXPECT_TRUE(looksLike(picture(view).pixel(291, 25), RetroTheme::ink()));
}

} // namespace
} // namespace tambrel
