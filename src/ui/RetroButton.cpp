#include "RetroButton.h"

#include "RetroTheme.h"
#include "UnflippedPainter.h"

#include <QPainterPath>

#include <utility>

namespace tambrel {

namespace {

// Around the face alone: a faint one would show through it.
void paintShadow(UnflippedPainter& painter, const QRectF& face, const QRectF& shadow, const QColor& color) {
    QPainterPath around, covered;
    around.addRect(painter.snapped(shadow));
    covered.addRect(painter.snapped(face));
    painter.fill(around.subtracted(covered), color);
}

} // namespace

RetroButtonGeometry RetroButtonGeometry::of(QSizeF size, bool isPressed) {
    constexpr double depth = 3;
    const double pressed = isPressed ? 1 : 0;
    const QRectF face(pressed, depth - pressed, size.width() - depth, size.height() - depth);
    return {face, face.translated(depth - pressed, pressed - depth)};
}

RetroButton::RetroButton(const QString& title, std::function<void()> action, QWidget* parent)
    : QPushButton(title, parent) {
    setFont(RetroTheme::display());
    setFocusPolicy(Qt::TabFocus); // A click leaves the focus, and its mark, where they were.
    if (action)
        connect(this, &QPushButton::clicked, this, std::move(action));
}

void RetroButton::explain(const QString& purpose, const QKeySequence& key, const QString& whileDisabled) {
    purpose_ = purpose;
    key_ = key;
    whileDisabled_ = whileDisabled;
    showExplanation();
}

void RetroButton::showExplanation() {
    const QString more = isEnabled() || whileDisabled_.isEmpty() ? QString() : ". " + whileDisabled_;
    const QString key = key_.isEmpty() ? QString() : " (" + key_.toString(QKeySequence::NativeText) + ")";
    if (accessibleDescription() != purpose_ + more) // Assistive software is told of each that is set.
        setAccessibleDescription(purpose_ + more);
    setToolTip(purpose_ + key + more);
}

void RetroButton::setEnabled(bool enabled) {
    QPushButton::setEnabled(enabled);
    showExplanation();
    update();
}

void RetroButton::paintEvent(QPaintEvent*) {
    const auto [face, shadow] = RetroButtonGeometry::of(size(), isDown() && isEnabled());
    QColor faceColor = RetroTheme::panel();
    faceColor.setAlphaF(isEnabled() ? 1.0f : 0.55f);
    const QColor lineColor = RetroTheme::ink(isEnabled() ? 1 : 0.35);

    UnflippedPainter painter(*this);
    painter.fill(unflippedBounds(*this), RetroTheme::paper());
    paintShadow(painter, face, shadow, RetroTheme::ink(isEnabled() ? 1 : 0.28));
    painter.fill(face, faceColor);
    painter.frame(face, lineColor);
    painter.focusMark(face.adjusted(3, 3, -3, -3));
    painter.text(face, text(), font(), lineColor);
}

} // namespace tambrel
