#include "RetroTimelineView.h"

#include "RecordedActions.h"
#include "RetroTimelineGeometry.h"
#include "ViewProbe.h"

#include <gmock/gmock.h>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto entry = "Moved timeline seek handle | RetroTimelineView.seek(from:)";
constexpr QSize size(456, 36); // The track reaches from 12 to 444.

class RetroTimelineViewTest : public ::testing::Test {
protected:
    RetroTimelineViewTest() {
        view.resize(size);
        view.onUserAction = recorded.log();
        view.onSeek = [this](double seconds) { sought.push_back(seconds); };
    }

    [[nodiscard]] std::vector<double> takenSeeks() { return std::exchange(sought, {}); }

    RecordedActions recorded;
    RetroTimelineView view;
    std::vector<double> sought;
};

TEST_F(RetroTimelineViewTest, AnswersNothingWhileNothingIsLoaded) {
    view.setPosition(5);
    QTest::mouseClick(&view, Qt::LeftButton, {}, {228, 18});
    QTest::keyClick(&view, Qt::Key_End);
    EXPECT_THAT(sought, IsEmpty());
    EXPECT_THAT(recorded.settled(), IsEmpty());
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
    EXPECT_EQ(RetroTimelineGeometry::time(-50, size.width(), 240), 0) << "before the view";
    EXPECT_EQ(RetroTimelineGeometry::time(12, 24, 240), 0) << "the only place of no track";
    EXPECT_EQ(RetroTimelineGeometry::time(13, 24, 240), 240) << "right of it";
}

TEST_F(RetroTimelineViewTest, SeeksByKeyboard) {
    const std::tuple<Qt::Key, double, double> rows[] = {
        {Qt::Key_Left, 60, 55},     {Qt::Key_Right, 60, 65}, {Qt::Key_Down, 2, 0},
        {Qt::Key_Up, 60, 65},       {Qt::Key_Home, 60, 0},   {Qt::Key_PageDown, 60, 30},
        {Qt::Key_PageUp, 230, 240}, {Qt::Key_End, 60, 240},
    };
    view.setDuration(240);
    for (const auto& [key, from, to] : rows) {
        view.setPosition(from);
        QTest::keyClick(&view, key);
        EXPECT_THAT(takenSeeks(), ElementsAre(to)) << key;
    }
    QTest::keyClick(&view, Qt::Key_Space);
    EXPECT_THAT(takenSeeks(), IsEmpty());
}

TEST_F(RetroTimelineViewTest, IsASliderToAssistiveSoftware) {
    view.setDuration(240);
    view.setPosition(60);
    QAccessibleInterface* seen = QAccessible::queryAccessibleInterface(&view);
    ASSERT_TRUE(seen && seen->valueInterface());
    EXPECT_EQ(seen->text(QAccessible::Value), "1 minute of 4 minutes");
    EXPECT_TRUE(seen->state().focusable);
    EXPECT_EQ(seen->valueInterface()->currentValue(), QVariant(60.0));
    EXPECT_EQ(seen->valueInterface()->maximumValue(), QVariant(240.0));
    seen->valueInterface()->setCurrentValue(300.0);
    EXPECT_THAT(takenSeeks(), ElementsAre(240));
}

} // namespace
} // namespace tambrel
