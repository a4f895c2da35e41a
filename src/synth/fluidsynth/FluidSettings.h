#pragma once

#include "DestroyedBy.h"

#include <fluidsynth.h>

#include <cstdint>
#include <memory>
#include <string>

namespace tambrel {

using FluidSettings = std::unique_ptr<fluid_settings_t, DestroyedBy<delete_fluid_settings>>;

/// Settings with this sample rate, in frames per second, for a synthesizer or a driver.
[[nodiscard]] FluidSettings makeFluidSettings(double sampleRate);

/// Gathers the errors that FluidSynth reports on this thread during the life of the object; one at a time.
class FluidMessageGatherer {
public:
    FluidMessageGatherer();
    ~FluidMessageGatherer();
    FluidMessageGatherer(const FluidMessageGatherer&) = delete;
    FluidMessageGatherer& operator=(const FluidMessageGatherer&) = delete;
    [[nodiscard]] const std::string& text() const { return text_; }

private:
    std::string text_;
};

/// How many errors were reported while nobody gathered them, which a driver does that gives up. Any thread.
[[nodiscard]] std::uint64_t fluidStrayErrors() noexcept;

} // namespace tambrel
