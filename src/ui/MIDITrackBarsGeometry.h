#pragma once

#include "MIDIFileInfo.h"

#include <QPointF>
#include <QRectF>
#include <QString>

#include <array>
#include <cstdint>
#include <vector>

namespace tambrel {

/// Where the track bars view paints what, in unflipped coordinates. Pure, any thread.
struct MIDITrackBarsGeometry {
    struct Row {
        QString label;
        QPointF labelOrigin;         ///< Left end of the label's base line.
        QRectF strip;                ///< The whole song.
        std::vector<QRectF> phrases; ///< As many as can be told apart, however many there are.
    };
    struct Playhead {
        QRectF line;
        QRectF dot; ///< The box of a circle.
    };

    QRectF border;
    QRectF barArea;        ///< As wide as the song, from the bottom to the top of the border.
    std::vector<Row> rows; ///< From the top down, as many as fit.

    /// One row a lane; without lanes one row a track, numbered from 1.
    [[nodiscard]] static MIDITrackBarsGeometry of(QSizeF size, const std::vector<MIDITrackPhraseLane>& lanes,
                                                  std::int64_t trackCount);

    /// The x of the lines at the tenths of the song.
    [[nodiscard]] std::array<double, 9> gridLines() const;

    /// `fraction` of the song, 0 to 1, has been played.
    [[nodiscard]] Playhead playhead(double fraction) const;
};

} // namespace tambrel
