#pragma once

#include "RetroTheme.h"

#include <QLabel>

#include <functional>
#include <optional>

namespace tambrel {

/// What a label does with a text wider than itself.
enum class RetroLabelOverflow {
    truncate,           ///< Ends it in an ellipsis.
    shrinkThenTruncate, ///< Steps the font size down to 14 pixels, and only then ends it in an ellipsis.
    wrapThenTruncate,   ///< Goes on in a second line, and ends only that in an ellipsis.
};

/// Plain text in ink, one line unless it may wrap, never selected. A text that is cut shows whole in a tool
/// tip, and assistive software always reads the whole text. Main thread.
class RetroLabel : public QLabel {
    Q_OBJECT

public:
    explicit RetroLabel(const QString& text, const QFont& font = RetroTheme::mono(),
                        Qt::Alignment alignment = Qt::AlignCenter, QWidget* parent = nullptr);

    void setOverflow(RetroLabelOverflow overflow);

    /// Called when the explanation changes; it may be empty, like the explanation.
    std::function<void(const QString& explanation)> onExplanation;

    /// The text is another. A label with an accessible name, which nobody hears, leaves it to this to have
    /// assistive software told. May be empty.
    std::function<void()> onTextChange;

    /// Shows a text, and says more about it in a tool tip and to assistive software. What was said of the
    /// text before is gone.
    void setText(const QString& text, const QString& explanation = {});

    /// What the label shows at its present width.
    struct Line {
        QFont font;
        QString text;
        QString second = {}; ///< The line below.
    };
    [[nodiscard]] const Line& line() const;

    /// A long text never widens the window.
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    [[nodiscard]] Line fittingLine() const;
    [[nodiscard]] Line wrapped(const QFont& font) const;

    mutable std::optional<Line> line_; // Laid out once for each text, width and font.

    RetroLabelOverflow overflow_ = RetroLabelOverflow::truncate;
};

} // namespace tambrel
