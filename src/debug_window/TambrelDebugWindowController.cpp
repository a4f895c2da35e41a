#include "TambrelDebugWindowController.h"

#include "QtText.h"
#include "TambrelBetaLog.h"

#include <QClipboard>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTextCursor>
#include <QTextDocument>
#include <QVBoxLayout>

namespace tambrel {
namespace {

// Points, of which one is a logical pixel.
constexpr QSize windowSize{680, 420};
constexpr int margin = 12;
constexpr int aboveButtons = 10;
constexpr int betweenButtons = 8;
constexpr int fontSize = 12;

QFont monospacedFont() {
    auto font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(fontSize);
    font.setWeight(QFont::Normal);
    return font;
}

void setUpTextView(QPlainTextEdit& view) {
    view.setAccessibleName("Log");
    view.setFont(monospacedFont());
    view.setFrameShape(QFrame::Box);
    view.setFrameShadow(QFrame::Plain);
    view.setReadOnly(true);
    view.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    view.setUndoRedoEnabled(false);
    view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
}

} // namespace

TambrelDebugWindowController::TambrelDebugWindowController(TambrelBetaLog& betaLog)
    : betaLog_(betaLog), textView_(new QPlainTextEdit(&window_)) {
    window_.setWindowTitle("Tambrel betaLOG Debugging Window");
    window_.setAttribute(Qt::WA_QuitOnClose, false);
    window_.resize(windowSize);
    buildInterface();
}

void TambrelDebugWindowController::buildInterface() {
    setUpTextView(*textView_);
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(betweenButtons);
    using Self = TambrelDebugWindowController;
    colorsButton_ = addButton(*buttons, "White Background", &Self::toggleColors);
    addButton(*buttons, "Email Window Text", &Self::emailWindowText);
    addButton(*buttons, "Reveal Log", &Self::revealLog);
    addButton(*buttons, "Copy Text", &Self::copyText);
    addButton(*buttons, "Clear Window", &Self::clearText);
    buttons->addStretch();
    auto* column = new QVBoxLayout(&window_);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(aboveButtons);
    column->addWidget(textView_);
    column->addLayout(buttons);
    applyColors();
}

QPushButton* TambrelDebugWindowController::addButton(QHBoxLayout& row, const char* title, Action action) {
    auto* button = new QPushButton(title);
    row.addWidget(button);
    QObject::connect(button, &QPushButton::clicked, button, [this, action] { (this->*action)(); });
    return button;
}

void TambrelDebugWindowController::append(std::string_view text) {
    // With a cursor of its own: the user's selection stays.
    QTextCursor end(textView_->document());
    end.movePosition(QTextCursor::End);
    end.insertText(toQString(text));
    scrollToEnd();
}

std::string TambrelDebugWindowController::text() const {
    return plainText().toStdString();
}

void TambrelDebugWindowController::showInFront() {
    if (window_.isMinimized())
        window_.showNormal();
    window_.show();
    window_.raise();
    window_.activateWindow();
    scrollToEnd();
}

void TambrelDebugWindowController::toggleColors() {
    isLightMode_ = !isLightMode_;
    colorsButton_->setText(isLightMode_ ? "Black Background" : "White Background");
    applyColors();
}

void TambrelDebugWindowController::emailWindowText() {
    betaLog_.emailDebugWindowText(text());
}

void TambrelDebugWindowController::revealLog() {
    betaLog_.revealBetaLogFile();
}

void TambrelDebugWindowController::copyText() {
    QGuiApplication::clipboard()->setText(plainText());
}

void TambrelDebugWindowController::clearText() {
    textView_->clear();
}

void TambrelDebugWindowController::applyColors() {
    auto colors = textView_->palette();
    colors.setColor(QPalette::Base, isLightMode_ ? Qt::white : Qt::black);
    colors.setColor(QPalette::Text, isLightMode_ ? Qt::black : Qt::white); // The insertion point's too.
    colors.setColor(QPalette::Highlight, isLightMode_ ? Qt::black : Qt::white);
    colors.setColor(QPalette::HighlightedText, isLightMode_ ? Qt::white : Qt::black);
    colors.setColor(QPalette::WindowText, window_.palette().color(QPalette::Mid)); // The border's.
    textView_->setPalette(colors);
}

void TambrelDebugWindowController::scrollToEnd() {
    auto* bar = textView_->verticalScrollBar();
    bar->setValue(bar->maximum());
}

// QTextDocument::toPlainText would turn no-break spaces, which time stamps may have, into blanks.
QString TambrelDebugWindowController::plainText() const {
    return textView_->document()->toRawText().replace(QChar::ParagraphSeparator, '\n');
}

} // namespace tambrel
