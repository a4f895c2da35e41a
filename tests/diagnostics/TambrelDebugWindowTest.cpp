#include "TambrelDebugWindowController.h"

#include "TambrelBetaLog.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QClipboard>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;

class TambrelDebugWindowTest : public ::testing::Test {
protected:
    TambrelDebugWindowTest() {
        log.configure({.info = {.diagnosticsSwitch = true},
                       .settings = settings,
                       .ask = {},
                       .copyToClipboard = [this](const QString& text) { copied = text.toStdString(); },
                       .openLink = [this](const QUrl&) { ++links; },
                       .beep = [this] { ++beeps; },
                       .makeDebugWindow =
                           [this](TambrelBetaLog& owner) {
                               auto made = std::make_unique<TambrelDebugWindowController>(owner);
                               controller = made.get();
                               return made;
                           },
                       .profiler = {.tools = {}},
                       .folder = home.path(),
                       .now = [] { return std::chrono::system_clock::from_time_t(0); }});
        log.showDebugWindow();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&controller->window()));
    }
    ~TambrelDebugWindowTest() override { log.close(); }
    TambrelDebugWindowTest(const TambrelDebugWindowTest&) = delete;
    TambrelDebugWindowTest& operator=(const TambrelDebugWindowTest&) = delete;

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

    [[nodiscard]] bool showsLightText() {
        const auto& colors = textView().palette();
        EXPECT_NE(colors.color(QPalette::Base), colors.color(QPalette::Text));
        const auto background =
            textView().grab().toImage().pixelColor(textView().width() / 2, textView().height() - 10);
        EXPECT_EQ(background, colors.color(QPalette::Base));
        return colors.color(QPalette::Text) == Qt::white && background == Qt::black;
    }

    QTemporaryDir home;
    QSettings settings{home.filePath("settings.ini"), QSettings::IniFormat};
    TambrelDebugWindowController* controller = nullptr;
    std::string copied;
    int links = 0;
    int beeps = 0;
    TambrelBetaLog log;
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
    log.showDebugWindow();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&controller->window()));
    EXPECT_TRUE(isAtEnd());
    EXPECT_EQ(controller->text().substr(0, expected.size()), expected);
    EXPECT_THAT(controller->text().substr(expected.size()), HasSubstr("User Opened Debugging Window"));
}

TEST_F(TambrelDebugWindowTest, KeepsTheUsersSelectionWhileEntriesArrive) {
    textView().setFocus();
    auto cursor = textView().textCursor();
    cursor.setPosition(0);
    cursor.setPosition(7, QTextCursor::KeepAnchor);
    textView().setTextCursor(cursor);
    log.procedure("A.b");
    EXPECT_EQ(textView().textCursor().selectedText(), "Tambrel");
}

TEST_F(TambrelDebugWindowTest, TurnsWhiteAndBlackAgain) {
    EXPECT_TRUE(showsLightText());
    click("White Background");
    EXPECT_FALSE(showsLightText());
    EXPECT_EQ(titles().front(), "Black Background");
    controller->window().close();
    log.showDebugWindow();
    EXPECT_FALSE(showsLightText());
    click("Black Background");
    EXPECT_TRUE(showsLightText());
    EXPECT_EQ(titles().front(), "White Background");
}

TEST_F(TambrelDebugWindowTest, CopiesClearsMailsAndReveals) {
    const auto text = controller->text();
    click("Copy Text");
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), text);
    click("Clear Window");
    EXPECT_EQ(controller->text(), "");
    click("Copy Text");
    EXPECT_EQ(QApplication::clipboard()->text(), "");
    click("Email Window Text");
    EXPECT_TRUE(QTest::qWaitFor([&] { return links == 1; }));
    EXPECT_THAT(copied, EndsWith("\n\nNo debug entries recorded yet."));
    EXPECT_THAT(controller->text(), EndsWith("] User Clicked Email Debugging Window Text | "
                                             "TambrelBetaLog.emailDebugWindowText\n"));
    click("Reveal Log");
    EXPECT_TRUE(QTest::qWaitFor([&] { return beeps == 1; }));
}

} // namespace
} // namespace tambrel
