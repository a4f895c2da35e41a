#include "RetroButton.h"
#include "RetroLabel.h"
#include "RetroPanelView.h"
#include "RetroTheme.h"
#include "ViewProbe.h"

#include <gtest/gtest.h>

#include <QFontInfo>
#include <QHelpEvent>
#include <QToolTip>

namespace tambrel {
namespace {

TEST(RetroTheme, IsMonospaced) {
    EXPECT_TRUE(QFontInfo(RetroTheme::mono()).fixedPitch());
}

TEST(RetroControls, AreCrispAtEveryScaleAndPlace) {
    for (const double scale : {1.0, 1.25, 1.5, 2.0}) {
        SCOPED_TRACE(scale);
        QWidget window;
        window.resize(131, 77);
        RetroPanelView panel(&window);
        panel.setGeometry(7, 9, 51, 33);
        RetroButton button({}, {}, &window);
        button.setGeometry(61, 13, 53, 35);
        // The background, paper, panel and ink, and nothing in between.
        EXPECT_EQ(colors(picture(window, scale)).size(), 4u);
    }
}

TEST(RetroButton, MovesOntoItsShadowWhenPressedAndFadesWhenDisabled) {
    RetroButton button("Stop", {});
    button.resize(100, 34);
    const QImage enabled = picture(button);
    EXPECT_TRUE(looksLike(enabled.pixel(0, 0), RetroTheme::ink()));
    EXPECT_TRUE(looksLike(enabled.pixel(5, 5), RetroTheme::panel()));
    EXPECT_TRUE(looksLike(enabled.pixel(99, 33), RetroTheme::ink()));
    EXPECT_TRUE(looksLike(enabled.pixel(99, 0), RetroTheme::paper()));
    EXPECT_TRUE(looksLike(enabled.pixel(0, 33), RetroTheme::paper()));

    button.setDown(true);
    const QImage pressed = picture(button);
    EXPECT_TRUE(looksLike(pressed.pixel(0, 0), RetroTheme::paper()));
    EXPECT_TRUE(looksLike(pressed.pixel(99, 33), RetroTheme::ink()));
    button.setDown(false);

    button.setEnabled(false);
    const QImage disabled = picture(button);
    EXPECT_TRUE(looksLike(disabled.pixel(99, 33), RetroTheme::ink(0.28), RetroTheme::paper()));
    button.setDown(true);
    EXPECT_EQ(picture(button), disabled);
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

TEST(RetroButton, IsRepaintedWhenEnabledAgain) {
    RetroButton button("Loudness", {});
    ShownView shown(button, {100, 34});
    button.setEnabled(true);
    EXPECT_EQ(shown.paints(), 1);
}

TEST(RetroLabel, ShowsWhatFitsAndExposesTheWholeText) {
    const QString name = "A <b>Long</b> Walk & a Short One.mid";
    const QFontMetricsF large(RetroTheme::songName()), smallest(RetroTheme::mono());
    const int whole = qCeil(large.horizontalAdvance(name)), least = qCeil(smallest.horizontalAdvance(name));
    struct Row {
        const char* name;
        RetroLabelOverflow overflow;
        int width;
        bool isCut, isShrunk;
    };
    const Row rows[] = {
        {"wide enough", RetroLabelOverflow::truncate, whole, false, false},
        {"a pixel too narrow", RetroLabelOverflow::truncate, whole - 1, true, false},
        {"wide enough to stay large", RetroLabelOverflow::shrinkThenTruncate, whole, false, false},
        {"narrow enough to shrink", RetroLabelOverflow::shrinkThenTruncate, whole - 1, false, true},
        {"as small as it gets", RetroLabelOverflow::shrinkThenTruncate, least, false, true},
        {"smaller than it gets", RetroLabelOverflow::shrinkThenTruncate, least - 1, true, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        RetroLabel label(name, RetroTheme::songName());
        label.setOverflow(row.overflow);
        label.resize(row.width, 30);
        const auto line = label.line();
        EXPECT_EQ(line.text != name, row.isCut);
        EXPECT_EQ(line.text.endsWith(u'\u2026'), row.isCut);
        EXPECT_EQ(line.font.pixelSize() < RetroTheme::songName().pixelSize(), row.isShrunk);
        EXPECT_GE(line.font.pixelSize(), RetroTheme::mono().pixelSize());
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
