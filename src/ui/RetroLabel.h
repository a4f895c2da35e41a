#pragma once

#include "RetroTheme.h"

#include <QLabel>

namespace tambrel {

/// What a label does with a text wider than itself.
enum class RetroLabelOverflow {
    truncate,           ///< Ends it in an ellipsis.
    shrinkThenTruncate, ///< Steps the font size down to 14 pixels, and only then ends it in an ellipsis.
};

/// One line of plain text in ink, never wrapped, never selected. A text that is cut shows whole in a tool
/// tip, and assistive software always reads the whole text.
class RetroLabel : public QLabel {
    Q_OBJECT

public:
    explicit RetroLabel(const QString& text, const QFont& font = RetroTheme::mono(),
                        Qt::Alignment alignment = Qt::AlignCenter, QWidget* parent = nullptr);

    void setOverflow(RetroLabelOverflow overflow);

    /// What the label shows at its present width.
    struct Line {
        QFont font;
        QString text;
    };
    [[nodiscard]] Line line() const;

    /// A long text never widens the window.
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    RetroLabelOverflow overflow_ = RetroLabelOverflow::truncate;
};

} // namespace tambrel
