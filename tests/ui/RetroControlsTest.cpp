#include "DropTargetPanel.h"
#include "RecordedLog.h"
#include "RetroButton.h"
#include "RetroLabel.h"
#include "RetroPanelView.h"
#include "RetroTheme.h"
#include "RetroTimelineView.h"
#include "ViewProbe.h"

#include <gtest/gtest.h>

#include <QFontInfo>
#include <QHelpEvent>
#include <QToolTip>

namespace tambrel {
namespace {

TEST(RetroControls, AreCrispAtEveryScaleAndPlace) {
    RecordedLog recorded;
    QWidget window;
    window.resize(457, 177);
    RetroPanelView panel(&window);
    panel.setGeometry(7, 9, 51, 33);
    RetroButton button({}, {}, &window);
    button.setGeometry(61, 13, 53, 35);
    RetroTimelineView timeline(recorded.log, &window);
    timeline.setGeometry(7, 53, 433, 37);
    timeline.setDuration(100);
    timeline.setPosition(33.3);
    DropTargetPanel dropPanel(recorded.log, &window);
    dropPanel.setGeometry(5, 91, 431, 81);
    dropPanel.setLoaded(true);
    for (const double scale : {1.0, 1.25, 1.5, 2.0})
        EXPECT_TRUE(showsOnly(picture(window, scale),
                              {Qt::red, RetroTheme::paper(), RetroTheme::panel(), RetroTheme::ink(),
                               RetroTheme::activeFill(), RetroTheme::darkBlueFill()}))
            << scale;
}

TEST(RetroButton, MovesOntoItsShadowWhenPressedAndFadesWhenDisabled) {
    RetroButton button("Stop", {});
    ShownView shown(button, {100, 34});
    const auto expectCorners = [&](const QColor& upperLeft, const QColor& lowerRight) {
        const QImage image = picture(button);
        EXPECT_TRUE(looksLike(image.pixel(0, 0), upperLeft, RetroTheme::paper()));
        EXPECT_TRUE(looksLike(image.pixel(99, 33), lowerRight, RetroTheme::paper()));
        for (const QPoint other : {QPoint(99, 0), {0, 33}})
            EXPECT_TRUE(looksLike(image.pixel(other), RetroTheme::paper())) << other.x();
    };
    expectCorners(RetroTheme::ink(), RetroTheme::ink());
    EXPECT_TRUE(looksLike(picture(button).pixel(5, 5), RetroTheme::panel()));
    button.setDown(true);
    expectCorners(RetroTheme::paper(), RetroTheme::ink());
    button.setDown(false);

    button.setEnabled(false);
    const QImage disabled = picture(button);
    EXPECT_TRUE(looksLike(disabled.pixel(99, 33), RetroTheme::ink(0.28), RetroTheme::paper()));
    button.setDown(true);
    EXPECT_EQ(picture(button), disabled);
    shown.paints();
    button.setEnabled(true);
    EXPECT_EQ(shown.paints(), 1);
}

TEST(RetroButton, MarksTheFocusOnlyOnceTheUserSteersByKeyboard) {
    QWidget window;
    RetroButton first("Play", {}, &window), second("Stop", {}, &window);
    second.move(0, 40);
    ShownView shown(window, {120, 80});
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    const QImage untouched = picture(second);
    second.setFocus();
    EXPECT_EQ(picture(second), untouched);
    QTest::keyClick(&window, Qt::Key_Tab);
    QTest::keyClick(&window, Qt::Key_Tab);
    EXPECT_TRUE(second.hasFocus());
    EXPECT_NE(picture(second), untouched);
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
        {"a pixel too narrow", RetroLabelOverflow::truncate, whole - 1, true, false},
        {"wide enough to stay large", RetroLabelOverflow::shrinkThenTruncate, whole, false, false},
        {"as small as it gets", RetroLabelOverflow::shrinkThenTruncate, least, false, true},
        {"smaller than it gets", RetroLabelOverflow::shrinkThenTruncate, least - 1, true, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        RetroLabel label(name, RetroTheme::songName());
        label.setOverflow(row.overflow);
        label.resize(row.width, 30);
        const auto line = label.line();
        EXPECT_EQ(line.text != name, row.isCut);
        EXPECT_EQ(line.text.endsWith(u'\u2026'), row.isCut);
        EXPECT_EQ(line.font.pixelSize() < RetroTheme::songName().pixelSize(), row.isShrunk);
        EXPECT_EQ(QAccessible::queryAccessibleInterface(&label)->text(QAccessible::Name), name);
        EXPECT_EQ(label.minimumSizeHint().width(), 0);
    }
}

TEST(RetroLabel, ShowsATextThatIsCutInAToolTip) {
    RetroLabel label("<i>loop</i> & more.mid");
    ShownView shown(label, {60, 20});
    QHelpEvent hover(QEvent::ToolTip, {10, 10}, label.mapToGlobal(QPoint(10, 10)));
    QCoreApplication::sendEvent(&label, &hover);
    EXPECT_TRUE(QToolTip::text().contains("&lt;i&gt;loop&lt;/i&gt; &amp; more.mid"));
    label.resize(400, 20);
    QCoreApplication::sendEvent(&label, &hover);
    EXPECT_TRUE(QTest::qWaitFor([] { return !QToolTip::isVisible(); }));
}

} // namespace
} // namespace tambrel
