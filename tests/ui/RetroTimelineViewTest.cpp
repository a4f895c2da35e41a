#include "RetroTimelineView.h"

#include "RecordedLog.h"
#include "RetroTimelineGeometry.h"
#include "ViewProbe.h"

#include <gmock/gmock.h>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto entry = "User Action: Moved timeline seek handle | RetroTimelineView.seek(from:)";
constexpr QSize size(456, 36); // The track reaches from 12 to 444.

TEST(RetroTimelineGeometry, PutsTrackHandleAndTicksInTheMiddle) {
    const auto geometry = RetroTimelineGeometry::of({125, 41}, 1);
    EXPECT_EQ(geometry.track, QRectF(12, 17.5, 101, 6));
    EXPECT_EQ(geometry.played, geometry.track);
    EXPECT_EQ(geometry.handle, QRectF(108, 8.5, 10, 24));
    EXPECT_EQ(geometry.ticks.front().x1(), 12);
    EXPECT_EQ(geometry.ticks[4], QLineF(62.5, 27.5, 62.5, 37.5));
    EXPECT_EQ(geometry.ticks.back(), QLineF(113, 27.5, 113, 37.5));
}

TEST(RetroTimelineGeometry, MeansATimeByEveryPlace) {
    struct Row {
        const char* name;
        double x, width, time;
    };
    const Row rows[] = {
        {"the left margin", 3, 456, 0},          {"the start of the track", 12, 456, 0},
        {"the centre", 228, 456, 120},           {"an eighth", 66, 456, 30},
        {"the end of the track", 444, 456, 240}, {"beyond the view", 900, 456, 240},
        {"before the view", -50, 456, 0},        {"no track, at its only place", 12, 24, 0},
        {"no track, right of it", 13, 24, 240},  {"a track of negative length", 4, 20, 240},
    };
    for (const Row& row : rows)
        EXPECT_EQ(RetroTimelineGeometry::time(row.x, row.width, 240), row.time) << row.name;
}

class RetroTimelineViewTest : public ::testing::Test {
protected:
    RetroTimelineViewTest() {
        view.onSeek = [this](double seconds) { sought.push_back(seconds); };
    }

    [[nodiscard]] std::vector<double> takenSeeks() { return std::exchange(sought, {}); }

    RecordedLog recorded;
    RetroTimelineView view{recorded.log};
    ShownView shown{view, size};
    std::vector<double> sought;
};

TEST_F(RetroTimelineViewTest, IsAnOutlineThatAnswersNothingWhileNothingIsLoaded) {
    view.setPosition(5);
    const QImage empty = picture(view);
    EXPECT_TRUE(looksLike(empty.pixel(12, 16), RetroTheme::ink()));
    EXPECT_TRUE(looksLike(empty.pixel(443, 18), RetroTheme::ink()));
    EXPECT_TRUE(looksLike(empty.pixel(12, 18), RetroTheme::ink()));
    EXPECT_TRUE(looksLike(empty.pixel(14, 18), RetroTheme::paper())) << "nothing played";
    EXPECT_TRUE(looksLike(empty.pixel(12, 5), RetroTheme::paper())) << "no tick";
    EXPECT_TRUE(looksLike(empty.pixel(9, 18), RetroTheme::paper())) << "no handle";

    QTest::mouseClick(&view, Qt::LeftButton, {}, {228, 18});
    QTest::keyClick(&view, Qt::Key_End);
    view.requestSeek(1);
    EXPECT_THAT(sought, IsEmpty());
    EXPECT_THAT(recorded.settled(), IsEmpty());
}

TEST_F(RetroTimelineViewTest, PaintsWhatHasBeenPlayedAndTheHandleOnTop) {
    view.setDuration(240);
    view.setPosition(60); // x = 120.
    const QImage quarter = picture(view);
    EXPECT_TRUE(looksLike(quarter.pixel(100, 17), RetroTheme::activeFill()));
    EXPECT_TRUE(looksLike(quarter.pixel(130, 18), RetroTheme::paper()));
    EXPECT_TRUE(looksLike(quarter.pixel(115, 20), RetroTheme::ink())) << "left side of the handle";
    EXPECT_TRUE(looksLike(quarter.pixel(124, 28), RetroTheme::ink())) << "right side of the handle";
    EXPECT_TRUE(looksLike(quarter.pixel(122, 17), RetroTheme::panel()));
    for (const int x : {12, 66, 174, 228, 443})
        EXPECT_TRUE(looksLike(quarter.pixel(x, 5), RetroTheme::ink())) << "tick at " << x;

    view.setPosition(-3);
    const QImage before = picture(view);
    EXPECT_TRUE(looksLike(before.pixel(7, 17), RetroTheme::ink()));
    view.setPosition(0);
    EXPECT_EQ(picture(view), before);
    view.setPosition(500);
    const QImage after = picture(view);
    EXPECT_TRUE(looksLike(after.pixel(448, 17), RetroTheme::ink()));
    EXPECT_TRUE(looksLike(after.pixel(430, 17), RetroTheme::activeFill()));
}

TEST_F(RetroTimelineViewTest, IsCrispAtEveryScaleAndPlace) {
    for (const double scale : {1.0, 1.25, 1.5, 2.0}) {
        SCOPED_TRACE(scale);
        QWidget window;
        window.resize(457, 77);
        RetroTimelineView timeline(recorded.log, &window);
        timeline.setGeometry(7, 9, 433, 37);
        timeline.setDuration(100);
        timeline.setPosition(33.3);
        EXPECT_TRUE(showsOnly(picture(window, scale), {Qt::red, RetroTheme::paper(), RetroTheme::ink(),
                                                       RetroTheme::panel(), RetroTheme::activeFill()}));
    }
}

TEST_F(RetroTimelineViewTest, SeeksOnceAPressAndOnceADrag) {
    view.setDuration(240);
    QTest::mousePress(&view, Qt::LeftButton, {}, {228, 2});
    EXPECT_THAT(takenSeeks(), ElementsAre(120));
    EXPECT_THAT(recorded.taken(), IsEmpty()) << "logged only once the event has been handled";
    EXPECT_THAT(recorded.settled(), ElementsAre(entry));

    QTest::mouseMove(&view, {66, 18});
    QTest::mouseMove(&view, {700, 18});
    QTest::mouseRelease(&view, Qt::LeftButton, {}, {700, 18});
    QTest::mouseMove(&view, {100, 18});
    EXPECT_THAT(takenSeeks(), ElementsAre(30, 240));
    EXPECT_THAT(recorded.settled(), ElementsAre(entry, entry));
    EXPECT_EQ(view.position(), 0) << "the handle waits for playback to report";

    QTest::mouseClick(&view, Qt::RightButton, {}, {228, 18});
    EXPECT_THAT(takenSeeks(), IsEmpty());
}

TEST_F(RetroTimelineViewTest, SeeksByKeyboard) {
    struct Row {
        Qt::Key key;
        double from, to;
    };
    const Row rows[] = {
        {Qt::Key_Left, 60, 55},     {Qt::Key_Right, 60, 65},    {Qt::Key_Down, 60, 55},
        {Qt::Key_Up, 60, 65},       {Qt::Key_PageDown, 60, 30}, {Qt::Key_PageUp, 60, 90},
        {Qt::Key_Home, 60, 0},      {Qt::Key_End, 60, 240},     {Qt::Key_Left, 2, 0},
        {Qt::Key_PageUp, 230, 240},
    };
    view.setDuration(240);
    for (const Row& row : rows) {
        view.setPosition(row.from);
        QTest::keyClick(&view, row.key);
        EXPECT_THAT(takenSeeks(), ElementsAre(row.to)) << row.key << " from " << row.from;
        EXPECT_THAT(recorded.settled(), ElementsAre(entry));
    }
    QTest::keyClick(&view, Qt::Key_Space);
    EXPECT_THAT(takenSeeks(), IsEmpty());
}

TEST_F(RetroTimelineViewTest, RepaintsOnlyWhatTheHandleMovedOver) {
    view.setDuration(432); // A pixel a second.
    view.setPosition(100);
    EXPECT_FALSE(shown.due().isEmpty());
    view.setDuration(432);
    view.setPosition(100);
    view.setPosition(100.4);
    EXPECT_TRUE(shown.due().isEmpty()) << "nothing that can be seen has changed";

    view.setPosition(101);
    const QRect moved = shown.due().boundingRect();
    EXPECT_TRUE(moved.contains(QRect(107, 6, 11, 24)));
    EXPECT_LE(moved.width(), 15);
    for (const double seconds : {101.6, 103.0, 300.0, 299.0, 0.0, 432.0}) {
        view.setPosition(seconds);
        EXPECT_FALSE(shown.due().isEmpty());
        EXPECT_EQ(onScreen(view), picture(view)) << seconds;
    }
}

TEST_F(RetroTimelineViewTest, IsASliderToAssistiveSoftware) {
    view.setDuration(240);
    view.setPosition(60);
    QAccessibleInterface* seen = QAccessible::queryAccessibleInterface(&view);
    ASSERT_TRUE(seen && seen->valueInterface());
    EXPECT_EQ(seen->text(QAccessible::Value), "60 of 240 seconds");
    EXPECT_TRUE(seen->state().focusable);
    EXPECT_EQ(seen->valueInterface()->currentValue(), QVariant(60.0));
    EXPECT_EQ(seen->valueInterface()->maximumValue(), QVariant(240.0));
    seen->valueInterface()->setCurrentValue(300.0);
    EXPECT_THAT(takenSeeks(), ElementsAre(240));
}

} // namespace
} // namespace tambrel
