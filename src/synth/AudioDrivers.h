#pragma once

#include "AudioDriver.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tambrel {

/// Sees to it that libjack does not start a server where none runs. To be called before any thread is
/// started.
void prepareForAudioDrivers();

/// Drivers tried when none is named, in this order: PulseAudio (which reaches PipeWire too), ALSA, JACK.
[[nodiscard]] std::vector<std::string> defaultAudioDrivers();

/// Renders in real time and plays nothing. Never chosen by itself.
inline constexpr std::string_view silentDriverName = "silent";

/// Opens the first of the named drivers that works. May block for some time. Throws AudioDriverError.
[[nodiscard]] std::unique_ptr<AudioDriver> openAudioDriver(const std::vector<std::string>& names,
                                                           double sampleRate, AudioSource& source);

/// Opens a device as `openAudioDriver` does.
using AudioDriverOpener = std::function<std::unique_ptr<AudioDriver>(const std::vector<std::string>& names,
                                                                     double sampleRate, AudioSource& source)>;

[[nodiscard]] std::unique_ptr<AudioDriver> openSilentDriver(double sampleRate, AudioSource& source);

/// How often a driver has reported that it gave up, in this run of the program. Any thread.
[[nodiscard]] std::uint64_t audioDriverFailures();

} // namespace tambrel
