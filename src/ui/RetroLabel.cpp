#include "RetroLabel.h"

#include "UnflippedPainter.h"
#include "ViewAccessibility.h"

#include <QFontMetricsF>
#include <QHelpEvent>
#include <QTextLayout>
#include <QToolTip>

#include <cmath>

namespace tambrel {
namespace {

// As markup: Qt wraps no other tool tip, and might take a file name for markup.
QString toolTipText(const QString& plain) {
    return plain.isEmpty() ? plain : "<p style='white-space:pre-wrap'>" + plain.toHtmlEscaped() + "</p>";
}

// Called by its whole text.
class AccessibleLabel : public AccessibleView<QAccessible::StaticText> {
public:
    explicit AccessibleLabel(RetroLabel& label) : AccessibleView(label), label_(label) {}

    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? label_.text() : AccessibleView::text(kind);
    }

private:
    RetroLabel& label_;
};

} // namespace

RetroLabel::RetroLabel(const QString& text, const QFont& font, Qt::Alignment alignment, QWidget* parent)
    : QLabel(parent) {
    makeAccessible<RetroLabel, AccessibleLabel>();
    setTextFormat(Qt::PlainText);
    setTextInteractionFlags(Qt::NoTextInteraction);
    setFont(font);
    setAlignment(alignment & Qt::AlignVertical_Mask ? alignment : alignment | Qt::AlignVCenter);
    setText(text);
}

void RetroLabel::setOverflow(RetroLabelOverflow overflow) {
    overflow_ = overflow;
    line_.reset();
    update();
}

void RetroLabel::setText(const QString& text, const QString& explanation) {
    const bool isOther = text != this->text();
    if (isOther)
        line_.reset();
    QLabel::setText(text);
    if (isOther && onTextChange)
        onTextChange();
    if (explanation == accessibleDescription())
        return;
    setToolTip(toolTipText(explanation));
    setAccessibleDescription(explanation);
    if (onExplanation)
        onExplanation(explanation);
}

const RetroLabel::Line& RetroLabel::line() const {
    if (!line_)
        line_ = fittingLine();
    return *line_;
}

void RetroLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    line_.reset();
}

void RetroLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    line_.reset();
}

RetroLabel::Line RetroLabel::fittingLine() const {
    const int smallest = overflow_ == RetroLabelOverflow::shrinkThenTruncate ? RetroTheme::mono().pixelSize()
                                                                             : font().pixelSize();
    QFont fitting = RetroTheme::shaping(font(), text());
    if (overflow_ == RetroLabelOverflow::wrapThenTruncate)
        return wrapped(fitting);
    while (QFontMetricsF(fitting).horizontalAdvance(text()) > width()) {
        if (fitting.pixelSize() <= smallest)
            return {fitting, QFontMetricsF(fitting).elidedText(text(), Qt::ElideRight, width())};
        fitting =
            RetroTheme::shaping(RetroTheme::monospaced(fitting.pixelSize() - 1, fitting.weight()), text());
    }
    return {fitting, text()};
}

// Broken between words, or within one that is longer than a line.
RetroLabel::Line RetroLabel::wrapped(const QFont& font) const {
    QTextLayout layout(text(), font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine first = layout.createLine();
    if (first.isValid())
        first.setLineWidth(width());
    layout.endLayout();
    const int end = first.isValid() ? first.textLength() : 0;
    return {font, text().first(end),
            QFontMetricsF(font).elidedText(text().sliced(end), Qt::ElideRight, width())};
}

QSize RetroLabel::minimumSizeHint() const {
    return {0, QLabel::minimumSizeHint().height()};
}

bool RetroLabel::event(QEvent* event) {
    const bool hasToolTipOfItsOwn = !toolTip().isEmpty();
    if (event->type() != QEvent::ToolTip || hasToolTipOfItsOwn)
        return QLabel::event(event);
    const Line& shown = line();
    const bool isCut = shown.text + shown.second != text();
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), isCut ? toolTipText(text()) : QString(),
                       this);
    return true;
}

void RetroLabel::paintEvent(QPaintEvent*) {
    const Line& shown = line();
    UnflippedPainter painter(*this);
    const QRectF box = unflippedBounds(*this);
    painter.text(box, shown.text.trimmed(), shown.font, RetroTheme::ink(), alignment());
    if (shown.second.isEmpty())
        return;
    const double below = -std::round(QFontMetricsF(shown.font).lineSpacing());
    painter.text(box.translated(0, below), shown.second, shown.font, RetroTheme::ink(), alignment());
}

} // namespace tambrel
