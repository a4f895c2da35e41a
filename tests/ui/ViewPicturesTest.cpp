#include "BlackLEDActivityView.h"
#include "DropTargetPanel.h"
#include "ExpectedPicture.h"
#include "LoadedBlueRectangleView.h"
#include "MIDITrackBarsView.h"
#include "RetroButton.h"
#include "RetroLabel.h"
#include "RetroTimelineView.h"
#include "SevenSegmentCounterView.h"
#include "ViewProbe.h"

namespace tambrel {
namespace {

/// The views in sizes and with values that the window does not give them, on a red ground.
class ViewPicturesTest : public ::testing::Test {
protected:
    ViewPicturesTest() { sheet.resize(800, 455); }

    template<class View>
    View& place(View* view, const QRect& where) {
        view->setParent(&sheet);
        view->setGeometry(where);
        return *view;
    }
    void placeCounters() {
        const std::pair<QRect, const char*> rows[] = {{{0, 0, 800, 90}, "01234:56789./x-9"},
                                                      {{20, 95, 120, 30}, "00:00:00.00"},
                                                      {{200, 95, 300, 50}, "8.:"}};
        for (const auto& [where, text] : rows)
            place(new SevenSegmentCounterView, where).setText(text);
        place(new SevenSegmentCounterView, {520, 95, 40, 30}).setText("");
    }
    void placeActivities() {
        for (const QRect& where : {QRect(0, 150, 60, 104), {70, 150, 300, 28}, {380, 150, 20, 6}})
            place(new BlackLEDActivityView, where);
        for (const QRect& where : {QRect(410, 150, 60, 104), {70, 190, 300, 28}, {380, 190, 20, 6}})
            place(new BlackLEDActivityView, where).setAnimating(true);
    }
    void placeTimelines() {
        const std::tuple<QRect, double, double> rows[] = {{{480, 150, 150, 36}, 10, 99},
                                                          {{640, 150, 150, 36}, 10, -1},
                                                          {{480, 190, 24, 36}, 10, 5},
                                                          {{640, 190, 151, 47}, -1, 5}};
        for (const auto& [where, duration, position] : rows) {
            auto& timeline = place(new RetroTimelineView, where);
            timeline.setDuration(duration);
            timeline.setPosition(position);
        }
    }
    void placeTrackBars() {
        const std::vector<MIDITrackPhraseLane> lanes{{"1", {{0.25, 0.5}, {0.999, 1.005}}},
                                                     {"", {{-0.5, 0.1}, {0.5, 0.2}}},
                                                     {"16", {}},
                                                     {"x", {{0.3, 0.3}, {0.301, 0.4}}},
                                                     {"5", {{0, 1}}},
                                                     {"6", {{0, 1}}}};
        auto& five = place(new MIDITrackBarsView, {0, 260, 300, 50});
        five.setLanes(lanes);
        five.setProgress(1.2);
        auto& four = place(new MIDITrackBarsView, {310, 260, 300, 49});
        four.setTrackCount(65'535);
        four.setProgress(-0.5);
        place(new MIDITrackBarsView, {620, 260, 30, 49}).setTrackCount(2);
    }
    void placeControls() {
        for (const QRect& where : {QRect(0, 320, 60, 30), {70, 320, 3, 30}, {80, 320, 90, 41}})
            place(new RetroButton("Title", {}), where);
        auto& disabled = place(new RetroButton("Off", {}), {180, 320, 60, 30});
        disabled.setEnabled(false);
        disabled.setDown(true);
        const std::tuple<QRect, Qt::Alignment, RetroLabelOverflow> rows[] = {
            {{250, 320, 150, 30}, Qt::AlignLeft, RetroLabelOverflow::truncate},
            {{410, 320, 150, 30}, Qt::AlignRight, RetroLabelOverflow::shrinkThenTruncate},
            {{570, 320, 225, 30}, Qt::AlignCenter, RetroLabelOverflow::shrinkThenTruncate}};
        for (const auto& [where, alignment, overflow] : rows)
            place(new RetroLabel("A <b>long</b> & windy.mid", RetroTheme::title(), alignment), where)
                .setOverflow(overflow);
        place(new RetroLabel("plain"), {570, 360, 100, 20});
    }
    void placePanels() {
        place(new DropTargetPanel, {0, 370, 200, 80}).setLoaded(true);
        place(new DropTargetPanel, {210, 370, 24, 80});
        place(new LoadedBlueRectangleView, {250, 370, 50, 50}).setLoaded(true);
        place(new LoadedBlueRectangleView, {310, 370, 50, 50});
    }

    QWidget sheet;
};

TEST_F(ViewPicturesTest, LookInOtherSizesAsTheyDidWhenSomebodyLooked) {
    placeCounters();
    placeActivities();
    placeTimelines();
    placeTrackBars();
    placeControls();
    placePanels();
    for (const char* scale : {"1", "1.5"})
        EXPECT_TRUE(isExpected(picture(sheet, QString(scale).toDouble()), QString("views@") + scale));
}

} // namespace
} // namespace tambrel
