#pragma once

#include <QRect>

#include <array>

namespace tambrel {

/// Where everything lies in the content of the main window, in points from its top left: a grid with margins
/// of 11 and 12, read from the title down to the buttons. Nothing moves when a file is loaded or cleared.
namespace MainViewLayout {

inline constexpr int contentSize = 480; ///< Width and height.

inline constexpr QRect title{11, 12, 145, 28};
inline constexpr QRect status{164, 12, 140, 28};
inline constexpr QRect ledZone{313, 12, 156, 28};
inline constexpr QRect activity{320, 14, 142, 24}; ///< Within the zone; eight points a bar, at every scale.
inline constexpr QRect dropPanel{11, 48, 458, 80}; ///< Whole numbers of dashes on each side.
inline constexpr QRect file{32, 64, 416, 48};      ///< Within the panel's dashed frame.
inline constexpr QRect explainedFile{32, 61, 416, 27}; ///< Where an explanation is below it.
inline constexpr QRect explanation{32, 88, 416, 27};   ///< Two lines of small captions.
inline constexpr QRect counter{11, 136, 306, 60};
inline constexpr QRect moduleZone{325, 136, 144, 60};
inline constexpr QRect logo{335, 146, 40, 40};
inline constexpr QRect gmModule{379, 146, 82, 40};
inline constexpr QRect tempo{11, 204, 153, 18};
inline constexpr QRect key{164, 204, 152, 18};
inline constexpr QRect tracks{316, 204, 153, 18};
inline constexpr QRect length{11, 224, 229, 18};
inline constexpr QRect progress{240, 224, 229, 18};
inline constexpr QRect timeline{11, 246, 458, 36};
inline constexpr QRect trackBars{11, 288, 458, 138}; ///< Sixteen rows.

/// Play/Pause, Stop, RTZ, Loudness and Clear, 8 apart: each as wide as its longest title needs.
inline constexpr std::array<QRect, 5> buttons{QRect{11, 434, 90, 34}, QRect{109, 434, 78, 34},
                                              QRect{195, 434, 74, 34}, QRect{277, 434, 108, 34},
                                              QRect{393, 434, 76, 34}};

} // namespace MainViewLayout
} // namespace tambrel
