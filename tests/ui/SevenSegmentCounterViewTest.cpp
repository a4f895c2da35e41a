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
    struct Row {
        const char* name;
        QSizeF size;
        const char* text;
        QRectF first, last;
    };
    const Row rows[] = {
        {"digits share the width", {304, 56}, "00:00:00.00", {6, 4, 28.8546, 48}, {269.1454, 4, 28.8546, 48}},
        {"the width sets the height",
         {60, 60},
         "12",
         {6, 8.0625, 22.5, 43.875},
         {31.5, 8.0625, 22.5, 43.875}},
        {"wide: digits stop at 36", {800, 100}, "00:", {351.52, 14.9, 36, 70.2}, {435.52, 14.9, 12.96, 70.2}},
        {"narrow: digits stop at 14", {120, 30}, "00:00:00.00", {-20, 4, 14, 22}, {126, 4, 14, 22}},
        {"short: the height stops first", {800, 30}, "1", {382, 4, 36, 22}, {382, 4, 36, 22}},
        {"other characters are as narrow as dots",
         {20, 60},
         "-x",
         {2.5, 16.35, 6, 27.3},
         {11.5, 16.35, 6, 27.3}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto seen = cells(row.size, row.text);
        ASSERT_FALSE(seen.empty());
        expectNear(seen.front().rect, row.first);
        expectNear(seen.back().rect, row.last);
    }
    EXPECT_TRUE(cells({304, 56}, "").empty());
}

TEST(SevenSegmentCounter, LightsTheSegmentsOfEachDigit) {
    // Named a to g as on a tube's data sheet: clockwise from the top, the middle last.
    const std::pair<QChar, QString> rows[] = {
        {u'0', "abcdef"}, {u'1', "bc"},     {u'2', "abdeg"}, {u'3', "abcdg"},   {u'4', "bcfg"},
        {u'5', "acdfg"},  {u'6', "acdefg"}, {u'7', "abc"},   {u'8', "abcdefg"}, {u'9', "abcdfg"},
        {u'/', ""},       {u':', ""},       {u'A', ""}};
    const QString letters = "afbgecd"; // In the order of the segments.
    for (const auto& [character, lit] : rows) {
        SCOPED_TRACE(QString(character).toStdString());
        for (const Segment segment : allSegments)
            EXPECT_EQ(isLit(character, segment), lit.contains(letters[static_cast<int>(segment)]));
    }
}

TEST(SevenSegmentCounter, PlacesItsSegmentsInTheCell) {
    struct Row {
        const char* name;
        Segment segment;
        QRectF box; // In a cell of 50 by 100 at 10, 20: segments 8 thick.
    };
    const Row rows[] = {
        {"top", Segment::top, {14, 112, 42, 8}},
        {"upper left, a quarter thickness above the middle", Segment::upperLeft, {10, 72, 8, 42}},
        {"upper right", Segment::upperRight, {52, 72, 8, 42}},
        {"middle", Segment::middle, {14, 66, 42, 8}},
        {"lower left, ending on the middle", Segment::lowerLeft, {10, 28, 8, 42}},
        {"lower right", Segment::lowerRight, {52, 28, 8, 42}},
        {"bottom", Segment::bottom, {14, 20, 42, 8}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const QPolygonF shape = hexagon(row.segment, {10, 20, 50, 100});
        EXPECT_EQ(shape.size(), 6);
        expectNear(shape.boundingRect(), row.box);
        EXPECT_FALSE(shape.containsPoint(row.box.topLeft() + QPointF(1, 1), Qt::OddEvenFill)) << "a corner";
    }
    expectNear(hexagon(Segment::bottom, {0, 0, 14, 27.3}).boundingRect(), {2, 0, 10, 4}); // Never thinner.
}

TEST(SevenSegmentCounter, PlacesItsDotsInTheCell) {
    struct Row {
        const char* name;
        Cell cell;
        std::vector<QRectF> dots;
    };
    const Row rows[] = {
        {"colon", {u':', {10, 20, 10, 100}}, {{13, 88, 4, 4}, {13, 46, 4, 4}}},
        {"full stop", {u'.', {10, 20, 10, 100}}, {{13, 21, 4, 4}}},
        {"larger in a wide cell", {u'.', {0, 0, 20, 50}}, {{7.2, 1, 5.6, 5.6}}},
        {"minus", {u'-', {10, 20, 10, 100}}, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto seen = dots(row.cell);
        ASSERT_EQ(seen.size(), row.dots.size());
        for (std::size_t i = 0; i < seen.size(); ++i)
            expectNear(seen[i], row.dots[i]);
    }
}

TEST(SevenSegmentCounterView, PaintsLitSegmentsInInkAndUnlitOnesFaintly) {
    SevenSegmentCounterView view;
    view.resize(60, 80); // One digit, 36 by 70.2, in the middle.
    const QPoint middle(30, 40), top(30, 7), upperLeft(14, 20);
    view.setText("7");
    const QImage seven = picture(view);
    EXPECT_TRUE(looksLike(seven.pixel(top), RetroTheme::ink()));
    EXPECT_TRUE(looksLike(seven.pixel(middle), RetroTheme::ink(0.1), RetroTheme::paper()));
    EXPECT_TRUE(looksLike(seven.pixel(upperLeft), RetroTheme::ink(0.1), RetroTheme::paper()));
    view.setText("4");
    const QImage four = picture(view);
    EXPECT_TRUE(looksLike(four.pixel(top), RetroTheme::ink(0.1), RetroTheme::paper()));
    EXPECT_TRUE(looksLike(four.pixel(middle), RetroTheme::ink()));
    for (const char* blank : {"", "-", "x"}) {
        view.setText(blank);
        EXPECT_EQ(colors(picture(view)).size(), 1u) << blank;
    }
}

TEST(SevenSegmentCounterView, IsRepaintedOnlyByAnotherTextAndReadsItAloud) {
    SevenSegmentCounterView view;
    ShownView shown(view, {304, 56});
    EXPECT_EQ(view.text(), "00:00:00.00");
    view.setText("00:00:00.00");
    EXPECT_EQ(shown.paints(), 0);
    view.setText("00:00:12.34");
    EXPECT_EQ(shown.paints(), 1);
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&view);
    EXPECT_EQ(accessible->text(QAccessible::Value), "00:00:12.34");
}

} // namespace
} // namespace tambrel
