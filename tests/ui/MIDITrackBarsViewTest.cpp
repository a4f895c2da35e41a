#include "MIDITrackBarsView.h"

#include "ViewProbe.h"

#include <gtest/gtest.h>

namespace tambrel {
namespace {

constexpr QSize size(456, 138); // The song reaches from 28 to 448; the rows' bars stand on 124, 116, ...

std::vector<MIDITrackPhraseLane> lanes(int count) {
    std::vector<MIDITrackPhraseLane> result;
    for (int i = 0; i < count; ++i)
        result.push_back({std::to_string(i + 2), {{0.1, 0.3}, {0.5, 0.7}}});
    return result;
}

TEST(MIDITrackBarsGeometry, ShowsTheRowsThatFit) {
    const struct {
        const char* name;
        QSizeF size;
        int laneCount;
        std::int64_t trackCount;
        std::size_t rowCount;
        double lowest;
    } rows[] = {
        {"sixteen rows fit exactly", {456, 138}, 20, 20, 16, 4},
        {"a view a little lower than five rows", {300, 49.9}, 9, 9, 4, 11.9},
        {"fewer lanes than tracks", {456, 138}, 2, 3, 2, 116},
        {"no lanes, but as many tracks as a header can declare", {456, 138}, 0, 65535, 16, 4},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto shown = MIDITrackBarsGeometry::of(row.size, lanes(row.laneCount), row.trackCount).rows;
        ASSERT_EQ(shown.size(), row.rowCount);
        EXPECT_DOUBLE_EQ(shown.back().strip.y(), row.lowest);
        EXPECT_EQ(shown.front().label, row.laneCount > 0 ? "2" : "1");
    }
}

TEST(MIDITrackBarsGeometry, PlacesPhrasesWithinTheSong) {
    const struct {
        MIDIPhrase phrase;
        double x, width;
    } rows[] = {{{0.25, 0.5}, 28 + 105, 105},
                {{0.9, 1.2}, 28 + 378, 42},
                {{1, 1.005}, 448, 2},
                {{-0.5, 0.5}, 28, 210},
                {{0.5, 0.2}, 28 + 210, 2}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.phrase.start);
        const auto phrases = MIDITrackBarsGeometry::of(size, {{"8", {row.phrase}}}, 0).rows[0].phrases;
        EXPECT_NEAR(phrases.front().x(), row.x, 1e-9);
        EXPECT_NEAR(phrases.front().width(), row.width, 1e-9);
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

TEST(MIDITrackBarsView, ShowsAHintThenEmptyTracksThenPhrases) {
    MIDITrackBarsView view;
    view.resize(size);
    view.setProgress(1.2);
    const QImage empty = picture(view);
    for (const QPoint border : {QPoint(2, 70), {453, 135}})
        EXPECT_TRUE(looksLike(empty.pixel(border), RetroTheme::ink())) << border.x();
    EXPECT_GT(colors(empty.copy(150, 60, 156, 18)).size(), 2u) << "the text in the middle";
    EXPECT_EQ(colors(empty.copy(4, 4, 448, 50)).size(), 1u) << "no grid and no playhead";

    view.setTrackCount(3);
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

    view.setLanes(lanes(3));
    const QImage bars = picture(view);
    for (const auto& [y, strength] : {std::pair(12, 0.82), {20, 0.52}, {28, 0.82}})
        EXPECT_TRUE(looksLike(bars.pixel(100, y), RetroTheme::ink(strength), RetroTheme::paper())) << y;
    EXPECT_TRUE(looksLike(bars.pixel(200, 12), RetroTheme::paper())) << "between the phrases";
    EXPECT_FALSE(looksLike(bars.pixel(70, 10), RetroTheme::ink(0.82), RetroTheme::paper())) << "round ends";
}

} // namespace
} // namespace tambrel
