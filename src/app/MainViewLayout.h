#pragma once

#include <QRect>

#include <array>

namespace tambrel {

/// Where everything lies in the content of the main window, in points from its top left: a grid with margins
/// of 12, read from the title down to the buttons. Nothing moves when a file is loaded or cleared.
namespace MainViewLayout {

inline constexpr int contentSize = 480; ///< Width and height.

inline constexpr QRect title{12, 12, 144, 28};
inline constexpr QRect status{164, 12, 176, 28};
inline constexpr QRect ledZone{348, 12, 120, 28};
inline constexpr QRect activity{355, 14, 106, 24}; ///< Within the zone; six points a bar.
inline constexpr QRect dropPanel{12, 48, 456, 84};
inline constexpr QRect file{32, 66, 416, 48}; ///< Within the panel's dashed frame.
inline constexpr QRect counter{12, 140, 304, 56};
inline constexpr QRect moduleZone{324, 140, 144, 56};
inline constexpr QRect logo{334, 148, 40, 40};
inline constexpr QRect gmModule{378, 148, 82, 40};
inline constexpr QRect tempo{12, 204, 152, 18};
inline constexpr QRect key{164, 204, 152, 18};
inline constexpr QRect tracks{316, 204, 152, 18};
inline constexpr QRect length{12, 224, 228, 18};
inline constexpr QRect progress{240, 224, 228, 18};
inline constexpr QRect timeline{12, 246, 456, 36};
inline constexpr QRect trackBars{12, 288, 456, 138}; ///< Sixteen rows.

/// Play/Pause, Stop, RTZ, Loudness and Clear: equal widths, 8 apart.
inline constexpr std::array<QRect, 5> buttons{QRect{12, 434, 85, 34}, QRect{105, 434, 85, 34},
                                              QRect{198, 434, 84, 34}, QRect{290, 434, 85, 34},
                                              QRect{383, 434, 85, 34}};

} // namespace MainViewLayout
} // namespace tambrel
