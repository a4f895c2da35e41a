#pragma once

#include "MIDIFileInfo.h"
#include "MIDITrackBarsGeometry.h"

#include <QWidget>

#include <cstdint>
#include <vector>

namespace tambrel {

class UnflippedPainter;

/// One thin row a track that shows where in the song its phrases lie, over a grid of tenths, and a playhead.
/// Rows that do not fit are left out. Main thread only.
class MIDITrackBarsView : public QWidget {
    Q_OBJECT

public:
    explicit MIDITrackBarsView(QWidget* parent = nullptr);

    /// The number of empty rows to show when there are no lanes. With neither, the view shows a hint.
    [[nodiscard]] std::int64_t trackCount() const { return trackCount_; }
    void setTrackCount(std::int64_t count);

    [[nodiscard]] const std::vector<MIDITrackPhraseLane>& lanes() const { return lanes_; }
    void setLanes(std::vector<MIDITrackPhraseLane> lanes);

    /// The played fraction of the song. Any value; it shows within 0 and 1.
    [[nodiscard]] double progress() const { return progress_; }
    void setProgress(double progress);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    [[nodiscard]] bool hasRows() const { return !lanes_.empty() || trackCount_ >= 1; }
    [[nodiscard]] double shownProgress() const;
    [[nodiscard]] QRect playheadColumn() const;
    void layOut();
    void paintHint(UnflippedPainter& painter) const;
    void paintRows(UnflippedPainter& painter, const QRegion& exposed) const;
    void paintPlayhead(UnflippedPainter& painter) const;

    std::int64_t trackCount_ = 0;
    std::vector<MIDITrackPhraseLane> lanes_;
    double progress_ = 0;
    MIDITrackBarsGeometry geometry_; ///< Of the present size and rows.
};

} // namespace tambrel
