#include "TambrelDebugWindowController.h"

#include "BetaLogTesting.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class TambrelDebugWindowTest : public BetaLogTest {
protected:
    TambrelDebugWindowTest() {
        auto world = services();
        world.makeDebugWindow = [this](TambrelBetaLog& owner) {
            auto made = std::make_unique<TambrelDebugWindowController>(owner);
            controller = made.get();
            return made;
        };
        log.configure(std::move(world));
        show();
    }

    void show() {
        log.showDebugWindow();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&controller->window()));
    }

    [[nodiscard]] QPlainTextEdit& textView() { return *controller->window().findChild<QPlainTextEdit*>(); }
    [[nodiscard]] bool isAtEnd() {
        const auto* bar = textView().verticalScrollBar();
        return bar->maximum() > 0 && bar->value() == bar->maximum();
    }

    /// In the order in which they stand.
    [[nodiscard]] std::vector<std::string> titles() {
        auto buttons = controller->window().findChildren<QPushButton*>();
        std::ranges::sort(buttons, {}, &QWidget::x);
        std::vector<std::string> found;
        for (const auto* button : buttons)
            found.push_back(button->text().toStdString());
        return found;
    }

    void click(const char* title) {
        for (auto* button : controller->window().findChildren<QPushButton*>())
            if (button->text() == title)
                return QTest::mouseClick(button, Qt::LeftButton);
        FAIL() << title;
    }

    void expectColors(const QColor& background, const QColor& text) {
        EXPECT_EQ(textView().grab().toImage().pixelColor(textView().width() / 2, textView().height() - 10),
                  background);
        EXPECT_EQ(textView().palette().color(QPalette::Text), text);
    }

    TambrelDebugWindowController* controller = nullptr;
};

TEST_F(TambrelDebugWindowTest, OpensWithItsTextAndButtons) {
    EXPECT_EQ(controller->window().windowTitle(), "Tambrel betaLOG Debugging Window");
    EXPECT_EQ(controller->window().size(), QSize(680, 420));
    EXPECT_THAT(titles(), ElementsAre("White Background", "Email Window Text", "Reveal Log", "Copy Text",
                                      "Clear Window"));
    EXPECT_THAT(controller->text(),
                ::testing::MatchesRegex("Tambrel Debugging Window opened.\n\\[.*\\] User Opened "
                                        "Debugging Window \\| TambrelBetaLog.showDebugWindow\n"));
    EXPECT_TRUE(textView().isReadOnly());
    EXPECT_TRUE(QFontInfo(textView().font()).fixedPitch());
    EXPECT_EQ(textView().font().pixelSize(), 12);
}

TEST_F(TambrelDebugWindowTest, ShowsEveryEntryAndItsEndHiddenOrNot) {
    click("Clear Window");
    std::string expected;
    const auto append = [&](int count) {
        for (int i = 0; i < count; ++i) {
            const auto line = std::to_string(i) + " ☃ no\u00a0break \u202f| A.b\n";
            controller->append(line);
            expected += line;
        }
    };
    append(100);
    EXPECT_TRUE(isAtEnd());
    textView().verticalScrollBar()->setValue(0);
    append(1);
    EXPECT_TRUE(isAtEnd());
    controller->window().close();
    append(100);
    show();
    EXPECT_TRUE(isAtEnd());
    EXPECT_EQ(controller->text().substr(0, expected.size()), expected);
    EXPECT_THAT(controller->text().substr(expected.size()), HasSubstr("User Opened Debugging Window"));
}

TEST_F(TambrelDebugWindowTest, KeepsTheUsersSelectionWhileEntriesArrive) {
    auto cursor = textView().textCursor();
    cursor.setPosition(0);
    cursor.setPosition(7, QTextCursor::KeepAnchor);
    textView().setTextCursor(cursor);
    log.procedure("A.b");
    EXPECT_EQ(textView().textCursor().selectedText(), "Tambrel");
}

TEST_F(TambrelDebugWindowTest, TurnsWhiteAndBlackAgain) {
    expectColors(Qt::black, Qt::white);
    click("White Background");
    controller->window().close();
    show();
    expectColors(Qt::white, Qt::black);
    click("Black Background");
    expectColors(Qt::black, Qt::white);
    click("White Background");
}

} // namespace
} // namespace tambrel
