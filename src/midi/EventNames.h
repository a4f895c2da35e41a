#pragma once

#include "MIDIStatus.h"

#include <array>
#include <cstdint>
#include <string_view>

/// The words of the event text (docs/tambrel-midi.md). Constants; any thread.
namespace tambrel::EventText {

/// Channel messages, by the kind of their status from 0x80 on.
inline constexpr std::array<std::string_view, 7> channelNames{"off",     "on",       "poly", "control",
                                                              "program", "pressure", "bend"};

/// Meta events that hold text, by their type from 1 on.
inline constexpr std::array<std::string_view, 9> textNames{
    "text", "copyright", "name", "instrument", "lyric", "marker", "cue", "program-name", "device"};

inline constexpr std::string_view songWord = "smf";
inline constexpr std::string_view clipWord = "clip";

} // namespace tambrel::EventText
