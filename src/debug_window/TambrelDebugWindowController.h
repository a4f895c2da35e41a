#pragma once

#include "TambrelDebugWindow.h"

#include <QWidget>

class QHBoxLayout;
class QPlainTextEdit;
class QPushButton;

namespace tambrel {

class TambrelBetaLog;

/// The debugging window: the log's text, and a row of buttons to recolour, e-mail, copy and clear it and to
/// reveal the log file. Closing the window hides it; its text stays. It does not keep the program running.
/// Main thread.
class TambrelDebugWindowController final : public TambrelDebugWindow {
public:
    /// The log outlives the window.
    explicit TambrelDebugWindowController(TambrelBetaLog& betaLog);

    void append(std::string_view text) override;
    [[nodiscard]] std::string text() const override;
    void showInFront() override;

    [[nodiscard]] QWidget& window() { return window_; }

private:
    using Action = void (TambrelDebugWindowController::*)();

    void buildInterface();
    QPushButton* addButton(QHBoxLayout& row, const char* title, Action action);
    void toggleColors();
    void emailWindowText();
    void revealLog();
    void copyText();
    void clearText();
    void applyColors();
    void scrollToEnd();
    [[nodiscard]] QString plainText() const;

    TambrelBetaLog& betaLog_;
    QWidget window_;
    QPlainTextEdit* textView_;
    QPushButton* colorsButton_ = nullptr;
    bool isLightMode_ = false;
};

} // namespace tambrel
