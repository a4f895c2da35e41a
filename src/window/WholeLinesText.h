#pragma once

#include <QPlainTextEdit>

namespace tambrel {

/// A text to be read, selected and copied, by keyboard too. It scrolls, and shows whole lines alone. Main
/// thread.
class WholeLinesText : public QPlainTextEdit {
public:
    /// `name` is for assistive software.
    WholeLinesText(const QString& name, const QString& text, QWidget* parent = nullptr);

    /// Makes it so many lines high, whatever room there is.
    void setFixedLines(int count);

protected:
    void resizeEvent(QResizeEvent* event) override;
};

} // namespace tambrel
