#pragma once

#include <QRect>

#include <array>

namespace tambrel {

/// Where everything lies in the content of the main window, in points from its top left, read from the title
/// down to the buttons: between 11 and 469, the time on one axis from 37 to 463, the right hand side from
/// 313. Nothing moves when a file is loaded or cleared. Constants; any thread.
namespace MainViewLayout {

inline constexpr int contentSize = 480; ///< Width and height.

inline constexpr QRect title{11, 12, 90, 28};
inline constexpr QRect statusZone{109, 12, 196, 28};
inline constexpr QRect status{114, 14, 186, 24};
inline constexpr QRect ledZone{313, 12, 156, 28};
inline constexpr QRect activity{320, 14, 142, 24}; ///< Within the zone; eight points a bar, at every scale.
inline constexpr QRect dropPanel{11, 48, 458, 80}; ///< Whole numbers of dashes on each side.
inline constexpr QRect file{32, 64, 416, 48};      ///< Within the panel's dashed frame.
inline constexpr QRect explainedFile{32, 61, 416, 27}; ///< Where an explanation is below it.
inline constexpr QRect explanation{32, 88, 416, 27};   ///< Two lines of small captions.
inline constexpr QRect display{11, 136, 458, 62};
inline constexpr int displayDivider = 302; ///< From the left of the display; in line with the LED zone.
inline constexpr QRect counter{14, 138, 296, 58}; ///< Digits 28 points wide, 31 apart.
inline constexpr QRect moduleZone{315, 138, 152, 58};
inline constexpr QRect logo{328, 147, 40, 40};
inline constexpr QRect gmModule{374, 147, 80, 40};
// Three columns; the outer ones are centred below the counter's sides and run over for very long songs alone.
inline constexpr QRect tempo{7, 204, 164, 18};
inline constexpr QRect key{171, 204, 138, 18};
inline constexpr QRect tracks{309, 204, 164, 18};
inline constexpr QRect length{7, 224, 164, 18};
inline constexpr QRect progress{309, 224, 164, 18};
inline constexpr QRect timeline{25, 246, 450, 36};  ///< Its track and the bars below cover the same points.
inline constexpr QRect trackBars{9, 286, 462, 142}; ///< Sixteen rows, in a frame two points inside.

/// Play/Pause, Stop, RTZ, Loudness and Clear, 8 apart: each as wide as its longest title needs.
inline constexpr std::array<QRect, 5> buttons{QRect{11, 434, 90, 34}, QRect{109, 434, 78, 34},
                                              QRect{195, 434, 74, 34}, QRect{277, 434, 108, 34},
                                              QRect{393, 434, 76, 34}};

} // namespace MainViewLayout
} // namespace tambrel
