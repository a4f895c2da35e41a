#include "BlackLEDActivityView.h"
#include "MIDITrackBarsView.h"
#include "NameChangeTeller.h"
#include "RetroButton.h"
#include "RetroLabel.h"
#include "SevenSegmentCounterView.h"
#include "ViewProbe.h"

#include <gmock/gmock.h>

#include <QFontInfo>
#include <QHelpEvent>
#include <QToolTip>

namespace tambrel {
namespace {

using ::testing::ElementsAre;

TEST(BlackLEDActivityView, StepsEachEightyMillisecondsAndAlwaysBeginsAnew) {
    BlackLEDActivityView view;
    ShownView shown(view, {106, 22});
    const QImage resting = picture(view);
    view.setAnimating(true);
    EXPECT_EQ(shown.paints(), 0) << "shows at the first step";
    const QImage first = picture(view);
    EXPECT_NE(first, resting);
    const auto running = timersOf(view);
    ASSERT_EQ(running.size(), 1);
    EXPECT_EQ(running[0].interval, 80);
    view.setAnimating(true);
    EXPECT_EQ(timersOf(view).first().timerId, running[0].timerId) << "nor does it begin anew by this";

    for (int step = 1; step <= 7; ++step) {
        advance(view);
        EXPECT_EQ(shown.paints(), 1);
        EXPECT_EQ(picture(view) == first, step == 7) << step;
    }
    advance(view);
    for (const int paints : {1, 0}) {
        view.setAnimating(false);
        EXPECT_EQ(shown.paints(), paints);
        EXPECT_TRUE(timersOf(view).isEmpty());
    }
    EXPECT_EQ(picture(view), resting);
    view.setAnimating(true);
    EXPECT_EQ(picture(view), first);
}

TEST(MIDITrackBarsView, PaintsNoMorePhrasesThanCanBeToldApart) {
    constexpr int count = 100'000;
    MIDITrackPhraseLane dense{"1", {}};
    for (int i = 0; i < count; ++i)
        dense.phrases.push_back({1.0 * i / count, 1.0 * i / count + 0.005});
    const auto phrases = MIDITrackBarsGeometry::of({456, 138}, {dense}, 0).rows[0].phrases;
    EXPECT_LE(phrases.size(), 420u / 2 + 1);
    EXPECT_EQ(phrases.front().left(), 28);
    EXPECT_GE(phrases.back().right(), 448);
    for (std::size_t i = 1; i < phrases.size(); ++i)
        EXPECT_GE(phrases[i - 1].right(), phrases[i].left()) << "no gap";
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

TEST(NameChangeTeller, TellsOfOneViewEachSecondUntilAllHaveBeenHeard) {
    QWidget counter, progress;
    std::vector<QWidget*> heard;
    bool isHeard = true;
    NameChangeTeller teller(nullptr, [&](QWidget& view) { return heard.push_back(&view), isHeard; });
    for (int tick = 0; tick < 20; ++tick)
        for (QWidget* view : {&counter, &progress})
            teller.noteChange(*view);
    EXPECT_THAT(heard, ElementsAre(&counter));
    advance(teller);
    EXPECT_THAT(heard, ElementsAre(&counter, &progress));
    advance(teller, 2);
    EXPECT_THAT(heard, ElementsAre(&counter, &progress, &counter));
    EXPECT_TRUE(timersOf(teller).isEmpty()) << "nothing to do while nothing changes";
    isHeard = false;
    teller.noteChange(counter);
    EXPECT_TRUE(timersOf(teller).isEmpty()) << "nor where nobody listens";
}

TEST(RetroButton, IsRepaintedWheneverItIsEnabled) {
    RetroButton button("Stop", {});
    ShownView shown(button, {100, 34});
    button.setEnabled(true);
    EXPECT_EQ(shown.paints(), 1);
}

TEST(UnflippedPainter, EndsACutNameWhereItIsReadToAndShapesOnlyOtherScripts) {
    const QString hebrew = "\u05e9\u05d9\u05e8 \u05d0\u05e8\u05d5\u05da";
    const auto drawn = [](const QString& text) {
        RetroLabel label(text, RetroTheme::mono(), Qt::AlignLeft);
        label.resize(200, 30);
        return picture(label);
    };
    const QRect ellipsis(0, 0, 8, 30); // At the left, where such a name ends.
    EXPECT_EQ(drawn(hebrew + u'\u2026').copy(ellipsis), drawn(QString(u'\u2026')).copy(ellipsis));
    EXPECT_TRUE(RetroTheme::shaping(RetroTheme::mono(), "a--b\u2026").styleStrategy() &
                QFont::PreferNoShaping);
    EXPECT_FALSE(RetroTheme::shaping(RetroTheme::mono(), "e\u0301").styleStrategy() & QFont::PreferNoShaping);
}

TEST(RetroLabel, ShowsWhatFitsAndExposesTheWholeText) {
    const QString name = "A <b>Long</b> Walk & a Short One.mid";
    EXPECT_TRUE(QFontInfo(RetroTheme::mono()).fixedPitch());
    const int whole = qCeil(QFontMetricsF(RetroTheme::songName()).horizontalAdvance(name));
    const int least = qCeil(QFontMetricsF(RetroTheme::mono()).horizontalAdvance(name));
    const struct {
        const char* name;
        RetroLabelOverflow overflow;
        int width;
        bool isCut, isShrunk;
    } rows[] = {
        {"two thirds as wide, and wrapped", RetroLabelOverflow::wrapThenTruncate, whole * 2 / 3, false,
         false},
        {"too long for two lines", RetroLabelOverflow::wrapThenTruncate, whole / 3, true, false},
        {"a pixel too narrow", RetroLabelOverflow::truncate, whole - 1, true, false},
        {"wide enough to stay large", RetroLabelOverflow::shrinkThenTruncate, whole, false, false},
        {"as small as it gets", RetroLabelOverflow::shrinkThenTruncate, least, false, true},
        {"smaller than it gets", RetroLabelOverflow::shrinkThenTruncate, least - 1, true, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        RetroLabel label(name, RetroTheme::songName());
        label.setOverflow(row.overflow);
        ShownView shown(label, {row.width / 2, 30});
        static_cast<void>(label.line()); // What fitted is not to stay.
        label.resize(row.width, 30);
        const auto line = label.line();
        EXPECT_EQ(line.text + line.second != name, row.isCut);
        EXPECT_EQ((line.text + line.second).endsWith(u'\u2026'), row.isCut);
        EXPECT_EQ(line.font.pixelSize() < RetroTheme::songName().pixelSize(), row.isShrunk);
        EXPECT_EQ(QAccessible::queryAccessibleInterface(&label)->text(QAccessible::Name), name);
        EXPECT_EQ(label.minimumSizeHint().width(), 0);

        QHelpEvent hover(QEvent::ToolTip, {10, 10}, label.mapToGlobal(QPoint(10, 10)));
        QCoreApplication::sendEvent(&label, &hover);
        const bool tells = QToolTip::text().contains("A &lt;b&gt;Long&lt;/b&gt; Walk &amp; a Short One.mid");
        EXPECT_TRUE(row.isCut ? tells : QTest::qWaitFor([] { return !QToolTip::isVisible(); }));
    }
}

} // namespace
} // namespace tambrel
