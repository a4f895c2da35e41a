#include "ParameterSetter.h"

#include <string_view>

namespace tambrel {
namespace {

// A digit a generator: by how much one step of data changes it (SoundFont 2.01, 9.6), 0 where none does.
constexpr std::string_view dataScale = "111112222122110111000242422221211222212110000101101110001";

} // namespace

void ParameterSetter::apply(int channel, std::uint8_t controller, std::uint8_t value) noexcept {
    if (const auto entered = entries_[static_cast<std::size_t>(channel)].apply(controller, value))
        set(channel, *entered);
}

// Tuning programs are left out: choosing one would allocate it, and there is none but the equal temperament.
void ParameterSetter::set(int channel, const ParameterValue& value) noexcept {
    using namespace Controller;
    constexpr std::uint8_t coarseTuning = 2;
    constexpr int middle = 8192;
    const auto [parameter, msb, lsb] = value;
    if (parameter.isGenerator() && parameter.lsb < dataScale.size()) {
        const int steps = (msb << 7 | lsb) - middle;
        fluid_synth_set_gen(&synth_, channel, parameter.lsb,
                            static_cast<float>(steps * (dataScale[parameter.lsb] - '0')));
    } else if (parameter.isRegistered && parameter.msb == 0 && parameter.lsb <= coarseTuning) {
        fluid_synth_cc(&synth_, channel, registeredMSB, parameter.msb);
        fluid_synth_cc(&synth_, channel, registeredLSB, parameter.lsb);
        fluid_synth_cc(&synth_, channel, dataEntryLSB, lsb);
        fluid_synth_cc(&synth_, channel, dataEntryMSB, msb);
    }
}

} // namespace tambrel
