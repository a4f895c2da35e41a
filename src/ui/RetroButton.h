#pragma once

#include <QKeySequence>
#include <QPushButton>

#include <functional>

namespace tambrel {

/// Where a button paints what, in unflipped coordinates.
struct RetroButtonGeometry {
    QRectF face;
    QRectF shadow; ///< The same place and size whether pressed or not.

    [[nodiscard]] static RetroButtonGeometry of(QSizeF size, bool isPressed);
};

/// A flat button with a hard shadow, towards which it moves by a pixel while pressed. Main thread.
class RetroButton : public QPushButton {
    Q_OBJECT

public:
    /// `action` runs on each press, by mouse or keyboard; it may be empty.
    RetroButton(const QString& title, std::function<void()> action, QWidget* parent = nullptr);

    /// Says what the button does, with the key that does the same, and what to do first while it is
    /// disabled: in its tool tip and to assistive software.
    void explain(const QString& purpose, const QKeySequence& key = {}, const QString& whileDisabled = {});

    /// Repaints also when the value does not change.
    void setEnabled(bool enabled);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void showExplanation();

    QString purpose_;
    QKeySequence key_;
    QString whileDisabled_;
};

} // namespace tambrel
