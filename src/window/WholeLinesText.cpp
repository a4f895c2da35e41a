#include "WholeLinesText.h"

#include "RetroTheme.h"

#include <algorithm>

namespace tambrel {

WholeLinesText::WholeLinesText(const QString& name, const QString& text, QWidget* parent)
    : QPlainTextEdit(text, parent) {
    setObjectName(name);
    setAccessibleName(name);
    setReadOnly(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setTabChangesFocus(true);
    setFont(RetroTheme::monospaced(12));
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFrameShape(QFrame::NoFrame);
    setStyleSheet(
        "QPlainTextEdit { border: 1px solid black; padding: 1px; background: " + RetroTheme::panel().name() +
        "; color: black; } "
        "QPlainTextEdit:focus { border: 2px solid black; padding: 0; }");
}

void WholeLinesText::setFixedLines(int count) {
    constexpr int border = 2; // With its padding.
    const int around = 2 * (qRound(document()->documentMargin()) + border);
    setFixedHeight(count * QFontMetrics(font()).lineSpacing() + around);
}

void WholeLinesText::resizeEvent(QResizeEvent* event) {
    QPlainTextEdit::resizeEvent(event);
    const int above = qRound(document()->documentMargin());
    const int room = viewport()->height() + viewportMargins().bottom() - above;
    const int rest = std::max(room, 0) % QFontMetrics(font()).lineSpacing();
    if (viewportMargins().bottom() != rest)
        setViewportMargins(0, 0, 0, rest);
}

} // namespace tambrel
