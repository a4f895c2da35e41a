#include "SevenSegmentCounterView.h"
#include "SevenSegmentGeometry.h"
#include "ViewProbe.h"

#include <gtest/gtest.h>

namespace tambrel {
namespace {

using namespace SevenSegmentGeometry;

void expectNear(const QRectF& seen, const QRectF& wanted) {
    EXPECT_NEAR(seen.x(), wanted.x(), 0.001);
    EXPECT_NEAR(seen.y(), wanted.y(), 0.001);
    EXPECT_NEAR(seen.width(), wanted.width(), 0.001);
    EXPECT_NEAR(seen.height(), wanted.height(), 0.001);
}

TEST(SevenSegmentCounter, CentresItsCellsAndKeepsDigitsReadable) {
    const struct {
        QSizeF size;
        const char* text;
        QRectF first, last;
    } rows[] = {
        {{304, 56}, "00:00:00.00", {6, 4, 28.8546, 48}, {269.1454, 4, 28.8546, 48}},
        {{800, 100}, "00:", {351.52, 14.9, 36, 70.2}, {435.52, 14.9, 12.96, 70.2}},
        {{120, 30}, "00:00:00.00", {-20, 4, 14, 22}, {126, 4, 14, 22}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.size.width());
        const auto seen = cells(row.size, row.text);
        expectNear(seen.front().rect, row.first);
        expectNear(seen.back().rect, row.last);
    }
}

TEST(SevenSegmentCounter, LightsTheSegmentsOfEachDigit) {
    // Named a to g as on a tube's data sheet: clockwise from the top, the middle last.
    const std::pair<QChar, QString> rows[] = {
        {u'0', "abcdef"}, {u'1', "bc"},  {u'2', "abdeg"},   {u'3', "abcdg"},  {u'4', "bcfg"}, {u'5', "acdfg"},
        {u'6', "acdefg"}, {u'7', "abc"}, {u'8', "abcdefg"}, {u'9', "abcdfg"}, {u'/', ""},     {u':', ""}};
    const QString letters = "afbgecd"; // In the order of the segments.
    for (const auto& [character, lit] : rows) {
        SCOPED_TRACE(QString(character).toStdString());
        for (const Segment segment : allSegments)
            EXPECT_EQ(isLit(character, segment), lit.contains(letters[static_cast<int>(segment)]));
    }
}

TEST(SevenSegmentCounter, PlacesItsSegmentsInTheCell) {
    const std::pair<Segment, QRectF> rows[] = {
        // In a cell of 50 by 100 at 10, 20: segments 8 thick, a quarter of that above and on the middle.
        {Segment::top, {14, 112, 42, 8}},       {Segment::upperLeft, {10, 72, 8, 42}},
        {Segment::upperRight, {52, 72, 8, 42}}, {Segment::middle, {14, 66, 42, 8}},
        {Segment::lowerLeft, {10, 28, 8, 42}},  {Segment::lowerRight, {52, 28, 8, 42}},
        {Segment::bottom, {14, 20, 42, 8}},
    };
    for (const auto& [segment, box] : rows) {
        SCOPED_TRACE(static_cast<int>(segment));
        const QPolygonF shape = hexagon(segment, {10, 20, 50, 100});
        EXPECT_EQ(shape.size(), 6);
        expectNear(shape.boundingRect(), box);
        EXPECT_FALSE(shape.containsPoint(box.topLeft() + QPointF(1, 1), Qt::OddEvenFill)) << "a corner";
    }
    expectNear(hexagon(Segment::bottom, {0, 0, 14, 27.3}).boundingRect(), {2, 0, 10, 4}); // Never thinner.
}

TEST(SevenSegmentCounter, PlacesItsDotsInTheCell) {
    const auto colon = dots({u':', {10, 20, 10, 100}});
    ASSERT_EQ(colon.size(), 2U);
    expectNear(colon[0], {13, 88, 4, 4});
    expectNear(colon[1], {13, 46, 4, 4});
    const auto stop = dots({u'.', {0, 0, 20, 50}});
    ASSERT_EQ(stop.size(), 1U);
    expectNear(stop[0], {7.2, 1, 5.6, 5.6});
}

TEST(SevenSegmentCounterView, PaintsLitSegmentsInInkAndUnlitOnesFaintly) {
    SevenSegmentCounterView view;
    view.resize(60, 80); // One digit, 36 by 70.2, in the middle.
    const auto expectInk = [&](QPoint place, double strength) {
        EXPECT_TRUE(looksLike(picture(view).pixel(place), RetroTheme::ink(strength), RetroTheme::paper()));
    };
    const QPoint middle(30, 40), top(30, 7), upperLeft(14, 20);
    view.setText("7");
    expectInk(top, 1);
    expectInk(middle, 0.1);
    expectInk(upperLeft, 0.1);
    view.setText("4");
    expectInk(top, 0.1);
    expectInk(middle, 1);
    for (const char* blank : {"", "-", "x"}) {
        view.setText(blank);
        EXPECT_EQ(colors(picture(view)).size(), 1u) << blank;
    }
}

TEST(SevenSegmentCounterView, IsRepaintedOnlyByAnotherTextAndReadsItAloud) {
    SevenSegmentCounterView view;
    ShownView shown(view, {304, 56});
    view.setText("00:00:00.00");
    EXPECT_EQ(shown.paints(), 0);
    view.setText("00:00:12.34");
    EXPECT_EQ(shown.paints(), 1);
    const auto* accessible = QAccessible::queryAccessibleInterface(&view);
    EXPECT_EQ(accessible->text(QAccessible::Value), "00:00:12.34");
}

} // namespace
} // namespace tambrel
