#pragma once

#include "SevenSegmentGeometry.h"

#include <QRegion>
#include <QWidget>

#include <functional>
#include <vector>

namespace tambrel {

/// The playback time as seven-segment digits in ink on paper. Shows "0" to "9", ':' and '.'; any other
/// character leaves a narrow gap. Main thread.
class SevenSegmentCounterView : public QWidget {
    Q_OBJECT

public:
    explicit SevenSegmentCounterView(QWidget* parent = nullptr);

    /// The text is another; whoever listens has assistive software told. May be empty.
    std::function<void()> onTextChange;

    /// "00:00:00.00" at first.
    [[nodiscard]] const QString& text() const { return text_; }
    void setText(const QString& text);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    using Cells = std::vector<SevenSegmentGeometry::Cell>;
    void updateWhatDiffers(const Cells& before, const Cells& after);
    [[nodiscard]] QRegion places(const SevenSegmentGeometry::Cell& cell) const;

    QString text_ = QStringLiteral("00:00:00.00");
};

} // namespace tambrel
