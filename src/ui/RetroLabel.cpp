#include "RetroLabel.h"

#include "UnflippedPainter.h"

#include <QFontMetricsF>
#include <QHelpEvent>
#include <QToolTip>

namespace tambrel {

RetroLabel::RetroLabel(const QString& text, const QFont& font, Qt::Alignment alignment, QWidget* parent)
    : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setTextInteractionFlags(Qt::NoTextInteraction);
    setFont(font);
    setAlignment(alignment & Qt::AlignVertical_Mask ? alignment : alignment | Qt::AlignVCenter);
    setText(text);
}

void RetroLabel::setOverflow(RetroLabelOverflow overflow) {
    overflow_ = overflow;
    update();
}

RetroLabel::Line RetroLabel::line() const {
    const int smallest = overflow_ == RetroLabelOverflow::shrinkThenTruncate ? RetroTheme::mono().pixelSize()
                                                                             : font().pixelSize();
    QFont fitting = font();
    while (QFontMetricsF(fitting).horizontalAdvance(text()) > width()) {
        if (fitting.pixelSize() <= smallest)
            return {fitting, QFontMetricsF(fitting).elidedText(text(), Qt::ElideRight, width())};
        fitting.setPixelSize(fitting.pixelSize() - 1);
    }
    return {fitting, text()};
}

QSize RetroLabel::minimumSizeHint() const {
    return {0, QLabel::minimumSizeHint().height()};
}

bool RetroLabel::event(QEvent* event) {
    const bool hasToolTipOfItsOwn = !toolTip().isEmpty();
    if (event->type() != QEvent::ToolTip || hasToolTipOfItsOwn)
        return QLabel::event(event);
    // Marked up, or a tool tip would guess whether a file name that looks like markup is some.
    const QString whole = "<p style='white-space:pre-wrap'>" + text().toHtmlEscaped() + "</p>";
    const bool isCut = line().text != text();
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), isCut ? whole : QString(), this);
    return true;
}

void RetroLabel::paintEvent(QPaintEvent*) {
    const Line shown = line();
    UnflippedPainter painter(*this);
    painter.text(unflippedBounds(*this), shown.text, shown.font, RetroTheme::ink(), alignment());
}

} // namespace tambrel
